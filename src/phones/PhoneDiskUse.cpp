// The phone store's view of the disk: what each phone and installed system image takes, what is free,
// and removing system images that no phone uses.
#include "PhoneStore.h"

#include "AndroidTools.h"
#include "DiskUsage.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>

namespace {

// The package id of an image installed in this folder below the SDK root, e.g.
// system-images/android-34/google_apis/arm64-v8a.
SystemImage imageAt(const QString &relativeFolder)
{
    const QStringList parts = relativeFolder.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    SystemImage image;
    image.id = parts.join(QLatin1Char(';'));
    image.api = parts.value(1).section(QLatin1Char('-'), -1).toLongLong();
    image.variant = parts.value(2);
    image.installed = true;
    return image;
}

} // namespace

std::optional<SystemImage> PhoneStore::configuredImage(const QString &phonePath)
{
    QFile config(phonePath + QStringLiteral("/config.ini"));
    if (phonePath.isEmpty() || !config.open(QIODevice::ReadOnly | QIODevice::Text))
        return std::nullopt;
    static const QByteArray key = "image.sysdir.1=";
    while (!config.atEnd()) {
        const QByteArray line = config.readLine().trimmed();
        if (line.startsWith(key))
            return imageAt(QString::fromUtf8(line.mid(key.size()).trimmed()));
    }
    return std::nullopt;
}

qint64 PhoneStore::phonesBytes() const
{
    qint64 total = 0;
    for (const QVariant &bytes : m_phoneSizes)
        total += bytes.toLongLong();
    return total;
}

qint64 PhoneStore::imagesBytes() const
{
    qint64 total = 0;
    for (const InstalledImage &installed : m_installedImages)
        total += installed.bytes;
    return total;
}

bool PhoneStore::lowDisk() const
{
    return m_freeBytes && *m_freeBytes < DiskUsage::lowSpace;
}

QString PhoneStore::formatBytes(qint64 bytes)
{
    return DiskUsage::format(bytes);
}

QVariantList PhoneStore::installedImagesVariant() const
{
    QVariantList list;
    for (const InstalledImage &installed : m_installedImages) {
        list.append(QVariantMap {{QStringLiteral("id"), installed.image.id},
            {QStringLiteral("label"), installed.image.label()}, {QStringLiteral("bytes"), installed.bytes},
            {QStringLiteral("users"), installed.users}});
    }
    return list;
}

QVariant PhoneStore::freeBytesVariant() const
{
    return m_freeBytes ? QVariant(*m_freeBytes) : QVariant();
}

QStringList PhoneStore::imageUsers(const QString &id) const
{
    const QStringList parts = id.split(QLatin1Char(';'));
    const QString tagAndAbi
        = QStringLiteral("Tag/ABI: ") + parts.value(2) + QLatin1Char('/') + parts.value(3);
    QStringList users;
    for (const AVDInfo &phone : m_phones) {
        const std::optional<SystemImage> configured = configuredImage(phone.path);
        // Without its config the listing's wording decides, erring towards keeping the image.
        if (configured ? configured->id == id : phone.basedOn.contains(tagAndAbi))
            users.append(phone.name);
    }
    return users;
}

void PhoneStore::readDiskUse()
{
    m_phoneSizes.clear();
    for (const AVDInfo &phone : std::as_const(m_phones)) {
        if (!phone.path.isEmpty() && QFileInfo::exists(phone.path))
            m_phoneSizes.insert(phone.name, DiskUsage::allocatedBytes(phone.path));
    }

    m_installedImages.clear();
    const QDir root(AndroidTools::sdkRoot());
    const QString images = root.filePath(QStringLiteral("system-images"));
    const auto below = [](const QString &folder) {
        return QDir(folder).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    };
    // system-images/<platform>/<tag>/<abi>
    for (const QFileInfo &platform : below(images)) {
        for (const QFileInfo &tag : below(platform.filePath())) {
            for (const QFileInfo &abi : below(tag.filePath())) {
                InstalledImage installed;
                installed.image = imageAt(root.relativeFilePath(abi.filePath()));
                installed.bytes = DiskUsage::allocatedBytes(abi.filePath());
                installed.users = imageUsers(installed.image.id);
                m_installedImages.append(installed);
            }
        }
    }
    m_freeBytes = DiskUsage::freeBytes(AndroidTools::sdkRoot());
    Q_EMIT diskUseChanged();
    Q_EMIT changed();
}

void PhoneStore::removeImage(const QString &id)
{
    removeImageTask(id);
}

QCoro::Task<bool> PhoneStore::removeImageTask(QString id)
{
    const auto sdkManager = AndroidTools::sdkManager();
    if (!sdkManager)
        co_return false;
    const SystemImage image = imageAt(id.split(QLatin1Char(';')).join(QLatin1Char('/')));
    if (const QStringList users = imageUsers(id); !users.isEmpty()) {
        setError(QStringLiteral("%1 is used by %2.").arg(image.label(), users.join(QStringLiteral(", "))),
            QStringLiteral("Delete the phones made from it before removing the system image."));
        co_return false;
    }
    QPointer<PhoneStore> self(this);
    const QString title = QStringLiteral("Removing ") + image.label();
    const QStringList arguments {
        QStringLiteral("--sdk_root=") + AndroidTools::sdkRoot(), QStringLiteral("--uninstall"), id};
    auto removing = m_imageJob->run(title, *sdkManager, arguments);
    const ProcessResult result = co_await std::move(removing);
    if (!self)
        co_return result.isClean();
    if (!result.isClean() && !result.cancelled)
        setError(QStringLiteral("Removing the system image failed."), failureDetails(result));
    readDiskUse();
    // The images list shows the installed state as sdkmanager reports it.
    if (!m_images.isEmpty()) {
        auto loading = loadImagesTask();
        co_await std::move(loading);
    }
    co_return result.isClean();
}
