#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>

// Writes a file, making its folder, and optionally marks it executable.
inline void writeFile(const QString &path, const QByteArray &content, bool executable = false)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        qFatal("cannot write %s", qPrintable(path));
    file.write(content);
    file.close();
    if (executable)
        file.setPermissions(file.permissions() | QFileDevice::ExeOwner | QFileDevice::ExeUser);
}

inline void writeScript(const QString &path, const QByteArray &body)
{
    writeFile(path, "#!/bin/sh\n" + body + "\n", true);
}
