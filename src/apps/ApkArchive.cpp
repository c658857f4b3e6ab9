#include "ApkArchive.h"

#include <QFile>
#include <QPromise>
#include <QSet>
#include <QThreadPool>

#include <zip.h>

#include <algorithm>
#include <memory>

ApkArchive ApkArchive::read(const QString &path)
{
    ApkArchive archive;
    int code = 0;
    const QByteArray name = QFile::encodeName(path);
    std::unique_ptr<zip_t, decltype(&zip_discard)> zip(
        zip_open(name.constData(), ZIP_RDONLY, &code), zip_discard);
    if (!zip) {
        zip_error_t error;
        zip_error_init_with_code(&error, code);
        archive.m_error = QString::fromUtf8(zip_error_strerror(&error));
        zip_error_fini(&error);
        return archive;
    }
    // An empty file opens as an empty archive, but nothing installable is empty.
    const zip_int64_t count = zip_get_num_entries(zip.get(), 0);
    if (count <= 0) {
        archive.m_error = QStringLiteral("The archive is empty");
        return archive;
    }
    if (count > maxEntries)
        return archive;
    QSet<QString> abis;
    for (zip_int64_t i = 0; i < count; ++i) {
        const char *entry = zip_get_name(zip.get(), zip_uint64_t(i), ZIP_FL_ENC_GUESS);
        if (!entry)
            continue;
        // lib/<abi>/libsomething.so
        const QStringList parts = QString::fromUtf8(entry).split(QLatin1Char('/'));
        if (parts.size() >= 3 && parts[0] == QLatin1String("lib") && !parts[1].isEmpty()
            && !parts.last().isEmpty())
            abis.insert(parts[1]);
    }
    archive.m_abis = abis.values();
    archive.m_abis.sort();
    return archive;
}

QFuture<ApkArchive> ApkArchive::readInBackground(const QString &path)
{
    // The pool's job is copied around, so the promise it fulfils is shared.
    auto promise = std::make_shared<QPromise<ApkArchive>>();
    QFuture<ApkArchive> future = promise->future();
    promise->start();
    QThreadPool::globalInstance()->start([promise, path] {
        promise->addResult(read(path));
        promise->finish();
    });
    return future;
}

bool ApkArchive::runsOn(const QStringList &phoneAbis) const
{
    return m_abis.isEmpty() || std::any_of(m_abis.begin(), m_abis.end(), [&](const QString &abi) {
        return phoneAbis.contains(abi);
    });
}
