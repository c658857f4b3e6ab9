#include "AndroidTools.h"
#include "ChunkQueue.h"
#include "DataTable.h"
#include "EmulatorProcess.h"
#include "SimHost.h"
#include "TestFiles.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <QCoro/QCoroTask>

#include <climits>
#include <cstdint>
#include <functional>

using namespace std::chrono_literals;
using State = EmulatorProcess::State;

namespace {

const QString phoneName = QStringLiteral("Pixel_7_API_34");
const QString commandLine = QStringLiteral("$ emulator -avd Pixel_7_API_34 -port 5554 -gpu auto");
const QString bootCompleted = QStringLiteral("INFO    | boot completed");
const QString terminating
    = QStringLiteral("The emulator did not exit within 10 seconds; terminating the process.");
const QString getState = QStringLiteral("-s emulator-5554 get-state");
const QString getBoot = QStringLiteral("-s emulator-5554 shell getprop sys.boot_completed");

// Short waits, so that the slow paths take well under a second; `change` sets some of them otherwise.
void useQuickTiming(const std::function<void(EmulatorProcess::Timing &)> &change = {})
{
    EmulatorProcess::Timing timing;
    timing.bootPollInterval = 100ms;
    timing.stopWaitStep = 50ms;
    timing.endDelay = 50ms;
    if (change)
        change(timing);
    EmulatorProcess::setTiming(timing);
}

// Sh text that prints "line 1" to "line <count>".
QByteArray printLines(int count)
{
    return QByteArrayLiteral("i=1; while [ $i -le ") + QByteArray::number(count)
        + " ]; do echo \"line $i\"; i=$((i+1)); done";
}

// The names of the states a phone passes through, in order.
struct StateLog
{
    explicit StateLog(EmulatorProcess &phone)
    {
        QObject::connect(&phone, &EmulatorProcess::stateChanged, &phone,
            [this, &phone] { names.append(phone.stateName()); });
    }

    QStringList names;
};

} // namespace

class TestEmulatorProcess : public QObject
{
    Q_OBJECT

    // One ready machine with one phone serves every test; each test clears what the one before asked of it.
    QTemporaryDir m_root;
    std::unique_ptr<SimHost> m_sim;

    QString emulator() const { return *AndroidTools::emulatorPath(); }

    // Sh text the emulator or adb runs before it acts; the emulator's may redefine its hooks.
    void script(const QString &tool, const QByteArray &text)
    {
        m_sim->setBehaviour(tool + QStringLiteral(".script"), text);
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_sim = std::make_unique<SimHost>(m_root.path());
        m_sim->activate();
        m_sim->createPhone(phoneName);
    }

    void init()
    {
        useQuickTiming();
        QFile::remove(m_sim->stateDir() + QStringLiteral("/adb.log"));
    }

    void cleanup()
    {
        m_sim->killEmulators();
        // A killed emulator leaves its locks, which would keep the phone from starting again.
        QDir(m_root.filePath(QStringLiteral(".android/avd/Pixel_7_API_34.avd/snapshot.lock")))
            .removeRecursively();
        for (const char *lock : {"hardware-qemu.ini.lock", "multiinstance.lock"})
            QFile::remove(
                m_root.filePath(QStringLiteral(".android/avd/Pixel_7_API_34.avd/") + QLatin1String(lock)));
        for (const char *key :
            {"emulator.script", "adb.script", "emulator.ignore-kill", "emulator.never-boot"})
            m_sim->clearBehaviour(QLatin1String(key));
    }

    void cleanupTestCase()
    {
        // Polls asleep when their phone went, and handles of dropped runners, run
        // out before the end.
        QTest::qWait(500);
        m_sim.reset();
    }

