#include "AndroidTools.h"
#include "DataTable.h"
#include "Logcat.h"
#include "LogcatParser.h"
#include "SimHost.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <QCoro/QCoroTask>

using namespace std::chrono_literals;

namespace {

// An entry in one line: time, process, thread, level, tag and message, and whether it marks a crash.
QString describe(const LogcatEntry &entry)
{
    return QStringList {entry.timeText(), QString::number(entry.pid), QString::number(entry.tid),
               QString(LogcatEntry::letterOf(entry.level)).trimmed(), entry.tag, entry.message}
               .join(QLatin1String(" / "))
        + (entry.crash ? QLatin1String(" / crash") : QLatin1String(""));
}

// The first line of each row shown.
QStringList shown(const Logcat &log)
{
    QStringList lines;
    for (int row = 0; row < log.count(); ++row)
        lines.append(log.entryAt(row).message.section(QLatin1Char('\n'), 0, 0));
    return lines;
}

const QString head = QStringLiteral("11-23 10:00:01.200  2001  2001 ");

// The phone logs these lines next: the simulated adb streams what is added to its feed.
void append(const QString &feed, const char *lines)
{
    QFile file(feed);
    if (file.open(QIODevice::Append))
        file.write(lines);
}

} // namespace

class TestLogcat : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Lines of `logcat -v threadtime`, each read as a batch of its own, as a flood may cut them.
    void parse_data()
    {
        columns<QStringList, QStringList, QString>("lines", "entries", "started");
        const auto add
            = [](const char *name, const QStringList &lines, const QStringList &entries,
                  const QString &started = {}) { QTest::newRow(name) << lines << entries << started; };
        add("padded tag", {head + QStringLiteral("D Notes   : onCreate")},
            {QStringLiteral("11-23 10:00:01.200 / 2001 / 2001 / D / Notes / onCreate")});
        add("tag with a space", {head + QStringLiteral("I Notes Sync: pulled: 3")},
            {QStringLiteral("11-23 10:00:01.200 / 2001 / 2001 / I / Notes Sync / pulled: 3")});
        add("long tag with a colon", {head + QStringLiteral("W Sync: worker: syncing")},
            {QStringLiteral("11-23 10:00:01.200 / 2001 / 2001 / W / Sync: worker / syncing")});
        add("short tag with a colon", {head + QStringLiteral("I ab: c   : text")},
            {QStringLiteral("11-23 10:00:01.200 / 2001 / 2001 / I / ab: c / text")});
        add("empty tag and empty message",
            {head + QStringLiteral("V         : x"), head + QStringLiteral("E Tag     :")},
            {QStringLiteral("11-23 10:00:01.200 / 2001 / 2001 / V /  / x"),
                QStringLiteral("11-23 10:00:01.200 / 2001 / 2001 / E / Tag / ")});
        add("unpadded tag, wide process ids, assert",
            {QStringLiteral("01-02 03:04:05.006 123456 123457 A Tag: boom"),
                QStringLiteral("--------- beginning of main")},
            {QStringLiteral("01-02 03:04:05.006 / 123456 / 123457 / F / Tag / boom"),
                QStringLiteral(" / 0 / 0 /  /  / --------- beginning of main")});
        add("stack trace is one entry, a crash",
            {head + QStringLiteral("E AndroidRuntime: FATAL EXCEPTION: main"),
                head + QStringLiteral("E AndroidRuntime: java.lang.IllegalStateException"),
                head + QStringLiteral("E AndroidRuntime: \tat a.B.c(B.java:1)"),
                QStringLiteral("11-23 10:00:01.200  2001  2002 E AndroidRuntime: another thread")},
            {QStringLiteral("11-23 10:00:01.200 / 2001 / 2001 / E / AndroidRuntime / FATAL EXCEPTION: "
                            "main\njava.lang.IllegalStateException\n\tat a.B.c(B.java:1) / crash"),
                QStringLiteral("11-23 10:00:01.200 / 2001 / 2002 / E / AndroidRuntime / another thread")});
        add("not responding is a crash, a warning of it is not",
            {head + QStringLiteral("E ActivityManager: ANR in com.example.maps"),
                head + QStringLiteral("W ActivityManager: ANR in com.example.maps")},
            {QStringLiteral(
                 "11-23 10:00:01.200 / 2001 / 2001 / E / ActivityManager / ANR in com.example.maps / crash"),
                QStringLiteral(
                    "11-23 10:00:01.200 / 2001 / 2001 / W / ActivityManager / ANR in com.example.maps")});
        add("a log that starts in the middle of a message",
            {head + QStringLiteral("E AndroidRuntime: \tat a.B.c(B.java:1)"),
                head + QStringLiteral("E AndroidRuntime: \tat a.B.d(B.java:2)")},
            {QStringLiteral(
                "11-23 10:00:01.200 / 2001 / 2001 / E / AndroidRuntime / \tat a.B.c(B.java:1)\n\tat "
                "a.B.d(B.java:2)")});
        add("separators and other lines pass through and end a message",
            {head + QStringLiteral("I Tag     : one"), QStringLiteral("--------- beginning of crash"),
                head + QStringLiteral("I Tag     : two"), QStringLiteral("error: device offline"),
                QStringLiteral("11-23 10:00:0x.200  2001  2001 I Tag: nearly")},
            {QStringLiteral("11-23 10:00:01.200 / 2001 / 2001 / I / Tag / one"),
                QStringLiteral(" / 0 / 0 /  /  / --------- beginning of crash"),
                QStringLiteral("11-23 10:00:01.200 / 2001 / 2001 / I / Tag / two"),
                QStringLiteral(" / 0 / 0 /  /  / error: device offline"),
                QStringLiteral(" / 0 / 0 /  /  / 11-23 10:00:0x.200  2001  2001 I Tag: nearly")});
        add("an app's process starts",
            {QStringLiteral("11-23 10:00:01.000   520   540 I ActivityManager: Start proc "
                            "2002:com.example.notes/u0a190 for activity {com.example.notes/.Main}")},
            {QStringLiteral("11-23 10:00:01.000 / 520 / 540 / I / ActivityManager / Start proc "
                            "2002:com.example.notes/u0a190 for activity {com.example.notes/.Main}")},
            QStringLiteral("2002 com.example.notes"));
        add("an app's other process starts, as older releases say",
            {QStringLiteral(
                "11-23 10:00:01.000   520   540 I ActivityManager: Start proc com.example.notes:sync "
                "for service com.example.notes/.Sync: pid=4321 uid=10190 gids={50190}")},
            {QStringLiteral("11-23 10:00:01.000 / 520 / 540 / I / ActivityManager / Start proc "
                            "com.example.notes:sync for service com.example.notes/.Sync: pid=4321 uid=10190 "
                            "gids={50190}")},
            QStringLiteral("4321 com.example.notes"));
    }

    void parse()
    {
        const auto [lines, expected, started]
            = row<QStringList, QStringList, QString>("lines", "entries", "started");
        LogcatParser parser;
        std::vector<LogcatEntry> entries;
        for (const QString &line : lines) {
            LogcatParser::Batch batch = parser.parse({line});
            if (!batch.continuation.isEmpty())
                entries.back().message += batch.continuation;
            entries.insert(entries.end(), batch.entries.begin(), batch.entries.end());
        }
        QStringList described;
        for (const LogcatEntry &entry : entries)
            described.append(describe(entry));
        QCOMPARE(described, expected);
        const auto process = LogcatParser::startedProcess(entries.front());
        QCOMPARE(process ? QString::number(process->first) + QLatin1Char(' ') + process->second : QString(),
            started);
        // Saved as logcat printed it.
        if (entries.front().level != LogcatEntry::None && lines.size() == 1)
            QCOMPARE(entries.front().text(), lines.front());
    }

    // One phone's log through the simulated adb: what it holds, each filter, crashes, a pause, a save, the
    // phone's restart with a flood of lines, and a clear.
    void scenario()
    {
        QTemporaryDir root;
        SimHost sim(root.path());
        sim.activate();
        sim.setTimeScale(0.02);
        sim.makeReady();
        sim.createPhone(QStringLiteral("Pixel_7_API_34"));
        Logcat::setTiming({50ms, 10.0, 20ms});
        const QString serial = sim.startPhone(QStringLiteral("Pixel_7_API_34"));
        const QString feed = sim.stateDir() + QStringLiteral("/emulators/5554/logcat.feed");

        Logcat log(serial);
        QTRY_COMPARE_WITH_TIMEOUT(log.held(), 19, 10000);
        QCOMPARE(log.state(), Logcat::State::Reading);
        QCOMPARE(log.count(), 19);
        QVERIFY(shown(log).contains(QStringLiteral("café and a stray \uFFFD byte")));

        QCOMPARE(log.crashCount(), 2);
        const int fatal = log.nextCrash(-1);
        const int anr = log.nextCrash(fatal);
        QCOMPARE(log.entryAt(fatal).message.count(QLatin1Char('\n')), 4);
        QVERIFY(log.entryAt(anr).message.startsWith(QLatin1String("ANR in com.example.maps\nPID: 2101")));
        QCOMPARE(log.nextCrash(fatal - 1), fatal);
        QCOMPARE(log.nextCrash(anr), -1);
        QCOMPARE(log.previousCrash(log.count()), anr);
        QCOMPARE(log.previousCrash(anr), fatal);
        QCOMPARE(log.previousCrash(fatal), -1);

        const QStringList separators {QStringLiteral("--------- beginning of main"),
            QStringLiteral("--------- beginning of system"), QStringLiteral("--------- beginning of crash")};
        log.setMinimumLevel(LogcatEntry::Error);
        QTRY_COMPARE(shown(log),
            QStringList({separators[0], separators[1], separators[2], QStringLiteral("FATAL EXCEPTION: main"),
                QStringLiteral("ANR in com.example.maps"),
                QStringLiteral("Fatal signal 6 (SIGABRT), code -1 in tid 150 (surfaceflinger)")}));
        QCOMPARE(log.crashCount(), 2);
        log.setMinimumLevel(LogcatEntry::Verbose);
        // Both runs of the app, each found by its start.
        log.setApp(QStringLiteral("com.example.notes"));
        QTRY_COMPARE(shown(log),
            QStringList({QStringLiteral("onCreate"), QStringLiteral("Slow query: 120 ms"),
                QStringLiteral("syncing 3 notes"), QStringLiteral("pulled 3 notes"),
                QStringLiteral("FATAL EXCEPTION: main"), QStringLiteral("onCreate"),
                QStringLiteral("café and a stray \uFFFD byte")}));
        // An app that started before the log, found by its running process, and what it logs next.
        log.setApp(QStringLiteral("com.example.maps"));
        QTRY_COMPARE(shown(log), QStringList {QStringLiteral("Map tiles ready")});
        append(feed, "11-23 10:00:06.500  2101  2101 I Maps    : route found\n");
        QTRY_COMPARE(
            shown(log), QStringList({QStringLiteral("Map tiles ready"), QStringLiteral("route found")}));
        log.setApp({});
        log.setText(QStringLiteral("slow QUERY"));
        QTRY_COMPARE(shown(log), QStringList {QStringLiteral("Slow query: 120 ms")});
        log.setText(QStringLiteral("zygote"));
        QTRY_COMPARE(shown(log).size(), 2);
        log.setRegularExpression(true);
        log.setText(QStringLiteral("on(create|resume)"));
        QTRY_COMPARE(shown(log),
            QStringList({QStringLiteral("onCreate"), QStringLiteral("FATAL EXCEPTION: main"),
                QStringLiteral("onCreate")}));
        log.setText(QStringLiteral("on("));
        QVERIFY(log.filterError().has_value());
        QTRY_COMPARE(log.count(), 20);
        log.setText({});
        QVERIFY(!log.filterError());

        // Nothing is lost while paused; it shows on resuming.
        log.setPaused(true);
        append(feed,
            "11-23 10:00:07.000  2002  2002 I Notes   : while paused\n"
            "11-23 10:00:07.500  2002  2002 I Notes   : still paused\n");
        QTRY_COMPARE(log.held(), 22);
        QCOMPARE(log.count(), 20);
        QCOMPARE(log.waiting(), 2);
        log.setPaused(false);
        QTRY_COMPARE(log.count(), 22);
        QCOMPARE(log.waiting(), 0);

        const QString saved = root.filePath(QStringLiteral("log.txt"));
        log.save(QUrl::fromLocalFile(saved));
        QTRY_COMPARE(log.note(), QStringLiteral("Saved 22 entries to %1.").arg(saved));
        QFile file(saved);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(file.readAll());
        QVERIFY(text.startsWith(separators[0] + QLatin1Char('\n')));
        QVERIFY(text.contains(QLatin1String(
            "11-23 10:00:02.000  2001  2001 E AndroidRuntime: Process: com.example.notes, PID: 2001\n"
            "11-23 10:00:02.000  2001  2001 E AndroidRuntime: java.lang.IllegalStateException")));
        QVERIFY(text.endsWith(QLatin1String("11-23 10:00:07.500  2002  2002 I Notes   : still paused\n")));
        // What is saved is what the filter shows.
        log.setText(QStringLiteral("still paused"));
        QTRY_COMPARE(log.count(), 1);
        log.save(QUrl::fromLocalFile(saved));
        QTRY_COMPARE(log.note(), QStringLiteral("Saved 1 entry to %1.").arg(saved));
        QFile filtered(saved);
        QVERIFY(filtered.open(QIODevice::ReadOnly));
        QCOMPARE(filtered.readAll(), QByteArray("11-23 10:00:07.500  2002  2002 I Notes   : still paused\n"));
        log.setText({});

        // The phone restarts and floods its log: the view says so, reads on from where it was, and keeps
        // only the newest entries.
        sim.setBehaviour(QStringLiteral("adb.logcat.burst"), "120000");
        QCoro::waitFor(AndroidTools::runADB({QStringLiteral("emu"), QStringLiteral("kill")}, serial));
        QTRY_COMPARE_WITH_TIMEOUT(log.state(), Logcat::State::Stopped, 10000);
        QCOMPARE(shown(log).constLast(), QStringLiteral("--------- The phone stopped or restarted here."));
        sim.startPhone(QStringLiteral("Pixel_7_API_34"));
        QTRY_COMPARE_WITH_TIMEOUT(shown(log).constLast(), QStringLiteral("line 120000 of the burst"), 120000);
        QCOMPARE(log.state(), Logcat::State::Reading);
        QVERIFY(sim.adbCalls().contains(
            QStringLiteral("-s emulator-5554 logcat -v threadtime -T 11-23 10:00:07.500")));
        QVERIFY(log.held() <= Logcat::maxEntries);
        QVERIFY(log.held() > Logcat::maxEntries - Logcat::droppedEntries);
        QCOMPARE(log.count(), log.held());

        log.clear();
        QCOMPARE(log.held(), 0);
        QCOMPARE(log.count(), 0);
        QTRY_COMPARE(log.note(), QStringLiteral("Cleared the phone's log."));
        QVERIFY(sim.adbCalls().contains(QStringLiteral("-s emulator-5554 logcat -c")));
    }
};

QTEST_GUILESS_MAIN(TestLogcat)
#include "tst_logcat.moc"
