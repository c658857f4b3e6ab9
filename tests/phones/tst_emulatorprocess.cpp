#include "AndroidTools.h"
#include "EmulatorProcess.h"
#include "SimHost.h"
#include "TestFiles.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <QCoro/QCoroTask>

using namespace std::chrono_literals;
using State = EmulatorProcess::State;

namespace {

const QString phoneName = QStringLiteral("Pixel_7_API_34");
const QString diskCheck
    = QStringLiteral("INFO    |      Ok: Disk space requirements to run avd: `Pixel_7_API_34` are met");
const QString bootCompleted = QStringLiteral("INFO    | boot completed");
const QString commandLine = QStringLiteral("$ emulator -avd Pixel_7_API_34 -port 5554 -gpu auto");
const QString terminating
    = QStringLiteral("The emulator did not exit within 10 seconds; terminating the process.");

// Short waits, so that the slow paths take well under a second.
EmulatorProcess::Timing quickTiming()
{
    EmulatorProcess::Timing timing;
    timing.bootPollInterval = 100ms;
    timing.stopWaitStep = 50ms;
    timing.endDelay = 50ms;
    return timing;
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
        EmulatorProcess::setTiming(quickTiming());
        QFile::remove(m_sim->stateDir() + QStringLiteral("/adb.log"));
    }

    void cleanup()
    {
        // Polls that were cancelled while asleep run out before the next test.
        QTest::qWait(250);
        m_sim->killEmulators();
        // A dropped runner's process handle deletes itself once its emulator has ended.
        QTest::qWait(250);
        for (const char *key : {"emulator.script", "adb.script", "emulator.crash", "emulator.exit-early",
                 "emulator.ignore-kill", "emulator.never-boot"})
            m_sim->clearBehaviour(QLatin1String(key));
    }

    void cleanupTestCase() { m_sim.reset(); }

    void arguments_data()
    {
        QTest::addColumn<bool>("coldBoot");
        QTest::addColumn<bool>("noSnapshot");
        QTest::addColumn<bool>("wipeData");
        QTest::addColumn<QString>("scale");
        QTest::addColumn<QString>("gpu");
        QTest::addColumn<QStringList>("arguments");

        QTest::newRow("defaults") << false << false << false << "Default"
                                  << "auto" << QStringList {"-gpu", "auto"};
        QTest::newRow("every option") << true << true << true << "0.5"
                                      << "host"
                                      << QStringList {"-no-snapshot-load", "-no-snapshot", "-wipe-data",
                                             "-scale", "0.5", "-gpu", "host"};
        QTest::newRow("cold boot only")
            << true << false << false << "Default"
            << "swiftshader_indirect" << QStringList {"-no-snapshot-load", "-gpu", "swiftshader_indirect"};
        QTest::newRow("scale not offered is passed on")
            << false << false << false << "2.5"
            << "auto" << QStringList {"-scale", "2.5", "-gpu", "auto"};
        QTest::newRow("only exactly Default means no scale")
            << false << false << false << "default"
            << "auto" << QStringList {"-scale", "default", "-gpu", "auto"};
        QTest::newRow("empty strings are passed on")
            << false << true << false << ""
            << "" << QStringList {"-no-snapshot", "-scale", "", "-gpu", ""};
    }

    void arguments()
    {
        QFETCH(bool, coldBoot);
        QFETCH(bool, noSnapshot);
        QFETCH(bool, wipeData);
        QFETCH(QString, scale);
        QFETCH(QString, gpu);
        QFETCH(QStringList, arguments);

        StartOptions options;
        options.coldBoot = coldBoot;
        options.noSnapshot = noSnapshot;
        options.wipeData = wipeData;
        options.scale = scale;
        options.gpu = gpu;
        QCOMPARE(options.arguments(), arguments);
    }

    // The real waits, pinned once; every other test runs with short ones.
    void realTiming()
    {
        const EmulatorProcess::Timing timing;
        QCOMPARE(timing.bootPollInterval, 2000ms);
        QCOMPARE(timing.stopWaitRounds * timing.stopWaitStep, 10000ms);
        QCOMPARE(timing.endDelay, 500ms);
        QCOMPARE(timing.adbTimeout, 10.0);
        QCOMPARE(timing.slowBootAfter, 180000ms);
    }

