#pragma once

#include "AndroidTools.h"
#include "Host.h"
#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QString>

// A fresh temporary Mac below `root` whose SDK holds sh stand-ins for emulator, adb, avdmanager and
// sdkmanager (tests/phones/standins). The stand-ins keep their state in the control folder; a file named
// after a tool there is sourced by that tool before it acts, so a test can change its behaviour.
class StandInTools
{
public:
    explicit StandInTools(const QString &root)
        : m_control(root + QStringLiteral("/control"))
    {
        Host::setCurrent(Host::underRoot(root, true));
        qputenv("HOME", root.toUtf8());
        qunsetenv("ANDROID_HOME");
        qunsetenv("ANDROID_SDK_ROOT");
        QDir().mkpath(m_control);
        const QString sdk = AndroidTools::sdkRoot();
        install(QStringLiteral("emulator"), sdk + QStringLiteral("/emulator/emulator"));
        install(QStringLiteral("adb"), sdk + QStringLiteral("/platform-tools/adb"));
        install(QStringLiteral("avdmanager"), sdk + QStringLiteral("/cmdline-tools/latest/bin/avdmanager"));
        install(QStringLiteral("sdkmanager"), sdk + QStringLiteral("/cmdline-tools/latest/bin/sdkmanager"));
    }

    // Shell text the tool runs before it acts: it may set the emulator's variables, define its hooks,
    // or answer on its own and exit.
    void setBehaviour(const QString &tool, const QByteArray &script) const
    {
        writeFile(control(tool), script);
    }

    void createPhone(const QString &name) const
    {
        writeFile(control(QStringLiteral("avd/") + name + QStringLiteral(".ini")),
            "device=pixel_7\nimage=system-images;android-34;google_apis_playstore;arm64-v8a\n");
    }

    // The arguments of every adb call so far, one call per entry.
    QStringList adbCalls() const
    {
        QFile log(control(QStringLiteral("adb.log")));
        if (!log.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(log.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    QString control(const QString &file) const { return m_control + QLatin1Char('/') + file; }

private:
    void install(const QString &tool, const QString &path) const
    {
        QFile source(QStringLiteral(TOLVANE_PHONES_STANDINS "/") + tool);
        if (!source.open(QIODevice::ReadOnly))
            qFatal("cannot read the %s stand-in", qPrintable(tool));
        writeFile(path, source.readAll().replace("@CONTROL@", m_control.toUtf8()), true);
    }

    QString m_control;
};