    void arguments_data()
    {
        columns<StartOptions, QStringList>("options", "arguments");

        QTest::newRow("defaults") << StartOptions {} << QStringList {"-gpu", "auto"};
        QTest::newRow("every option") << StartOptions {true, true, true, "0.5", "host", {}}
                                      << QStringList {"-no-snapshot-load", "-no-snapshot", "-wipe-data",
                                             "-scale", "0.5", "-gpu", "host"};
        QTest::newRow("scale not offered is passed on") << StartOptions {
            false, false, false, "2.5", "auto", {}} << QStringList {"-scale", "2.5", "-gpu", "auto"};
        QTest::newRow("only exactly Default means no scale") << StartOptions {
            false, false, false, "default", "auto", {}} << QStringList {"-scale", "default", "-gpu", "auto"};
        QTest::newRow("empty strings are passed on") << StartOptions {
            false, true, false, "", "", {}} << QStringList {"-no-snapshot", "-scale", "", "-gpu", ""};
        QTest::newRow("from a saved snapshot") << StartOptions {false, false, false, "Default", "auto",
            "clean"} << QStringList {"-snapshot", "clean", "-gpu", "auto"};
        QTest::newRow("cold boot wins over a snapshot") << StartOptions {true, false, false, "Default",
            "auto", "clean"} << QStringList {"-no-snapshot-load", "-gpu", "auto"};
    }

    void arguments()
    {
        auto [options, arguments] = row<StartOptions, QStringList>("options", "arguments");
        QCOMPARE(options.arguments(), arguments);
    }