    void startBootAndStopWithTheRealWaits()
    {
        EmulatorProcess::setTiming({});
        // adb sees the phone after half a second and it boots a second later: within the first two seconds.
        m_sim->setTimeScale(0.15);
        const auto quick = qScopeGuard([this] { m_sim->setTimeScale(0.02); });
        EmulatorProcess phone(phoneName);
        const StateLog states(phone);
        QSignalSpy changes(&phone, &EmulatorProcess::changed);

        phone.start(emulator(), 5554, StartOptions {});
        QCOMPARE(phone.state(), State::Starting);
        QCOMPARE(phone.lines().first(), commandLine);
        QCOMPARE(phone.serial(), QStringLiteral("emulator-5554"));
        QTRY_COMPARE_WITH_TIMEOUT(phone.state(), State::Running, 10000);
        QCOMPARE(states.names, (QStringList {"Starting", "Booting", "Running"}));
        QVERIFY(phone.lines().contains(diskCheck));
        QTRY_VERIFY(phone.lines().contains(bootCompleted));
        QCOMPARE(phone.lineModel()->text(), phone.lines().join(QLatin1Char('\n')));
        QVERIFY(changes.count() > states.names.size());
        // The first round came before adb saw the phone, the next one two seconds later saw it boot.
        QCOMPARE(m_sim->adbCalls(),
            (QStringList {"-s emulator-5554 get-state", "-s emulator-5554 get-state",
                "-s emulator-5554 shell getprop sys.boot_completed"}));

        QCoro::waitFor(phone.stopTask());
        QCOMPARE(phone.state(), State::Stopped);
        QCOMPARE(states.names, (QStringList {"Starting", "Booting", "Running", "Stopping", "Stopped"}));
        QCOMPARE(phone.failure(), std::nullopt);
        QCOMPARE(phone.property("failure"), QVariant());
        QVERIFY(phone.lines().last().startsWith(QLatin1String("INFO    | Saving state on exit")));
        QCOMPARE(m_sim->adbCalls().last(), QStringLiteral("-s emulator-5554 emu kill"));
    }

    void unexpectedEnds_data()
    {
        QTest::addColumn<QString>("behaviour"); // a switch, or emulator.script with the script
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QStringList>("states");
        QTest::addColumn<QString>("failure"); // "lines" for the status text with the last lines

        const QString script = QStringLiteral("emulator.script");
        QTest::newRow("crash at launch") << QStringLiteral("emulator.crash") << QByteArray()
                                         << QStringList {"Starting", "Stopped"} << "lines";
        QTest::newRow("status 0 while starting")
            << QStringLiteral("emulator.exit-early") << QByteArray() << QStringList {"Starting", "Stopped"}
            << "The emulator exited before it finished starting.";
        QTest::newRow("status 0 while booting")
            << script << QByteArray("after_visible() { sleep 0.5; exit 0; }")
            << QStringList {"Starting", "Booting", "Stopped"} << "";
        QTest::newRow("status 0 while running")
            << script << QByteArray("after_boot() { sleep 0.5; exit 0; }")
            << QStringList {"Starting", "Booting", "Running", "Stopped"} << "";
    }

    void unexpectedEnds()
    {
        QFETCH(QString, behaviour);
        QFETCH(QByteArray, script);
        QFETCH(QStringList, states);
        QFETCH(QString, failure);

        m_sim->setBehaviour(behaviour, script.isEmpty() ? QByteArrayLiteral("1") : script);
        EmulatorProcess phone(phoneName);
        const StateLog log(phone);
        phone.start(emulator(), 5554, StartOptions {});
        QTRY_COMPARE(log.names, states);
        if (failure == QLatin1String("lines")) {
            QCOMPARE(phone.lines().first(), commandLine);
            QCOMPARE(phone.lines().last(),
                QStringLiteral("ERROR   | Emulator exited with a fatal error. Exiting."));
            QVERIFY(phone.lines().size() <= 15);
            QCOMPARE(phone.failure(),
                QStringLiteral("The emulator exited with status 1.\n\n")
                    + phone.lines().join(QLatin1Char('\n')));
        } else {
            QCOMPARE(phone.failure(), failure.isEmpty() ? std::nullopt : std::optional(failure));
        }
    }

