#include "SimApk.h"

#include <QFile>

#include <zip.h>

namespace SimApk {

void write(const QString &path, const QStringList &abis, int padding)
{
    QFile::remove(path);
    int code = 0;
    zip_t *zip = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!zip)
        qFatal("cannot make %s", qPrintable(path));
    const auto add = [zip](const QString &name, const char *content) {
        zip_source_t *source = zip_source_buffer(zip, content, qstrlen(content), 0);
        if (!source || zip_file_add(zip, name.toUtf8().constData(), source, ZIP_FL_OVERWRITE) < 0)
            qFatal("cannot add %s", qPrintable(name));
    };
    add(QStringLiteral("AndroidManifest.xml"), "\x03\x00\x08\x00");
    add(QStringLiteral("classes.dex"), "dex\n035\n");
    for (const QString &abi : abis)
        add(QStringLiteral("lib/") + abi + QStringLiteral("/libnative.so"),
            "\x7f"
            "ELF");
    for (int i = 0; i < padding; ++i)
        add(QStringLiteral("assets/%1").arg(i), "");
    if (zip_close(zip) < 0)
        qFatal("cannot write %s", qPrintable(path));
}

} // namespace SimApk