    // The real waits, pinned once; every other test runs with short ones.
    // The time so far moves on with the poll rounds; booting past the limit makes the hint due until the boot
    // completes.
    void startBootAndStop()
    {
        useQuickTiming([](auto &timing) {
            timing.bootPollInterval = 800ms;
            timing.slowBootAfter = 700ms;
        });
        // adb sees the phone after about 0.45 s and it boots 0.8 s later: seen by the second round, booted by
        // the third.
        m_sim->setTimeScale(0.13);
        const auto quick = qScopeGuard([this] { m_sim->setTimeScale(0.02); });
        EmulatorProcess phone(phoneName);
        const StateLog states(phone);
        QSignalSpy changes(&phone, &EmulatorProcess::changed);
        QSignalSpy timeline(&phone, &EmulatorProcess::timelineChanged);

        phone.start(emulator(), 5554, StartOptions {});
        QCOMPARE(phone.state(), State::Starting);
        QCOMPARE(phone.lines().first(), commandLine);
        QCOMPARE(phone.property("secondsSoFar"), QVariant(qint64(0)));
        QVERIFY(!phone.slowBoot());
        QTRY_VERIFY_WITH_TIMEOUT(phone.slowBoot(), 10000);
        QCOMPARE(phone.property("secondsSoFar").toLongLong(), (*phone.sinceLaunch() + 500) / 1000);
        QTRY_COMPARE_WITH_TIMEOUT(phone.state(), State::Running, 10000);
        QVERIFY(!phone.slowBoot());
        QVERIFY2(timeline.count() >= 4, qPrintable(QString::number(timeline.count())));
        const qint64 seen = *phone.seenAfter();
        const qint64 booted = *phone.bootedAfter();
        QVERIFY2(seen >= 780 && booted >= 1580, qPrintable(QStringLiteral("%1 %2").arg(seen).arg(booted)));
        QTRY_COMPARE(phone.lines().filter(QStringLiteral("Booted in")),
            QStringList {QStringLiteral("Booted in %1 s; adb saw it after %2 s.")
                             .arg((booted + 500) / 1000)
                             .arg((seen + 500) / 1000)});
        QTRY_VERIFY(phone.lines().contains(bootCompleted));
        QCOMPARE(
            phone.lineModel()->textBetween(0, 0, INT64_MAX, INT_MAX), phone.lines().join(QLatin1Char('\n')));
        QVERIFY(changes.count() > states.names.size());
        QCOMPARE(m_sim->adbCalls(), (QStringList {getState, getState, getBoot, getState, getBoot}));

        QCoro::waitFor(phone.stopTask());
        QCOMPARE(states.names, (QStringList {"Starting", "Booting", "Running", "Stopping", "Stopped"}));
        QCOMPARE(phone.property("failure"), QVariant());
        QVERIFY(phone.lines().last().startsWith(QLatin1String("INFO    | Saving state on exit")));
        QCOMPARE(m_sim->adbCalls().last(), QStringLiteral("-s emulator-5554 emu kill"));

        // A second run's timeline counts from its own launch.
        phone.start(emulator(), 5554, StartOptions {});
        QCOMPARE(phone.seenAfter(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(phone.state(), State::Running, 10000);
        QVERIFY2(*phone.bootedAfter() < booted + 1200,
            qPrintable(QStringLiteral("%1 after %2").arg(*phone.bootedAfter()).arg(booted)));
        QCoro::waitFor(phone.stopTask());
    }

    void unexpectedEnds_data()
    {
        // script: redefines the emulator's hooks, or after "launch " names a file below the root started
        // instead
        columns<QByteArray, QStringList, QString>("script", "states", "failure");

        QStringList last;
        for (int i = 6; i <= 20; ++i)
            last.append(QStringLiteral("line %1").arg(i));
        const QString lastLines = last.join(QLatin1Char('\n'));
        // The path's "é" comes in two reads.
        QTest::newRow("status 1 at launch") << QByteArray(
            "at_start() { sleep 0.2; printf 'PANIC: Missing emulator engine program for /Users/\\303' >&2; "
            "sleep 0.2; printf '\\251mile\\n' >&2; exit 1; }")
                                            << QStringList {"Starting", "Stopped"}
                                            << "The emulator exited with status 1.\n\n" + commandLine
                + QStringLiteral("\nPANIC: Missing emulator engine program for /Users/émile");
        // A child of the emulator still writes after the emulator's end, within the end delay.
        QTest::newRow("status 1, the last words after the end")
            << QByteArray("at_start() { sleep 0.2; (sleep 0.05; echo 'FATAL | too late' >&2) & exit 1; }")
            << QStringList {"Starting", "Stopped"}
            << "The emulator exited with status 1.\n\n" + commandLine + "\nFATAL | too late";
        // A line in two pieces, blank lines, a line with leading white space, and an unfinished last line.
        QTest::newRow("status 3 while starting")
            << QByteArray(
                   "at_start() { printf 'first'; sleep 0.5; printf ' half\\n\\n   \\r\\n\\tindented\\n'; "
                   "printf 'no end'; exit 3; }")
            << QStringList {"Starting", "Stopped"}
            << "The emulator exited with status 3.\n\n" + commandLine + "\nfirst half\n\tindented\nno end";
        QTest::newRow("status 2 while booting")
            << "after_visible() { sleep 0.4; " + printLines(20) + "; exit 2; }"
            << QStringList {"Starting", "Booting", "Stopped"}
            << "The emulator exited with status 2.\n\n" + lastLines;
        QTest::newRow("status 1 while running")
            << "after_boot() { sleep 0.5; " + printLines(20) + "; exit 1; }"
            << QStringList {"Starting", "Booting", "Running", "Stopped"}
            << "The emulator exited with status 1.\n\n" + lastLines;
        QTest::newRow("status 0 while starting")
            << QByteArray("at_start() { sleep 0.2; exit 0; }") << QStringList {"Starting", "Stopped"}
            << "The emulator exited before it finished starting.";
        QTest::newRow("status 0 while booting") << QByteArray("after_visible() { sleep 0.4; exit 0; }")
                                                << QStringList {"Starting", "Booting", "Stopped"} << "";
        QTest::newRow("status 0 while running")
            << QByteArray("after_boot() { sleep 0.5; exit 0; }")
            << QStringList {"Starting", "Booting", "Running", "Stopped"} << "";
        const QString notStarted = QStringLiteral("Could not start the emulator: ");
        QTest::newRow("launch fails: missing") << QByteArray("launch missing/emulator") << QStringList {}
                                               << notStarted + "No such file or directory";
        QTest::newRow("launch fails: not a program")
            << QByteArray("launch plain") << QStringList {} << notStarted + "Permission denied";
    }

    void unexpectedEnds()
    {
        auto [script, states, failure] = row<QByteArray, QStringList, QString>("script", "states", "failure");

        const bool launch = script.startsWith("launch ");
        useQuickTiming([](auto &timing) { timing.endDelay = 300ms; });
        writeFile(m_root.filePath(QStringLiteral("plain")), "not a program");
        this->script(QStringLiteral("emulator"), launch ? QByteArray() : script);
        EmulatorProcess phone(phoneName);
        const StateLog log(phone);
        phone.start(
            launch ? m_root.filePath(QString::fromUtf8(script.mid(7))) : emulator(), 5554, StartOptions {});
        QTRY_COMPARE(log.names, states);
        QCOMPARE(phone.failure(), failure.isEmpty() ? std::nullopt : std::optional(failure));
        QCOMPARE(phone.lines().first(), commandLine);

        // The next start clears the failure and replaces the lines.
        useQuickTiming();
        this->script(QStringLiteral("emulator"), {});
        phone.start(emulator(), 5554, StartOptions {});
        QCOMPARE(phone.failure(), std::nullopt);
        QCOMPARE(phone.lines(), QStringList {commandLine});
        // Ended here, before it can outlive the test unseen; once adb sees it, it quits when asked.
        QTRY_VERIFY(phone.state() == State::Booting || phone.state() == State::Running);
        QCoro::waitFor(phone.stopTask());
    }

    void stopThatNeedsTermination_data()
    {
        // adb: "missing" for no adb at all
        columns<QByteArray, QStringList, QString>("adb", "lastLines", "failure");

        const QString notFound = QStringLiteral("adb was not found. Install the emulator and platform "
                                                "tools on the Setup tab first.");
        QTest::newRow("kill ignored") << QByteArray() << QStringList {terminating} << "";
        QTest::newRow("kill fails") << QByteArray("[ \"$3 $4\" = 'emu kill' ] && { echo '  error: could "
                                                  "not connect to TCP port 5554: "
                                                  "Connection refused  ' >&2; exit 1; }")
                                    << QStringList {"adb emu kill did not succeed: error: could not connect "
                                                    "to TCP port 5554: "
                                                    "Connection refused",
                                           terminating}
                                    << "";
        // Without adb the poll gives up at once and the phone stays starting; nothing can ask it to quit.
        QTest::newRow("adb missing") << QByteArray("missing")
                                     << QStringList {"adb emu kill did not succeed: " + notFound, terminating}
                                     << notFound;
    }

    void stopThatNeedsTermination()
    {
        auto [adb, lastLines, failure] = row<QByteArray, QStringList, QString>("adb", "lastLines", "failure");

        const QString adbPath = *AndroidTools::adbPath();
        const bool missing = adb == "missing";
        if (missing)
            QVERIFY(QFile::rename(adbPath, adbPath + QStringLiteral(".away")));
        const auto restore = qScopeGuard([&] {
            if (missing)
                QFile::rename(adbPath + QStringLiteral(".away"), adbPath);
        });
        m_sim->setBehaviour(QStringLiteral("emulator.ignore-kill"));
        script(QStringLiteral("adb"), missing ? QByteArray() : adb);
        EmulatorProcess phone(phoneName);
        const StateLog states(phone);
        phone.start(emulator(), 5554, StartOptions {});
        if (missing) {
            QTRY_COMPARE(phone.failure(), failure);
            QTRY_VERIFY(phone.lines().contains(bootCompleted));
        } else {
            QTRY_COMPARE(phone.state(), State::Running);
        }

        // Start while it runs, and stop or start while it stops, change nothing.
        QSignalSpy changes(&phone, &EmulatorProcess::changed);
        phone.start(emulator(), 5556, StartOptions {});
        QCOMPARE(changes.count(), 0);
        auto stopping = phone.stopTask();
        QCOMPARE(phone.state(), State::Stopping);
        changes.clear();
        const QStringList lines = phone.lines();
        phone.stop();
        phone.start(emulator(), 5556, StartOptions {true, true, true, QStringLiteral("Default"), {}, {}});
        QCOMPARE(changes.count(), 0);
        QCOMPARE(phone.port(), 5554);
        QCOMPARE(phone.lines(), lines);
        QCoro::waitFor(std::move(stopping));
        QTRY_COMPARE(phone.state(), State::Stopped);
        QCOMPARE(m_sim->adbCalls().count(QStringLiteral("-s emulator-5554 emu kill")), missing ? 0 : 1);
        QCOMPARE(states.names.mid(states.names.size() - 3),
            (QStringList {missing ? "Starting" : "Running", "Stopping", "Stopped"}));
        QCOMPARE(phone.failure(), failure.isEmpty() ? std::nullopt : std::optional(failure));
        QCOMPARE(phone.lines().mid(phone.lines().size() - lastLines.size()), lastLines);
    }

    // A poll waiting for adb's answer when Stop comes asks nothing more while the emulator takes its time to
    // go; the end is handled the end delay after the emulator has gone.
    void stopEndsTheBootPoll()
    {
        useQuickTiming([](auto &timing) { timing.endDelay = 300ms; });
        for (const char *key : {"emulator.never-boot", "emulator.ignore-kill"})
            m_sim->setBehaviour(QLatin1String(key));
        script(QStringLiteral("adb"), "[ \"$3\" = get-state ] && sleep 0.3");
        EmulatorProcess phone(phoneName);
        const StateLog states(phone);
        phone.start(emulator(), 5554, StartOptions {});
        QTRY_COMPARE(phone.state(), State::Booting);
        const qsizetype asked = m_sim->adbCalls().count(getState);
        QTRY_VERIFY(m_sim->adbCalls().count(getState) > asked);
        const qsizetype before = m_sim->adbCalls().size();
        QCoro::waitFor(phone.stopTask());
        QElapsedTimer sinceTerminated;
        sinceTerminated.start();
        QTRY_COMPARE(phone.state(), State::Stopped);
        QVERIFY2(sinceTerminated.elapsed() >= 300, qPrintable(QString::number(sinceTerminated.elapsed())));
        QCOMPARE(m_sim->adbCalls().mid(before), QStringList {QStringLiteral("-s emulator-5554 emu kill")});
        QCOMPARE(states.names, (QStringList {"Starting", "Booting", "Stopping", "Stopped"}));
    }

    // The log as a real emulator's pipes bring it: trimmed once per read, however it is sliced; a line too
    // long to show cut; a character the end cuts short kept as U+FFFD.
    void logLines_data()
    {
        // script: what the emulator prints at its start before it exits; lines: before the last read, at the
        // end
        columns<QByteArray, QList<int>, QString>("script", "lines", "last");

        // The last read comes whole: one write of a file, well within a pipe's capacity.
        const auto lines = [](int first, int count, int burst) {
            return QStringLiteral(
                "awk 'BEGIN { for (i = %1; i < %2; i++) print \"line \" i }'; sleep 0.3; "
                "awk 'BEGIN { for (i = 0; i < %3; i++) print i + 10000 }' >\"$SIM_STATE/burst\"; "
                "cat \"$SIM_STATE/burst\"")
                .arg(first)
                .arg(first + count)
                .arg(burst)
                .toUtf8();
        };
        // 2000 lines of six bytes: more than one slice of the queue, less than one read of the pipe.
        QTest::newRow("3500 and 2000 more in one read")
            << lines(2, 3499, 2000) << QList<int> {3500, 4500} << "11999";
        QTest::newRow("4000 and one more") << lines(2, 3999, 1) << QList<int> {4000, 3001} << "10000";
        const QString cut = QString(ChunkQueue::longestLine, QLatin1Char('a'))
            + QStringLiteral("… (%1 more characters)").arg(100000 - ChunkQueue::longestLine);
        QTest::newRow("a line too long to show")
            << QByteArray("head -c 100000 /dev/zero | tr '\\0' a; echo") << QList<int> {1, 2} << cut;
        QTest::newRow("a character cut short by the end")
            << QByteArray("printf 'end \\342\\202'") << QList<int> {1, 2} << QStringLiteral("end \uFFFD");
    }

    void logLines()
    {
        auto [script, lines, last] = row<QByteArray, QList<int>, QString>("script", "lines", "last");

        this->script(QStringLiteral("emulator"), "at_start() { " + script + "; sleep 0.3; exit 0; }");
        EmulatorProcess phone(phoneName);
        QList<int> counts;
        connect(
            &phone, &EmulatorProcess::linesChanged, this, [&] { counts.append(int(phone.lines().size())); });
        phone.start(emulator(), 5554, StartOptions {});
        QTRY_COMPARE(phone.state(), State::Stopped);
        QCOMPARE(counts.mid(counts.size() - 2), lines);
        QCOMPARE(phone.lines().last(), last);
    }

    void floodStaysBounded()
    {
        // 100,000 lines at once, far more than one drain can take.
        script(QStringLiteral("emulator"),
            "at_start() { awk 'BEGIN { for (i = 1; i <= 100000; i++) print "
            "\"line \" i }'; sleep 0.3; exit 0; }");
        EmulatorProcess phone(phoneName);
        qsizetype most = 0;
        connect(&phone, &EmulatorProcess::linesChanged, this,
            [&] { most = std::max(most, phone.lines().size()); });
        phone.start(emulator(), 5554, StartOptions {});
        QTRY_COMPARE_WITH_TIMEOUT(phone.state(), State::Stopped, 30000);
        QVERIFY2(most <= 5000, qPrintable(QString::number(most)));
        // Nothing is lost from the end, and what stays is in order.
        const QStringList &lines = phone.lines();
        QCOMPARE(lines.last(), QStringLiteral("line 100000"));
        QCOMPARE(lines.first(), QStringLiteral("line %1").arg(100000 - lines.size() + 1));
        QCOMPARE(phone.lineModel()->textBetween(0, 0, INT64_MAX, INT_MAX), lines.join(QLatin1Char('\n')));
    }

    // A round whose answer is not the awaited one is tried again; the phone still
    // boots.
    void pollRetries_data()
    {
        // adb: answers the first calls of one kind
        columns<QByteArray, QString>("adb", "call");

        // The first two calls of the kind get the row's answer instead of the phone's.
        const QByteArray state = "[ \"$3\" = get-state ] && [ $(grep -c get-state "
                                 "\"$SIM_STATE/adb.log\") -le 2 ] && ";
        const QByteArray boot = "[ \"$4\" = getprop ] && [ $(grep -c getprop "
                                "\"$SIM_STATE/adb.log\") -le 2 ] && ";
        QTest::newRow("not yet a device") << state + "{ echo offline; exit 0; }" << getState;
        QTest::newRow("get-state fails") << state + "{ echo 'error: closed' >&2; exit 1; }" << getState;
        QTest::newRow("get-state times out") << state + "exec sleep 30" << getState;
        QTest::newRow("not yet booted") << boot + "{ echo 0; exit 0; }" << getBoot;
        QTest::newRow("getprop fails") << boot + "{ echo 'error: device offline' >&2; exit 1; }" << getBoot;
        QTest::newRow("getprop times out") << boot + "exec sleep 30" << getBoot;
    }

    void pollRetries()
    {
        auto [adb, call] = row<QByteArray, QString>("adb", "call");

        useQuickTiming([](auto &timing) { timing.adbTimeout = 0.5; });
        script(QStringLiteral("adb"), adb);
        EmulatorProcess phone(phoneName);
        const StateLog states(phone);
        phone.start(emulator(), 5554, StartOptions {});
        QTRY_COMPARE_WITH_TIMEOUT(phone.state(), State::Running, 10000);
        QCOMPARE(states.names, (QStringList {"Starting", "Booting", "Running"}));
        QVERIFY(m_sim->adbCalls().count(call) >= 3);
        QCOMPARE(phone.failure(), std::nullopt);
    }

    // A dropped runner leaves its emulator running, and reads what it still prints without keeping it.
    void droppedRunner()
    {
        const QString go = m_root.filePath(QStringLiteral("go"));
        const QString done = m_root.filePath(QStringLiteral("done"));
        script(QStringLiteral("emulator"),
            QStringLiteral("after_boot() { while [ ! -e '%1' ]; do sleep 0.05; done; "
                           "head -c 100000000 /dev/zero; touch '%2'; }")
                .arg(go, done)
                .toUtf8());
        auto *phone = new EmulatorProcess(phoneName);
        phone->start(emulator(), 5554, StartOptions {});
        QTRY_COMPARE(phone->state(), State::Running);
        delete phone;
        QTest::qWait(200);
        QCOMPARE(m_sim->runningEmulators(), QStringList {"emulator-5554"});

        // The resident size comes from /proc, and says nothing under AddressSanitizer's quarantine.
#if !defined(Q_OS_LINUX) || defined(__SANITIZE_ADDRESS__)
        QSKIP("no resident size to go by");
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
        QSKIP("no resident size to go by");
#endif
#endif
        const auto resident = [] {
            QFile statm(QStringLiteral("/proc/self/statm"));
            statm.open(QIODevice::ReadOnly);
            return statm.readAll().split(' ').value(1).toLongLong() * 4096;
        };
        const qint64 before = resident();
        writeFile(go, "");
        // Waited for in the event loop itself: QTRY sleeps between its rounds, and a reader left asleep
        // lets the emulator write only a pipe's worth at a time.
        const QDeadlineTimer deadline(30000);
        while (!QFile::exists(done) && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        QVERIFY(QFile::exists(done));
        QTest::qWait(200);
        // 100 MB went through; far less than that stayed.
        QVERIFY2(resident() - before < 20'000'000, qPrintable(QString::number(resident() - before)));
    }
};

QTEST_GUILESS_MAIN(TestEmulatorProcess)
#include "tst_emulatorprocess.moc"