    void failureKeepsTheLastFifteenLines()
    {
        script(QStringLiteral("emulator"),
            "at_start() { sleep 0.2; i=1; while [ $i -le 20 ]; do echo \"line $i\"; i=$((i+1)); done; exit "
            "3; }");
        EmulatorProcess phone(phoneName);
        phone.start(emulator(), 5554, StartOptions {});
        QTRY_COMPARE(phone.state(), State::Stopped);
        QStringList last;
        for (int i = 6; i <= 20; ++i)
            last.append(QStringLiteral("line %1").arg(i));
        QCOMPARE(phone.failure(),
            QStringLiteral("The emulator exited with status 3.\n\n") + last.join(QLatin1Char('\n')));

        // The next start clears the failure and replaces the lines.
        m_sim->clearBehaviour(QStringLiteral("emulator.script"));
        phone.start(emulator(), 5554, StartOptions {});
        QCOMPARE(phone.failure(), std::nullopt);
        QCOMPARE(phone.lines(), QStringList {commandLine});
        QTRY_COMPARE(phone.state(), State::Running);
        QCoro::waitFor(phone.stopTask());
    }

    void stopThatNeedsTermination_data()
    {
        QTest::addColumn<QByteArray>("adb");
        QTest::addColumn<QString>("killLine");

        QTest::newRow("kill ignored") << QByteArray() << QString();
        QTest::newRow("kill fails")
            << QByteArray(
                   "[ \"$3 $4\" = 'emu kill' ] && { echo '  error: could not connect to TCP port 5554: "
                   "Connection refused  ' >&2; exit 1; }")
            << "adb emu kill did not succeed: error: could not connect to TCP port 5554: Connection refused";
    }

    void stopThatNeedsTermination()
    {
        QFETCH(QByteArray, adb);
        QFETCH(QString, killLine);

        m_sim->setBehaviour(QStringLiteral("emulator.ignore-kill"));
        script(QStringLiteral("adb"), adb);
        EmulatorProcess phone(phoneName);
        const StateLog states(phone);
        phone.start(emulator(), 5554, StartOptions {});
        QTRY_COMPARE(phone.state(), State::Running);

        QCoro::waitFor(phone.stopTask());
        QTRY_COMPARE(phone.state(), State::Stopped);
        QCOMPARE(states.names, (QStringList {"Starting", "Booting", "Running", "Stopping", "Stopped"}));
        QCOMPARE(phone.failure(), std::nullopt);
        const QStringList expected
            = killLine.isEmpty() ? QStringList {terminating} : QStringList {killLine, terminating};
        QCOMPARE(phone.lines().mid(phone.lines().size() - expected.size()), expected);
    }

    void stopAndStartWhileStoppingChangeNothing()
    {
        script(QStringLiteral("adb"), "[ \"$3 $4\" = 'emu kill' ] && sleep 0.3");
        EmulatorProcess phone(phoneName);
        phone.start(emulator(), 5554, StartOptions {});
        QTRY_COMPARE(phone.state(), State::Running);

        auto stopping = phone.stopTask();
        QCOMPARE(phone.state(), State::Stopping);
        QSignalSpy changes(&phone, &EmulatorProcess::changed);
        const QStringList lines = phone.lines();
        phone.stop();
        StartOptions wipe;
        wipe.wipeData = true;
        phone.start(emulator(), 5556, wipe);
        QCOMPARE(changes.count(), 0);
        QCOMPARE(phone.port(), 5554);
        QCOMPARE(phone.lines(), lines);

        QCoro::waitFor(std::move(stopping));
        QCOMPARE(phone.state(), State::Stopped);
        QCOMPARE(m_sim->adbCalls().count(QStringLiteral("-s emulator-5554 emu kill")), 1);
        phone.stop();
        QCOMPARE(phone.state(), State::Stopped);
    }

