#include "AndroidTools.h"
#include "PhoneStore.h"
#include "SimHost.h"
#include <csignal>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

#include <QCoro/QCoroTask>

using namespace std::chrono_literals;
using State = EmulatorProcess::State;

Q_IMPORT_QML_PLUGIN(TolvanePlugin)

namespace {

const QString pixel7 = QStringLiteral("Pixel_7_API_34");
const QString playImage = QStringLiteral("system-images;android-34;google_apis_playstore;arm64-v8a");

DeviceDef pixel7Device()
{
    return DeviceDef {QStringLiteral("pixel_7"), QStringLiteral("Pixel 7"), QStringLiteral("Google")};
}

SystemImage image34()
{
    return SystemImage {playImage, 34, QStringLiteral("google_apis_playstore"), false};
}

QStringList names(const QList<AVDInfo> &phones)
{
    QStringList names;
    for (const AVDInfo &phone : phones)
        names.append(phone.name);
    return names;
}

} // namespace

class TestPhoneStore : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<SimHost> m_sim;

    // Answers `avdmanager <command>` or `sdkmanager <argument>` with the given shell text instead of doing
    // it.
    void answer(const QString &tool, const QString &command, const QByteArray &script)
    {
        const QByteArray words = tool == QLatin1String("sdkmanager") ? "$2" : "$1 $2";
        m_sim->setBehaviour(tool + QStringLiteral(".script"),
            "if [ \"" + words + "\" = '" + command.toUtf8() + "' ]; then\n" + script + "\nfi\n");
    }

    static void stopAll(PhoneStore &store)
    {
        for (EmulatorProcess *runner : store.allRunners()) {
            QCoro::waitFor(runner->stopTask());
            QTRY_COMPARE(runner->state(), State::Stopped);
        }
    }

