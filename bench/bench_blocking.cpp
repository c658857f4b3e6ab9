// Work that grows with its input never holds up the window. Prints, for each case, how long the work
// took in all beside the longest event-loop turn of our own work and the longest drawing of the window
// while it ran (target: no turn over 50 ms in a Release build):
// - 100 MB without a line break through a JobRunner shown in a JobLogView, and through an
//   EmulatorProcess shown in an EmulatorLogBody;
// - the disk use of a phone whose folder holds 100,000 files.
// One argument ("job", "emulator" or "disk") runs that part alone, for a profiler.
#include "EmulatorProcess.h"
#include "EventWatch.h"
#include "Host.h"
#include "JobRunner.h"
#include "PhoneDiskUse.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QtQml/qqmlextensionplugin.h>

#include <QCoro/QCoroTask>

#include <cstdio>

Q_IMPORT_QML_PLUGIN(TolvanePlugin)

namespace {

const QString hundredMegabytes = QStringLiteral("head -c 100000000 /dev/zero | tr '\\0' x; echo");

void report(const char *what, double ms, const EventWatch &watch)
{
    std::printf("%-48s %8.0f ms in all; longest turn of our own work %6.1f ms (%s), longest drawing %6.1f ms "
                "(target: at most 50 ms each)\n",
        what, ms, watch.longestOwnMs(), watch.longestOwnWhat().constData(), watch.longestDrawingMs());
}

} // namespace

int main(int argc, char *argv[])
{
    EventWatch app(argc, argv);
    QTemporaryDir root;
    Host::setCurrent(Host::underRoot(root.path(), true));
    QQmlEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    const QString only = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    const auto runs = [&only](const char *part) { return only.isEmpty() || only == QLatin1String(part); };

    if (runs("job")) {
        JobRunner runner;
        auto window = app.show(
            engine, QStringLiteral("JobLogView"), {{QStringLiteral("job"), QVariant::fromValue(&runner)}});
        QElapsedTimer clock;
        app.restart();
        clock.start();
        QCoro::waitFor(runner.run(
            QStringLiteral("Flood"), QStringLiteral("/bin/sh"), {QStringLiteral("-c"), hundredMegabytes}));
        QCoreApplication::processEvents();
        report("JobRunner + JobLogView, 100 MB in one line:", clock.nsecsElapsed() / 1e6, app);
    }

    if (runs("emulator")) {
        const QString emulator = root.filePath(QStringLiteral("emulator"));
        QFile script(emulator);
        script.open(QIODevice::WriteOnly);
        script.write(("#!/bin/sh\n" + hundredMegabytes + "; echo done; exec sleep 30").toUtf8());
        script.close();
        script.setPermissions(script.permissions() | QFileDevice::ExeOwner);

        EmulatorProcess runner(QStringLiteral("Flood_Phone"));
        auto window = app.show(engine, QStringLiteral("EmulatorLogBody"),
            {{QStringLiteral("runner"), QVariant::fromValue(&runner)}});
        QElapsedTimer clock;
        app.restart();
        clock.start();
        runner.start(emulator, 5554, StartOptions());
        while (runner.lines().isEmpty() || runner.lines().constLast() != QLatin1String("done"))
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        QCoreApplication::processEvents();
        report("EmulatorProcess + EmulatorLogBody, 100 MB in one line:", clock.nsecsElapsed() / 1e6, app);
        if (auto *process = runner.findChild<QProcess *>())
            process->kill();
    }

    if (runs("disk")) {
        // 100 folders of 1000 empty files, as a phone's snapshots and caches can leave.
        AVDInfo phone;
        phone.name = QStringLiteral("Many_Files");
        phone.path = root.filePath(QStringLiteral("Many_Files.avd"));
        for (int folder = 0; folder < 100; ++folder) {
            const QString path = phone.path + QStringLiteral("/cache/%1").arg(folder);
            QDir().mkpath(path);
            for (int file = 0; file < 1000; ++file)
                QFile(path + QStringLiteral("/%1").arg(file)).open(QIODevice::WriteOnly);
        }
        PhoneDiskUse disk;
        QElapsedTimer clock;
        app.restart();
        clock.start();
        QCoro::waitFor(disk.readTask({phone}));
        report("PhoneDiskUse, a phone of 100,000 files:", clock.nsecsElapsed() / 1e6, app);
    }
    return 0;
}