    // A poll asleep when Stop comes asks adb nothing more, even once the phone starts again.
    void stopEndsTheBootPoll()
    {
        EmulatorProcess::Timing slow = quickTiming();
        slow.bootPollInterval = 1000ms;
        EmulatorProcess::setTiming(slow);
        m_sim->setBehaviour(QStringLiteral("emulator.never-boot"));
        EmulatorProcess phone(phoneName);
        phone.start(emulator(), 5554, StartOptions {});
        // Stop while the poll sleeps, after its first boot question.
        QTRY_VERIFY(
            m_sim->adbCalls().contains(QStringLiteral("-s emulator-5554 shell getprop sys.boot_completed")));
        QTest::qWait(200);
        QCoro::waitFor(phone.stopTask());
        EmulatorProcess::setTiming(quickTiming());
        phone.start(emulator(), 5556, StartOptions {});
        QTest::qWait(1500); // past the sleeping round's end
        const QStringList calls = m_sim->adbCalls();
        const qsizetype killed = calls.indexOf(QStringLiteral("-s emulator-5554 emu kill"));
        QVERIFY(killed > 0);
        QCOMPARE(calls.mid(killed).filter(QStringLiteral("emulator-5554")).size(), 1);
        QVERIFY(calls.mid(killed).contains(QStringLiteral("-s emulator-5556 get-state")));
        QCoro::waitFor(phone.stopTask());
    }

    void startWhileRunningChangesNothing()
    {
        EmulatorProcess phone(phoneName);
        phone.start(emulator(), 5554, StartOptions {});
        QTRY_COMPARE(phone.state(), State::Running);
        QSignalSpy changes(&phone, &EmulatorProcess::changed);
        phone.start(emulator(), 5556, StartOptions {});
        QCOMPARE(changes.count(), 0);
        QCOMPARE(phone.serial(), QStringLiteral("emulator-5554"));
        QCoro::waitFor(phone.stopTask());
    }

    void launchFailure()
    {
        EmulatorProcess phone(phoneName);
        QSignalSpy states(&phone, &EmulatorProcess::stateChanged);
        phone.start(m_root.filePath(QStringLiteral("missing/emulator")), 5556, StartOptions {});
        QCOMPARE(phone.state(), State::Stopped);
        QCOMPARE(phone.failure(), QStringLiteral("Could not start the emulator: No such file or directory"));
        QCOMPARE(phone.property("failure"),
            QVariant(QStringLiteral("Could not start the emulator: No such file or directory")));
        QCOMPARE(phone.lines(), QStringList {"$ emulator -avd Pixel_7_API_34 -port 5556 -gpu auto"});
        QCOMPARE(phone.port(), 5556);
        QCOMPARE(states.count(), 0);

        writeFile(m_root.filePath(QStringLiteral("plain")), "not a program");
        phone.start(m_root.filePath(QStringLiteral("plain")), 5554, StartOptions {});
        QCOMPARE(phone.state(), State::Stopped);
        QCOMPARE(phone.failure(), QStringLiteral("Could not start the emulator: Permission denied"));
    }

    void outputBecomesLines()
    {
        // A line in two pieces, blank lines, a line with leading white space, and an unfinished last line.
        script(QStringLiteral("emulator"),
            "at_start() { printf 'first'; sleep 0.5; printf ' half\\n\\n   \\r\\n\\tindented\\n'; "
            "printf 'no end'; exit 0; }");
        EmulatorProcess phone(phoneName);
        phone.start(emulator(), 5554, StartOptions {});
        QTest::qWait(250);
        QCOMPARE(phone.lines(), QStringList {commandLine});
        QTRY_COMPARE(phone.state(), State::Stopped);
        QCOMPARE(phone.lines(), (QStringList {commandLine, "first half", "\tindented", "no end"}));
    }

    void logIsTrimmed()
    {
        // 3999 lines after the command line make 4000, which stay; one more makes 4001, which drops 1000.
        script(QStringLiteral("emulator"),
            "at_start() { sleep 0.2; i=1; while [ $i -le 3999 ]; do echo \"line $i\"; i=$((i+1)); done; "
            "sleep 0.5; echo 'one more'; sleep 0.3; exit 0; }");
        EmulatorProcess phone(phoneName);
        phone.start(emulator(), 5554, StartOptions {});
        QTRY_COMPARE(phone.lines().size(), 4000);
        QCOMPARE(phone.lines().last(), QStringLiteral("line 3999"));
        QTRY_COMPARE(phone.lines().size(), 3001);
        QCOMPARE(phone.lines().first(), QStringLiteral("line 1000"));
        QCOMPARE(phone.lines().last(), QStringLiteral("one more"));
        QCOMPARE(phone.lineModel()->count(), 3001);
        QTRY_COMPARE(phone.state(), State::Stopped);
    }