private Q_SLOTS:
    void initTestCase()
    {
        // As the app does at start: a tool that exits before reading its input must not end the process.
        std::signal(SIGPIPE, SIG_IGN);
    }

    void init()
    {
        m_sim.reset();
        m_root = std::make_unique<QTemporaryDir>();
        m_sim = std::make_unique<SimHost>(m_root->path());
        m_sim->activate();
        m_sim->makeReady();
        EmulatorProcess::Timing timing;
        timing.bootPollInterval = 100ms;
        timing.stopWaitStep = 50ms;
        timing.endDelay = 50ms;
        EmulatorProcess::setTiming(timing);
        PhoneStore::setTimeouts({});
    }

    void cleanup()
    {
        // Polls that were cancelled while asleep run out before the next test.
        QTest::qWait(250);
    }

    void cleanupTestCase() { m_sim.reset(); }

    void isValidName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("valid");

        for (const QString &name : {QStringLiteral(""), QStringLiteral("my phone"), QStringLiteral(" Pixel"),
                 QStringLiteral("Pixel "), QStringLiteral("Pixél"), QStringLiteral("Pixel\U0001D400"),
                 QStringLiteral("a/b")})
            QTest::addRow("refused: '%s'", qPrintable(name)) << name << false;
        for (const QString &name : {QStringLiteral("_"), QStringLiteral("a.b-c"),
                 QStringLiteral("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-")})
            QTest::addRow("valid: '%s'", qPrintable(name)) << name << true;
    }

    void isValidName()
    {
        QFETCH(QString, name);
        QFETCH(bool, valid);
        QCOMPARE(PhoneStore::isValidName(name), valid);
    }

    void consolePort_data()
    {
        QTest::addColumn<QList<int>>("busy");
        QTest::addColumn<int>("port");

        QList<int> all;
        for (int port = 5554; port <= 5584; port += 2)
            all.append(port);
        QTest::newRow("none busy") << QList<int> {} << 5554;
        QTest::newRow("first two busy") << QList<int> {5554, 5556} << 5558;
        QTest::newRow("gap is filled") << QList<int> {5554, 5558} << 5556;
        QTest::newRow("fifteen busy") << all.mid(0, 15) << 5584;
        QTest::newRow("all sixteen busy") << all << 5584;
    }

    void consolePort()
    {
        QFETCH(QList<int>, busy);
        QFETCH(int, port);
        QCOMPARE(PhoneStore::consolePort(QSet<int>(busy.begin(), busy.end())), port);
    }

    void runnersAreMadeOnceAndSorted()
    {
        PhoneStore store;
        QSignalSpy runners(&store, &PhoneStore::runnersChanged);
        EmulatorProcess *b = store.runner(QStringLiteral("b"));
        EmulatorProcess *upper = store.runner(QStringLiteral("A"));
        EmulatorProcess *lower = store.runner(QStringLiteral("a"));
        QCOMPARE(store.runner(QStringLiteral("b")), b);
        QCOMPARE(b->name(), QStringLiteral("b"));
        QCOMPARE(runners.count(), 3);
        QCOMPARE(store.allRunners(), (QList<EmulatorProcess *> {upper, lower, b}));
        QVERIFY(store.runningRunners().isEmpty());
    }

    void createListStartStopDelete()
    {
        m_sim->installSystemImage(playImage);
        PhoneStore store;
        QSignalSpy changes(&store, &PhoneStore::changed);
        QCoro::waitFor(store.loadDevicesTask());
        QCoro::waitFor(store.loadImagesTask());
        QCOMPARE(store.devices().at(3), pixel7Device());
        // Newest first, and within a level by variant, Google APIs before Google Play.
        QCOMPARE(store.images().last().id, playImage);
        QVERIFY(store.images().last().installed);

        const std::optional<QString> failure
            = QCoro::waitFor(store.createPhoneTask(pixel7, store.devices().at(3), store.images().last()));
        QCOMPARE(failure, std::nullopt);
        // The list was refreshed before the creation reported back.
        QCOMPARE(names(store.phones()), QStringList {pixel7});
        QCOMPARE(store.phones().first().basedOn,
            QStringLiteral("Android 14.0 (\"UpsideDownCake\") Tag/ABI: google_apis_playstore/arm64-v8a"));
        QCOMPARE(store.rawPhoneListing(), std::nullopt);
        QCOMPARE(store.property("phones").toList().first().value<AVDInfo>().name, pixel7);
        QCOMPARE(store.allRunners().size(), 1);
        QCOMPARE(store.errorSummary(), std::nullopt);

        EmulatorProcess *phone = store.runner(pixel7);
        QStringList states;
        connect(phone, &EmulatorProcess::stateChanged, this, [&] { states.append(phone->stateName()); });
        const int before = changes.count();
        store.start(pixel7, StartOptions {});
        QCOMPARE(phone->state(), State::Starting);
        QCOMPARE(
            phone->lines().first(), QStringLiteral("$ emulator -avd Pixel_7_API_34 -port 5554 -gpu auto"));
        QTRY_COMPARE(phone->state(), State::Running);
        QCOMPARE(states, (QStringList {"Starting", "Booting", "Running"}));
        QVERIFY(changes.count() >= before + 3);
        QCOMPARE(store.runningRunners(), QList<EmulatorProcess *> {phone});
        QVERIFY(phone->lines().contains(QStringLiteral("INFO    | Booting from snapshot default")));

        QCoro::waitFor(phone->stopTask());
        QCOMPARE(phone->state(), State::Stopped);
        QVERIFY(store.runningRunners().isEmpty());

        const QPointer<EmulatorProcess> gone(phone);
        QCoro::waitFor(store.deletePhoneTask(pixel7));
        QVERIFY(store.phones().isEmpty());
        QVERIFY(store.allRunners().isEmpty());
        QCOMPARE(store.errorSummary(), std::nullopt);
        QTRY_VERIFY(!gone);
    }

    void twoPhonesAtOnceAndAFreedPort()
    {
        for (const char *name : {"A", "B", "C", "D"})
            m_sim->createPhone(QLatin1String(name));
        PhoneStore store;
        QCoro::waitFor(store.refreshTask());
        QCOMPARE(names(store.phones()), (QStringList {"A", "B", "C", "D"}));

        store.start(QStringLiteral("A"), StartOptions {});
        store.start(QStringLiteral("B"), StartOptions {});
        QCOMPARE(store.runner(QStringLiteral("A"))->port(), 5554);
        QCOMPARE(store.runner(QStringLiteral("B"))->port(), 5556);
        QCOMPARE(store.runner(QStringLiteral("B"))->serial(), QStringLiteral("emulator-5556"));
        QTRY_COMPARE(store.runningRunners().size(), 2);
        QVERIFY(
            m_sim->adbCalls().contains(QStringLiteral("-s emulator-5556 shell getprop sys.boot_completed")));

        store.start(QStringLiteral("C"), StartOptions {});
        QCOMPARE(store.runner(QStringLiteral("C"))->port(), 5558);
        QTRY_COMPARE(store.runner(QStringLiteral("C"))->state(), State::Running);
        QCoro::waitFor(store.runner(QStringLiteral("C"))->stopTask());
        QCOMPARE(store.runner(QStringLiteral("C"))->state(), State::Stopped);
        // C keeps its port number while stopped, but a stopped phone holds no port.
        QCOMPARE(store.runner(QStringLiteral("C"))->port(), 5558);
        store.start(QStringLiteral("D"), StartOptions {});
        QCOMPARE(store.runner(QStringLiteral("D"))->port(), 5558);
        QTRY_COMPARE(store.runningRunners().size(), 3);
        stopAll(store);
    }

    void allSixteenPortsBusy()
    {
        EmulatorProcess::Timing timing = EmulatorProcess::timing();
        timing.bootPollInterval = 2s;
        EmulatorProcess::setTiming(timing);
        // Emulators that never boot and end only when terminated.
        m_sim->setBehaviour(QStringLiteral("emulator.script"), "at_start() { exec sleep 30; }");
        PhoneStore store;
        QList<int> expected;
        for (int i = 0; i < 17; ++i) {
            store.start(QStringLiteral("P%1").arg(i, 2, 10, QLatin1Char('0')), StartOptions {});
            expected.append(std::min(5554 + 2 * i, 5584));
        }
        QList<int> ports;
        for (EmulatorProcess *runner : store.allRunners()) {
            QCOMPARE(runner->state(), State::Starting);
            ports.append(runner->port());
        }
        QCOMPARE(ports, expected);

        const QList<EmulatorProcess *> runners = store.allRunners();
        for (EmulatorProcess *runner : runners)
            runner->stop();
        const auto allStopped = [&runners] {
            return std::all_of(runners.cbegin(), runners.cend(),
                [](EmulatorProcess *runner) { return runner->state() == State::Stopped; });
        };
        QTRY_VERIFY_WITH_TIMEOUT(allStopped(), 10000);
        QTest::qWait(2000); // the polls asleep when the stops began
    }

    void phoneStartedElsewhere()
    {
        for (const char *name : {"A", "B"})
            m_sim->createPhone(QLatin1String(name));
        const QString serial = m_sim->startPhone(QStringLiteral("A"));
        PhoneStore store;
        QCoro::waitFor(store.refreshTask());
        QCOMPARE(store.elsewhere(), (QMap<QString, QString> {{"A", serial}}));
        QVERIFY(m_sim->adbCalls().contains(QStringLiteral("-s emulator-5554 emu avd name")));
        const QVariantMap a {{"name", "A"}, {"serial", serial}};
        QCOMPARE(store.runningTargets(), QVariantList {a});

        // Ours are left alone: A cannot start a second time, and B skips the port A holds.
        store.start(QStringLiteral("A"), StartOptions {});
        QCOMPARE(store.runner(QStringLiteral("A"))->state(), State::Stopped);
        store.start(QStringLiteral("B"), StartOptions {});
        EmulatorProcess *b = store.runner(QStringLiteral("B"));
        QCOMPARE(b->port(), 5556);
        QTRY_COMPARE(b->state(), State::Running);
        QCoro::waitFor(store.refreshTask());
        QVERIFY(!m_sim->adbCalls().contains(QStringLiteral("-s emulator-5556 emu avd name")));
        const QVariantMap bTarget {{"name", "B"}, {"serial", "emulator-5556"}};
        QCOMPARE(store.runningTargets(), (QVariantList {a, bTarget}));

        QCoro::waitFor(store.stopElsewhereTask(QStringLiteral("A")));
        QVERIFY(store.elsewhere().isEmpty());
        QVERIFY(store.stoppingElsewhere().isEmpty());
        QCOMPARE(m_sim->runningEmulators(), QStringList {"emulator-5556"});
        QCOMPARE(store.errorSummary(), std::nullopt);
        stopAll(store);
    }

    void diskUseAndRemovingImages()
    {
        const QString used = QStringLiteral("system-images;android-34;google_apis;arm64-v8a");
        const QString unused = QStringLiteral("system-images;android-35;google_apis;arm64-v8a");
        m_sim->createPhone(pixel7, QStringLiteral("pixel_7"), used);
        m_sim->installSystemImage(unused);
        // The first boot makes the phone's 6 GB data image, sparse as the emulator's own.
        m_sim->startPhone(pixel7);
        m_sim->killEmulators();
        PhoneStore store;
        QCoro::waitFor(store.refreshTask());

        const QString folder = store.phones().first().path;
        qint64 apparent = 0;
        for (const QFileInfo &file : QDir(folder).entryInfoList(QDir::Files))
            apparent += file.size();
        QVERIFY(apparent > 6'000'000'000);
        const qint64 taken = store.phoneSizes().value(pixel7).toLongLong();
        QVERIFY2(taken >= 4'000'000 && taken < 20'000'000, qPrintable(QString::number(taken)));
        QCOMPARE(store.phonesBytes(), taken);
        QCOMPARE(store.installedImages().size(), 2);
        QCOMPARE(store.installedImages().at(0).users, QStringList {pixel7});
        QCOMPARE(store.installedImages().at(1).users, QStringList {});
        QVERIFY(store.imagesBytes() >= 4'000'000 && store.imagesBytes() < 20'000'000);
        QVERIFY(store.freeBytes().value_or(0) > 0);
        QCOMPARE(PhoneStore::formatBytes(taken).right(3), QStringLiteral(" MB"));

        const QString sdk = AndroidTools::sdkRoot() + QStringLiteral("/system-images/");
        QVERIFY(!QCoro::waitFor(store.removeImageTask(used)));
        QCOMPARE(store.errorSummary(),
            QStringLiteral("Android 14 (API 34), Google APIs is used by Pixel_7_API_34."));
        QVERIFY(QFile::exists(sdk + QStringLiteral("android-34/google_apis/arm64-v8a/package.xml")));

        QVERIFY(QCoro::waitFor(store.removeImageTask(unused)));
        QVERIFY(!QFile::exists(sdk + QStringLiteral("android-35/google_apis/arm64-v8a")));
        QCOMPARE(store.installedImages().size(), 1);
        QVERIFY(store.imageJob()->lines().first().endsWith(QStringLiteral(" --uninstall ") + unused));
    }

    void startOnlyWhenStopped()
    {
        m_sim->setBehaviour(QStringLiteral("emulator.never-boot"));
        m_sim->createPhone(pixel7);
        PhoneStore store;
        store.start(pixel7, StartOptions {});
        EmulatorProcess *phone = store.runner(pixel7);
        QTRY_COMPARE(phone->state(), State::Booting);

        // Neither a second emulator nor the emulator check: not even a missing emulator is reported.
        QFile::remove(*AndroidTools::emulatorPath());
        QSignalSpy changes(&store, &PhoneStore::changed);
        store.start(pixel7, StartOptions {});
        QCOMPARE(changes.count(), 0);
        QCOMPARE(store.errorSummary(), std::nullopt);

        QCoro::waitFor(phone->stopTask());
        QTRY_COMPARE(phone->state(), State::Stopped);
        store.start(pixel7, StartOptions {});
        QCOMPARE(store.errorSummary(), QStringLiteral("The emulator is not installed."));
        QCOMPARE(store.errorDetails(), QStringLiteral("Install the emulator on the Setup tab first."));
        QCOMPARE(phone->state(), State::Stopped);

        store.dismissError();
        QCOMPARE(store.errorSummary(), std::nullopt);
        QCOMPARE(store.property("errorSummary"), QVariant());
        QCOMPARE(store.errorDetails(), QString());
    }

    void startOptionsReachTheEmulator()
    {
        m_sim->createPhone(pixel7);
        PhoneStore store;
        StartOptions options;
        options.coldBoot = true;
        options.scale = QStringLiteral("0.75");
        options.gpu = QStringLiteral("swiftshader_indirect");
        store.start(pixel7, options);
        EmulatorProcess *phone = store.runner(pixel7);
        QCOMPARE(phone->lines().first(),
            QStringLiteral("$ emulator -avd Pixel_7_API_34 -port 5554 -no-snapshot-load -scale 0.75 -gpu "
                           "swiftshader_indirect"));
        QTRY_COMPARE(phone->state(), State::Running);
        stopAll(store);
    }

    // An emulator that crashed leaves its locks: the phone is offered "Remove lock and start", which removes
    // exactly the locks and starts it. A running phone, ours or one started elsewhere, never is.
    void staleLocks()
    {
        const QString other = QStringLiteral("Other");
        m_sim->createPhone(pixel7);
        m_sim->createPhone(other);
        const QString folder
            = m_root->filePath(QStringLiteral(".android/avd/") + pixel7 + QStringLiteral(".avd"));
        PhoneStore store;
        QCoro::waitFor(store.refreshTask());
        EmulatorProcess *phone = store.runner(pixel7);

        store.start(pixel7, StartOptions {});
        QTRY_COMPARE(phone->state(), State::Running);
        m_sim->startPhone(other, 5556);
        QVERIFY(!PhoneStore::lockFiles(folder).isEmpty());
        QCoro::waitFor(store.refreshTask());
        QCOMPARE(store.lockedPhones(), QStringList());
        QCoro::waitFor(store.removeLockAndStartTask(other, StartOptions {}));
        QCOMPARE(
            store.errorSummary(), QStringLiteral("Other is running outside Tolvane, so its lock stays."));
        QVERIFY(!PhoneStore::lockFiles(m_root->filePath(QStringLiteral(".android/avd/Other.avd"))).isEmpty());
        QCoro::waitFor(phone->stopTask());
        QTRY_COMPARE(phone->state(), State::Stopped);
        QVERIFY(PhoneStore::lockFiles(folder).isEmpty());

        m_sim->setBehaviour(QStringLiteral("emulator.die"));
        store.start(pixel7, StartOptions {});
        QTRY_COMPARE(phone->state(), State::Stopped);
        QTRY_COMPARE(store.lockedPhones(), QStringList {pixel7});
        m_sim->clearBehaviour(QStringLiteral("emulator.die"));
        QStringList rest = QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
        for (const QString &lock : PhoneStore::lockFiles(folder))
            rest.removeAll(QFileInfo(lock).fileName());
        QCOMPARE(rest.size() + 3, QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size());

        store.removeLockAndStart(pixel7, StartOptions {});
        QTRY_COMPARE(phone->state(), State::Starting);
        QCOMPARE(store.lockedPhones(), QStringList());
        QTRY_COMPARE(phone->state(), State::Running);
        QStringList now = QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
        for (const QString &lock : PhoneStore::lockFiles(folder))
            now.removeAll(QFileInfo(lock).fileName());
        QCOMPARE(now, rest);
        stopAll(store);
    }

    void phoneListing_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QStringList>("phones");
        QTest::addColumn<QVariant>("raw");
        QTest::addColumn<QVariant>("summary");
        QTest::addColumn<QString>("details");

        // Each listing follows one that found phone A, so a failure can be seen keeping it.
        QTest::newRow("heading only") << QByteArray("echo 'Available Android Virtual Devices:'; exit 0")
                                      << QStringList {} << QVariant() << QVariant() << "";
        QTest::newRow("heading and separator")
            << QByteArray("printf 'Available Android Virtual Devices:\\n---------\\n'; exit 0")
            << QStringList {} << QVariant() << QVariant() << "";
        QTest::newRow("text the parser cannot read")
            << QByteArray("printf '\\n  Something else entirely\\n\\n'; exit 0") << QStringList {}
            << QVariant("Something else entirely") << QVariant() << "";
        QTest::newRow("carriage returns break lines too")
            << QByteArray("printf 'Available Android Virtual Devices:\\rNot a phone\\r'; exit 0")
            << QStringList {} << QVariant("Available Android Virtual Devices:\rNot a phone") << QVariant()
            << "";
        QTest::newRow("failed run") << QByteArray("echo 'Error: JAVA_HOME is not set.' >&2; exit 1")
                                    << QStringList {"A"} << QVariant()
                                    << QVariant("Could not list phones. The command exited with status 1.")
                                    << "Error: JAVA_HOME is not set.\n";
        QTest::newRow("unloadable phone") << QByteArray(
            "printf 'Available Android Virtual Devices:\\n    Name: Broken\\n   Error: Missing system "
            "image.\\n'; exit 0") << QStringList {"Broken"}
                                          << QVariant() << QVariant() << "";
    }

    void phoneListing()
    {
        QFETCH(QByteArray, script);
        QFETCH(QStringList, phones);
        QFETCH(QVariant, raw);
        QFETCH(QVariant, summary);
        QFETCH(QString, details);

        m_sim->createPhone(QStringLiteral("A"));
        PhoneStore store;
        QCoro::waitFor(store.refreshTask());
        QCOMPARE(names(store.phones()), QStringList {"A"});

        answer(QStringLiteral("avdmanager"), QStringLiteral("list avd"), script);
        QSignalSpy loading(&store, &PhoneStore::isLoadingChanged);
        QCoro::waitFor(store.refreshTask());
        QCOMPARE(loading.count(), 2);
        QVERIFY(!store.isLoading());
        QCOMPARE(names(store.phones()), phones);
        QCOMPARE(store.property("rawPhoneListing"), raw);
        QCOMPARE(store.property("errorSummary"), summary);
        QCOMPARE(store.errorDetails(), details);
        if (phones == QStringList {"Broken"})
            QCOMPARE(store.phones().first().error, QStringLiteral("Missing system image."));
    }

    void refreshKeepsRunnersOfPhonesNoLongerListed()
    {
        m_sim->createPhone(QStringLiteral("A"));
        m_sim->createPhone(QStringLiteral("B"));
        PhoneStore store;
        QCoro::waitFor(store.refreshTask());
        QCOMPARE(store.allRunners().size(), 2);
        QFile::remove(m_root->filePath(QStringLiteral(".android/avd/B.ini")));
        QCoro::waitFor(store.refreshTask());
        QCOMPARE(names(store.phones()), QStringList {"A"});
        QCOMPARE(store.allRunners().size(), 2);
    }

    void modelListing_data()
    {
        QTest::addColumn<QByteArray>("script"); // empty for the simulator's own listing
        QTest::addColumn<QStringList>("ids");
        QTest::addColumn<QVariant>("raw");
        QTest::addColumn<QVariant>("summary");

        const QStringList pixels {"pixel_6", "pixel_6_pro", "pixel_6a", "pixel_7", "pixel_7_pro", "pixel_8",
            "pixel_8_pro", "pixel_fold"};
        QTest::newRow("pixel models only") << QByteArray() << pixels << QVariant() << QVariant();
        QTest::newRow("no pixel model keeps all") << QByteArray(
            "printf 'id: 0 or \"tv_1080p\"\\n    Name: TV\\n---------\\nid: 1 or \"Nexus 5\"\\n'; exit 0")
                                                  << QStringList {"tv_1080p", "Nexus 5"} << QVariant()
                                                  << QVariant();
        QTest::newRow("upper-case Pixel is not a pixel")
            << QByteArray("printf 'id: 0 or \"Pixel_X\"\\n---------\\nid: 1 or \"wear\"\\n'; exit 0")
            << QStringList {"Pixel_X", "wear"} << QVariant() << QVariant();
        QTest::newRow("nothing readable")
            << QByteArray("printf 'Available devices definitions:\\n\\n'; exit 0") << QStringList {}
            << QVariant("Available devices definitions:") << QVariant();
        QTest::newRow("failed run") << QByteArray("exit 2") << pixels << QVariant()
                                    << QVariant(
                                           "Could not list phone models. The command exited with status 2.");
    }

    void modelListing()
    {
        QFETCH(QByteArray, script);
        QFETCH(QStringList, ids);
        QFETCH(QVariant, raw);
        QFETCH(QVariant, summary);

        PhoneStore store;
        QCoro::waitFor(store.loadDevicesTask());
        if (!script.isEmpty()) {
            answer(QStringLiteral("avdmanager"), QStringLiteral("list device"), script);
            QCoro::waitFor(store.loadDevicesTask());
        }
        QStringList listed;
        for (const DeviceDef &device : store.devices())
            listed.append(device.id);
        QCOMPARE(listed, ids);
        QCOMPARE(store.property("rawDeviceListing"), raw);
        QCOMPARE(store.property("errorSummary"), summary);
        QVERIFY(!store.devicesLoading());
    }

    void imageListing()
    {
        PhoneStore store;
        QSignalSpy loading(&store, &PhoneStore::imagesLoadingChanged);
        QCoro::waitFor(store.loadImagesTask());
        QCOMPARE(loading.count(), 2);
        QCOMPARE(store.images().size(), 3);
        QCOMPARE(store.rawImageListing(), std::nullopt);
        QVERIFY(QFile::exists(AndroidTools::sdkRoot()));

        answer(QStringLiteral("sdkmanager"), QStringLiteral("--list"),
            "echo 'Warning: Failed to download'; exit 0");
        QCoro::waitFor(store.loadImagesTask());
        QVERIFY(store.images().isEmpty());
        QCOMPARE(store.rawImageListing(), QStringLiteral("Warning: Failed to download"));

        // A time-out keeps what was printed so far as the details.
        PhoneStore::Timeouts timeouts;
        timeouts.imageList = 0.5;
        PhoneStore::setTimeouts(timeouts);
        answer(QStringLiteral("sdkmanager"), QStringLiteral("--list"),
            "echo 'Loading package information...'; exec sleep 10");
        QCoro::waitFor(store.loadImagesTask());
        QCOMPARE(store.errorSummary(),
            QStringLiteral("Could not list Android versions. The command did not finish in time."));
        QCOMPARE(store.errorDetails(), QStringLiteral("Loading package information...\n"));
        QVERIFY(store.images().isEmpty());
        QCOMPARE(store.rawImageListing(), QStringLiteral("Warning: Failed to download"));
    }

    void createFailures_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("message");

        QTest::newRow("status 1 with text")
            << QByteArray(
                   "echo '  Error: Package path is not valid. Valid system image paths are: null  '; exit 1")
            << "Error: Package path is not valid. Valid system image paths are: null";
        QTest::newRow("status 1 without output")
            << QByteArray("exit 1") << "The command exited with status 1.";
        QTest::newRow("time-out") << QByteArray("exec sleep 10") << "The command did not finish in time.";
    }

    void createFailures()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, message);

        PhoneStore::Timeouts timeouts;
        timeouts.create = 0.5;
        PhoneStore::setTimeouts(timeouts);
        answer(QStringLiteral("avdmanager"), QStringLiteral("create avd"), script);
        PhoneStore store;
        QSignalSpy phones(&store, &PhoneStore::phonesChanged);
        const std::optional<QString> failure
            = QCoro::waitFor(store.createPhoneTask(pixel7, pixel7Device(), image34()));
        QCOMPARE(failure, message);
        QCOMPARE(store.errorSummary(), QStringLiteral("Creating Pixel_7_API_34 failed."));
        QCOMPARE(store.errorDetails(), message);
        QCOMPARE(phones.count(), 0);
    }

    void createTwiceFails()
    {
        m_sim->installSystemImage(playImage);
        PhoneStore store;
        QCOMPARE(QCoro::waitFor(store.createPhoneTask(pixel7, pixel7Device(), image34())), std::nullopt);
        QCOMPARE(QCoro::waitFor(store.createPhoneTask(pixel7, pixel7Device(), image34())),
            QStringLiteral("Error: Android Virtual Device 'Pixel_7_API_34' already exists.\n"
                           "Use --force if you want to replace it."));
    }

    void deleteUnknownPhone()
    {
        m_sim->createPhone(QStringLiteral("A"));
        PhoneStore store;
        const QPointer<EmulatorProcess> ghost = store.runner(QStringLiteral("Ghost"));
        QSignalSpy phones(&store, &PhoneStore::phonesChanged);
        QCoro::waitFor(store.deletePhoneTask(QStringLiteral("Ghost")));
        QCOMPARE(store.errorSummary(), QStringLiteral("Deleting Ghost failed."));
        QCOMPARE(store.errorDetails(),
            QStringLiteral("Error: There is no Android Virtual Device named 'Ghost'.\n"));
        QCOMPARE(phones.count(), 1);
        QCOMPARE(names(store.phones()), QStringList {"A"});
        QCOMPARE(store.allRunners(), QList<EmulatorProcess *> {store.runner(QStringLiteral("A"))});
        QTRY_VERIFY(!ghost);
    }

    void deletingWhileAwaitsAreInFlight()
    {
        // A's stop waits on a slow "adb emu kill"; B's boot poll waits on a slow "get-state".
        m_sim->createPhone(QStringLiteral("A"));
        m_sim->createPhone(QStringLiteral("B"));
        PhoneStore store;
        QCoro::waitFor(store.refreshTask());
        store.start(QStringLiteral("A"), StartOptions {});
        QTRY_COMPARE(store.runner(QStringLiteral("A"))->state(), State::Running);
        m_sim->setBehaviour(
            QStringLiteral("adb.script"), "case \"$*\" in *'emu kill'|*5556\\ get-state) sleep 0.6 ;; esac");
        store.start(QStringLiteral("B"), StartOptions {});
        const QPointer<EmulatorProcess> a = store.runner(QStringLiteral("A"));
        const QPointer<EmulatorProcess> b = store.runner(QStringLiteral("B"));
        a->stop();
        QCOMPARE(a->state(), State::Stopping);
        QTest::qWait(100);

        auto deletingA = store.deletePhoneTask(QStringLiteral("A"));
        auto deletingB = store.deletePhoneTask(QStringLiteral("B"));
        QCoro::waitFor(std::move(deletingA));
        QCoro::waitFor(std::move(deletingB));
        QTRY_VERIFY(!a && !b);
        QVERIFY(store.allRunners().isEmpty());
        QVERIFY(store.phones().isEmpty());

        // Both emulators outlive their objects: A ends through the kill its stop asked for, B is asked now.
        QTRY_COMPARE(m_sim->runningEmulators(), QStringList {"emulator-5556"});
        m_sim->clearBehaviour(QStringLiteral("adb.script"));
        const ProcessResult killed = QCoro::waitFor(AndroidTools::runADB(
            {QStringLiteral("emu"), QStringLiteral("kill")}, QStringLiteral("emulator-5556"), 10.0));
        QVERIFY(killed.isClean());
        QTRY_VERIFY(m_sim->runningEmulators().isEmpty());
    }

    void installImage()
    {
        PhoneStore store;
        QCoro::waitFor(store.loadImagesTask());
        QVERIFY(!store.images().last().installed);
        QSignalSpy changes(&store, &PhoneStore::changed);
        QVERIFY(QCoro::waitFor(store.installImageTask(store.images().last())));
        QCOMPARE(store.imageJob()->title(), QStringLiteral("Installing Android 14 (API 34), Google Play"));
        QCOMPARE(store.imageJob()->lines().first(),
            QStringLiteral("$ %1 --sdk_root=%2 %3")
                .arg(*AndroidTools::sdkManager(), AndroidTools::sdkRoot(), playImage));
        QCOMPARE(store.imageJob()->progress(), 1.0);
        // The job's own announcements reach the store's observers.
        QVERIFY(changes.count() > 10);
        QCOMPARE(store.images().last().id, playImage);
        QVERIFY(store.images().last().installed);
        QVERIFY(!store.images().first().installed);
        QCOMPARE(store.errorSummary(), std::nullopt);
    }

    void installImageFailsOrIsCancelled_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<bool>("cancel");
        QTest::addColumn<QString>("summary");
        QTest::addColumn<QString>("details");

        // The summary before the install is the failed model listing's.
        const QString before
            = QStringLiteral("Could not list phone models. The command exited with status 1.");
        QTest::newRow("failed") << QByteArray("echo 'Warning: Failed to find package'; exit 1") << false
                                << "Installing the system image failed."
                                << "Warning: Failed to find package\n";
        QTest::newRow("cancelled") << QByteArray("echo 'Downloading'; exec sleep 10") << true << before << "";
    }

    void installImageFailsOrIsCancelled()
    {
        QFETCH(QByteArray, script);
        QFETCH(bool, cancel);
        QFETCH(QString, summary);
        QFETCH(QString, details);

        PhoneStore store;
        answer(QStringLiteral("avdmanager"), QStringLiteral("list device"), "exit 1");
        QCoro::waitFor(store.loadDevicesTask());
        answer(QStringLiteral("sdkmanager"), playImage, script);
        if (cancel) {
            connect(store.imageJob(), &JobRunner::linesChanged, this, [&store] {
                if (store.imageJob()->lines().size() == 2)
                    store.imageJob()->job()->cancel();
            });
        }
        QSignalSpy images(&store, &PhoneStore::imagesChanged);
        QVERIFY(!QCoro::waitFor(store.installImageTask(image34())));
        QCOMPARE(store.errorSummary(), summary);
        QCOMPARE(store.errorDetails(), details);
        QCOMPARE(images.count(), 1);
        QCOMPARE(store.images().size(), 3);
    }

    void realTimeouts()
    {
        const PhoneStore::Timeouts timeouts;
        QCOMPARE((QList<double> {timeouts.list, timeouts.imageList, timeouts.create, timeouts.remove}),
            (QList<double> {20.0, 180.0, 60.0, 20.0}));
    }

    void toolsMissing()
    {
        QFile::remove(*AndroidTools::avdManager());
        QFile::remove(*AndroidTools::sdkManager());
        PhoneStore store;
        QSignalSpy changes(&store, &PhoneStore::changed);
        QCoro::waitFor(store.refreshTask());
        QCoro::waitFor(store.loadDevicesTask());
        QCoro::waitFor(store.loadImagesTask());
        QVERIFY(store.phones().isEmpty());
        QCOMPARE(store.rawPhoneListing(), std::nullopt);
        QCOMPARE(changes.count(), 2); // the phone list and its raw text, nothing else
        QCOMPARE(QCoro::waitFor(store.createPhoneTask(pixel7, pixel7Device(), image34())),
            QStringLiteral("avdmanager was not found."));
        QVERIFY(!QCoro::waitFor(store.installImageTask(image34())));
        QCoro::waitFor(store.deletePhoneTask(pixel7));
        QCOMPARE(changes.count(), 2);
        QCOMPARE(store.errorSummary(), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TestPhoneStore)
#include "tst_phonestore.moc"
