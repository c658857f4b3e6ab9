// Floods the two logs while their views show them, and prints side by side:
// - lines per second through a JobRunner shown in a JobLogView and through an EmulatorProcess shown in
//   an EmulatorLogBody (target: at least 300,000 each in a Release build);
// - the longest event-loop turn of our own work during each flood (target: at most 8 ms), and apart
//   from it the longest drawing of the window;
// - the time for 10 MB without a line break through a JobRunner divided by the time for 10 MB of
//   80-character lines (target: at most 2).
// - logcat lines per second read from a flooding phone into a Logcat, filtered by level and text, shown
//   in a LogcatBody (target: at least 300,000), the longest turn of our own work meanwhile (target: at
//   most 8 ms), and the time a filter change takes over the 100,000 entries then held (target: under
//   100 ms).
// One argument ("job", "emulator", "logcat" or "10mb") runs that part alone, for a profiler.
#include "EmulatorProcess.h"
#include "EventWatch.h"
#include "Host.h"
#include "JobRunner.h"
#include "Logcat.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
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

constexpr int lineCount = 100000;

QString floodScript(const QString &trailer)
{
    return QStringLiteral(
        "awk 'BEGIN { for (i = 1; i <= %1; i++) print \"INFO    | emulator: line \" i \" of "
        "the flood, long enough to look like real output\" }'; %2")
        .arg(lineCount)
        .arg(trailer);
}

void report(const char *what, double ms, const EventWatch &watch)
{
    std::printf("%-36s %6d lines in %7.0f ms = %7.0f lines/s; longest turn of our own work %5.1f ms (%s), "
                "longest drawing %5.1f ms (laying out %5.1f ms)\n",
        what, lineCount, ms, lineCount / (ms / 1000.0), watch.longestOwnMs(),
        watch.longestOwnWhat().constData(), watch.longestDrawingMs(), watch.longestLayoutMs());
}

double timeJob(const QString &script)
{
    JobRunner runner;
    QElapsedTimer clock;
    clock.start();
    QCoro::waitFor(
        runner.run(QStringLiteral("Flood"), QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script}));
    return clock.nsecsElapsed() / 1e6;
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
        QCoro::waitFor(runner.run(QStringLiteral("Flood"), QStringLiteral("/bin/sh"),
            {QStringLiteral("-c"), floodScript(QStringLiteral("exit 0"))}));
        QCoreApplication::processEvents();
        report("JobRunner + JobLogView:", clock.nsecsElapsed() / 1e6, app);
    }

    if (runs("emulator")) {
        const QString emulator = root.filePath(QStringLiteral("emulator"));
        QFile script(emulator);
        script.open(QIODevice::WriteOnly);
        script.write(("#!/bin/sh\n" + floodScript(QStringLiteral("exec sleep 30"))).toUtf8());
        script.close();
        script.setPermissions(script.permissions() | QFileDevice::ExeOwner);

        EmulatorProcess runner(QStringLiteral("Flood_Phone"));
        auto window = app.show(engine, QStringLiteral("EmulatorLogBody"),
            {{QStringLiteral("runner"), QVariant::fromValue(&runner)}});
        QElapsedTimer clock;
        app.restart();
        clock.start();
        runner.start(emulator, 5554, StartOptions());
        const QString last = QStringLiteral("INFO    | emulator: line %1 of").arg(lineCount);
        while (runner.lines().isEmpty() || !runner.lines().constLast().startsWith(last))
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        QCoreApplication::processEvents();
        report("EmulatorProcess + EmulatorLogBody:", clock.nsecsElapsed() / 1e6, app);
        if (auto *process = runner.findChild<QProcess *>())
            process->kill();
    }

    if (runs("logcat")) {
        // An adb that sees the phone and floods its log: every level, a few tags and processes.
        const QString adb
            = root.filePath(QStringLiteral("Library/Application Support/Tolvane/sdk/platform-tools/adb"));
        QDir().mkpath(QFileInfo(adb).absolutePath());
        QFile script(adb);
        script.open(QIODevice::WriteOnly);
        script.write(QStringLiteral("#!/bin/sh\ncase \"$*\" in\n*get-state*) echo device ;;\n*logcat*) awk "
                                    "'BEGIN { split(\"V D I W E "
                                    "F\", level, \" \"); split(\"ActivityManager Notes chatty Sync\", tag, "
                                    "\" \"); for (i = 0; i < %1; "
                                    "i++) printf \"11-23 10:%02d:%02d.%03d %5d %5d %s %-8s: line %d of the "
                                    "flood, long enough to look like "
                                    "real output\\n\", i / 60000 % 60, i / 1000 % 60, i % 1000, 1000 + i "
                                    "% 7, 1000 + i % 11, level[i % 6 "
                                    "+ 1], tag[i % 4 + 1], i + 1 }'; exec sleep 30 ;;\nesac\n")
                         .arg(2 * lineCount)
                         .toUtf8());
        script.close();
        script.setPermissions(script.permissions() | QFileDevice::ExeOwner);

        Logcat log(QStringLiteral("emulator-5554"));
        log.setMinimumLevel(LogcatEntry::Debug);
        log.setText(QStringLiteral("FLOOD"));
        auto window = app.show(
            engine, QStringLiteral("LogcatBody"), {{QStringLiteral("log"), QVariant::fromValue(&log)}});
        QElapsedTimer clock;
        app.restart();
        clock.start();
        const QString last = QStringLiteral("line %1 of the flood").arg(2 * lineCount);
        while (log.count() == 0 || !log.entryAt(log.count() - 1).message.startsWith(last))
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        QCoreApplication::processEvents();
        const double ms = clock.nsecsElapsed() / 1e6;
        std::printf(
            "%-36s %6d lines in %7.0f ms = %7.0f lines/s; longest turn of our own work %5.1f ms (%s), "
            "longest drawing %5.1f ms (laying out %5.1f ms)\n",
            "Logcat + LogcatBody:", 2 * lineCount, ms, 2 * lineCount / (ms / 1000.0), app.longestOwnMs(),
            app.longestOwnWhat().constData(), app.longestDrawingMs(), app.longestLayoutMs());
        app.restart();
        clock.restart();
        log.setText(QStringLiteral("line 15"));
        while (log.filtering())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        std::printf(
            "Logcat filter change over %d held entries: %.1f ms (%d shown); longest turn of our own work "
            "%.1f ms\n",
            log.held(), clock.nsecsElapsed() / 1e6, log.count(), app.longestOwnMs());
    }

    if (!runs("10mb"))
        return 0;
    // 10 MB as one line against 10 MB in lines of 80 characters (79 and a line feed).
    const QString tenMegabytes = QStringLiteral("head -c 10000000 /dev/zero | tr '\\0' x");
    timeJob(QStringLiteral("exit 0")); // warm up
    const double unbroken = timeJob(tenMegabytes);
    const double lines = timeJob(tenMegabytes + QStringLiteral(" | fold -w 79"));
    std::printf("JobRunner, 10 MB without a line break: %.0f ms; in 80-character lines: %.0f ms; ratio %.2f "
                "(target: at most 2)\n",
        unbroken, lines, unbroken / lines);
    return 0;
}