    void trimmingRule_data()
    {
        QTest::addColumn<int>("count"); // lines after a drain
        QTest::addColumn<int>("dropped");

        QTest::newRow("at the bound") << 4000 << 0;
        QTest::newRow("one past") << 4001 << 1000;
        QTest::newRow("3500 plus 2000") << 5500 << 1000;
        QTest::newRow("one read of thousands") << 100001 << 95001;
    }

    void trimmingRule()
    {
        QFETCH(int, count);
        QFETCH(int, dropped);
        QCOMPARE(EmulatorProcess::linesToDrop(count), dropped);
    }

    void floodStaysBounded()
    {
        // 100,000 lines at once, far more than one drain can take.
        script(QStringLiteral("emulator"),
            "at_start() { awk 'BEGIN { for (i = 1; i <= 100000; i++) print \"line \" i }'; sleep 0.3; exit "
            "0; "
            "}");
        EmulatorProcess phone(phoneName);
        qsizetype most = 0;
        connect(&phone, &EmulatorProcess::linesChanged, this,
            [&] { most = std::max(most, phone.lines().size()); });
        phone.start(emulator(), 5554, StartOptions {});
        QTRY_COMPARE_WITH_TIMEOUT(phone.state(), State::Stopped, 30000);
        QVERIFY2(most <= EmulatorProcess::linesAfterDrain, qPrintable(QString::number(most)));
        // Nothing is lost from the end, and what stays is in order.
        const QStringList &lines = phone.lines();
        QCOMPARE(lines.last(), QStringLiteral("line 100000"));
        QCOMPARE(lines.first(), QStringLiteral("line %1").arg(100000 - lines.size() + 1));
        QCOMPARE(phone.lineModel()->text(), lines.join(QLatin1Char('\n')));
    }

    void pollRetriesUntilTheDeviceAnswers()
    {
        script(QStringLiteral("adb"), "[ \"$3\" = get-state ] && { echo offline; exit 0; }");
        EmulatorProcess phone(phoneName);
        phone.start(emulator(), 5554, StartOptions {});
        QTRY_VERIFY(m_sim->adbCalls().size() >= 4);
        QCOMPARE(phone.state(), State::Starting);
        QVERIFY(m_sim->adbCalls().filter(QStringLiteral("getprop")).isEmpty());

        m_sim->clearBehaviour(QStringLiteral("adb.script"));
        QTRY_COMPARE(phone.state(), State::Running);
        QCoro::waitFor(phone.stopTask());
    }

    void adbMissing()
    {
        const QString adb = *AndroidTools::adbPath();
        QVERIFY(QFile::rename(adb, adb + QStringLiteral(".away")));
        const auto restore = qScopeGuard([&] { QFile::rename(adb + QStringLiteral(".away"), adb); });
        const QString notFound = QStringLiteral(
            "adb was not found. Install the emulator and platform tools on the Setup tab first.");
        EmulatorProcess phone(phoneName);
        phone.start(emulator(), 5554, StartOptions {});
        QTRY_COMPARE(phone.failure(), notFound);
        QTRY_VERIFY(phone.lines().contains(bootCompleted));
        QTest::qWait(300);
        QCOMPARE(phone.state(), State::Starting);

        // Nothing can ask the emulator to quit, so it is terminated; the failure stays.
        QCoro::waitFor(phone.stopTask());
        QTRY_COMPARE(phone.state(), State::Stopped);
        QCOMPARE(phone.failure(), notFound);
        QCOMPARE(phone.lines().mid(phone.lines().size() - 2),
            (QStringList {QStringLiteral("adb emu kill did not succeed: ") + notFound, terminating}));
    }

    void bootTimeline_data()
    {
        QTest::addColumn<bool>("boots");
        QTest::newRow("boots after the hint") << true;
        QTest::newRow("never boots") << false;
    }

    void bootTimeline()
    {
        QFETCH(bool, boots);
        EmulatorProcess::Timing timing = quickTiming();
        timing.slowBootAfter = 3000ms;
        EmulatorProcess::setTiming(timing);
        // adb sees the phone after about 1.6 s and it boots 3 s later.
        m_sim->setTimeScale(0.5);
        const auto quick = qScopeGuard([this] {
            m_sim->setTimeScale(0.02);
            m_sim->clearBehaviour(QStringLiteral("emulator.never-boot"));
        });
        if (!boots)
            m_sim->setBehaviour(QStringLiteral("emulator.never-boot"));
        EmulatorProcess phone(phoneName);
        QSignalSpy timeline(&phone, &EmulatorProcess::timelineChanged);
        phone.start(emulator(), 5554, StartOptions {});
        QCOMPARE(phone.property("secondsSoFar"), QVariant(qint64(0)));
        QVERIFY(!phone.slowBoot());

        // The time so far moves on with the poll rounds, and past the limit the hint is due.
        QTRY_VERIFY_WITH_TIMEOUT(phone.slowBoot(), 10000);
        QVERIFY2(timeline.count() >= 4, qPrintable(QString::number(timeline.count())));
        QCOMPARE(phone.property("secondsSoFar").toLongLong(), (*phone.sinceLaunch() + 500) / 1000);
        if (!boots) {
            QTRY_COMPARE(phone.state(), State::Booting);
            QVERIFY(*phone.seenAfter() >= 1500);
            QTest::qWait(500);
            QCOMPARE(phone.state(), State::Booting);
            QVERIFY(phone.slowBoot());
            QVERIFY(phone.lines().filter(QStringLiteral("Booted in")).isEmpty());
            QCoro::waitFor(phone.stopTask());
            return;
        }
        QTRY_COMPARE_WITH_TIMEOUT(phone.state(), State::Running, 20000);
        QVERIFY(!phone.slowBoot());
        const qint64 seen = *phone.seenAfter();
        const qint64 booted = *phone.bootedAfter();
        QVERIFY2(seen >= 1500 && booted >= 4500 && booted > seen,
            qPrintable(QStringLiteral("%1 %2").arg(seen).arg(booted)));
        QCOMPARE(phone.lines().filter(QStringLiteral("Booted in")),
            QStringList {QStringLiteral("Booted in %1 s; adb saw it after %2 s.")
                             .arg((booted + 500) / 1000)
                             .arg((seen + 500) / 1000)});
        QCoro::waitFor(phone.stopTask());
    }

    void droppingTheObjectLeavesTheEmulatorRunning()
    {
        auto *phone = new EmulatorProcess(phoneName);
        phone->start(emulator(), 5554, StartOptions {});
        QTRY_COMPARE(phone->state(), State::Running);
        delete phone;

        QTest::qWait(200);
        QCOMPARE(m_sim->runningEmulators(), QStringList {"emulator-5554"});
        const ProcessResult killed = QCoro::waitFor(AndroidTools::runADB(
            {QStringLiteral("emu"), QStringLiteral("kill")}, QStringLiteral("emulator-5554"), 10.0));
        QVERIFY(killed.isClean());
        QTRY_VERIFY(m_sim->runningEmulators().isEmpty());
    }

    void droppedRunnerDiscardsTheOutput()
    {
#ifndef Q_OS_LINUX
        QSKIP("reads the resident size from /proc");
#endif
#if defined(__SANITIZE_ADDRESS__)
        QSKIP("AddressSanitizer keeps freed memory in quarantine, so the resident size says nothing");
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
        QSKIP("AddressSanitizer keeps freed memory in quarantine, so the resident size says nothing");
#endif
#endif
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

        const auto resident = [] {
            QFile statm(QStringLiteral("/proc/self/statm"));
            statm.open(QIODevice::ReadOnly);
            return statm.readAll().split(' ').value(1).toLongLong() * 4096;
        };
        const qint64 before = resident();
        writeFile(go, "");
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(done), 30000);
        QTest::qWait(200);
        // 100 MB went through; far less than that stayed.
        QVERIFY2(resident() - before < 20'000'000, qPrintable(QString::number(resident() - before)));
    }
};

QTEST_GUILESS_MAIN(TestEmulatorProcess)
#include "tst_emulatorprocess.moc"
