#include "AndroidTools.h"
#include "DataTable.h"
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
using QCoro::waitFor;

Q_IMPORT_QML_PLUGIN(TolvanePlugin)

namespace {

const QString pixel7 = QStringLiteral("Pixel_7_API_34");
const QString playImage = QStringLiteral("system-images;android-34;google_apis_playstore;arm64-v8a");
const DeviceDef pixel7Device {QStringLiteral("pixel_7"), QStringLiteral("Pixel 7"), QStringLiteral("Google")};
const SystemImage image34 {playImage, 34, QStringLiteral("google_apis_playstore"), false};

QStringList names(const QList<AVDInfo> &phones)
{
    QStringList names;
    for (const AVDInfo &phone : phones)
        names.append(phone.name);
    return names;
}

void stopAll(PhoneStore &store)
{
    for (EmulatorProcess *runner : store.allRunners())
        waitFor(runner->stopTask());
    for (EmulatorProcess *runner : store.allRunners())
        QTRY_COMPARE(runner->state(), State::Stopped);
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

private Q_SLOTS:
    // As the app does at start: a tool that exits before reading its input must not end the process.
    void initTestCase() { std::signal(SIGPIPE, SIG_IGN); }

    void init()
    {
        m_sim.reset();
        m_root = std::make_unique<QTemporaryDir>();
        m_sim = std::make_unique<SimHost>(m_root->path());
        m_sim->activate();
        // The rules that need no tools skip the half second a ready machine takes to lay out.
        if (!QByteArrayList {"isValidName", "consolePort", "withoutTools"}.contains(
                QTest::currentTestFunction()))
            m_sim->makeReady();
        EmulatorProcess::Timing timing;
        timing.bootPollInterval = 100ms;
        timing.stopWaitStep = 50ms;
        timing.endDelay = 50ms;
        EmulatorProcess::setTiming(timing);
        PhoneStore::setTimeouts({});
    }

    void cleanupTestCase()
    {
        // Polls asleep when their phone went run out before the end.
        QTest::qWait(300);
        m_sim.reset();
    }

    void isValidName_data()
    {
        columns<QString, bool>("name", "valid");

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
        auto [name, valid] = row<QString, bool>("name", "valid");
        QCOMPARE(PhoneStore::isValidName(name), valid);
    }

    void consolePort_data()
    {
        columns<QList<int>, int>("busy", "port");

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
        auto [busy, port] = row<QList<int>, int>("busy", "port");
        QCOMPARE(PhoneStore::consolePort(QSet<int>(busy.begin(), busy.end())), port);
    }

    void createListStartStopDelete()
    {
        m_sim->installSystemImage(playImage);
        PhoneStore store;
        QSignalSpy changes(&store, &PhoneStore::changed);
        waitFor(store.loadDevicesTask());
        waitFor(store.loadImagesTask());
        QCOMPARE(store.devices().at(3), pixel7Device);
        // Newest first, and within a level by variant, Google APIs before Google Play.
        QCOMPARE(store.images().last().id, playImage);
        QVERIFY(store.images().last().installed);

        QCOMPARE(waitFor(store.createPhoneTask(pixel7, store.devices().at(3), store.images().last())),
            std::nullopt);
        // The list was refreshed before the creation reported back.
        QCOMPARE(names(store.phones()), QStringList {pixel7});
        QCOMPARE(store.property("phones").toList().first().value<AVDInfo>().basedOn,
            QStringLiteral("Android 14.0 (\"UpsideDownCake\") Tag/ABI: google_apis_playstore/arm64-v8a"));
        QCOMPARE(store.allRunners().size(), 1);

        EmulatorProcess *phone = store.runner(pixel7);
        QStringList states;
        connect(phone, &EmulatorProcess::stateChanged, this, [&] { states.append(phone->stateName()); });
        const int before = changes.count();
        store.start(
            pixel7, StartOptions {true, false, false, QStringLiteral("0.75"), QStringLiteral("host"), {}});
        QCOMPARE(phone->lines().first(),
            QStringLiteral(
                "$ emulator -avd Pixel_7_API_34 -port 5554 -no-snapshot-load -scale 0.75 -gpu host"));
        QTRY_COMPARE(phone->state(), State::Running);
        QCOMPARE(states, (QStringList {"Starting", "Booting", "Running"}));
        // Every change of the runner was the store's too.
        QVERIFY(changes.count() >= before + 3);
        QCOMPARE(store.runningRunners(), QList<EmulatorProcess *> {phone});

        waitFor(phone->stopTask());
        QVERIFY(store.runningRunners().isEmpty());
        const QPointer<EmulatorProcess> gone(phone);
        waitFor(store.deletePhoneTask(pixel7));
        QVERIFY(store.phones().isEmpty());
        QVERIFY(store.allRunners().isEmpty());
        QCOMPARE(store.errorSummary(), std::nullopt);
        QTRY_VERIFY(!gone);
    }

    // A phone started elsewhere is left alone and holds its port, as do ours from launch to end, also
    // while they boot; a stopped one holds none, even the port it had. Every emulator is shown, two of
    // one phone included.
    void phoneStartedElsewhere()
    {
        for (const char *name : {"A", "B", "C", "D"})
            m_sim->createPhone(QLatin1String(name));
        const QString serial = m_sim->startPhone(QStringLiteral("A"));
        PhoneStore store;
        waitFor(store.refreshTask());
        QCOMPARE(store.elsewhere()->phones(), (QMap<QString, QStringList> {{"A", {serial}}}));
        const QVariantMap a {{"name", "A"}, {"serial", serial}};
        QCOMPARE(store.runningTargets(), QVariantList {a});

        // A cannot start a second time, and says so; B and C skip the port A holds.
        for (const char *name : {"A", "B", "C"})
            store.start(QLatin1String(name), StartOptions {});
        QCOMPARE(store.runner(QStringLiteral("A"))->state(), State::Stopped);
        QCOMPARE(
            store.refusals(), (QVariantMap {{"A", "A is already running outside Tolvane (emulator-5554)."}}));
        EmulatorProcess *c = store.runner(QStringLiteral("C"));
        QCOMPARE(c->port(), 5558);
        QTRY_COMPARE(store.runningRunners().size(), 2);
        QVERIFY(
            m_sim->adbCalls().contains(QStringLiteral("-s emulator-5558 shell getprop sys.boot_completed")));
        waitFor(c->stopTask());
        m_sim->startPhone(QStringLiteral("A"), 5560, {QStringLiteral("-read-only")});
        m_sim->setBehaviour(QStringLiteral("emulator.never-boot"));
        store.start(QStringLiteral("D"), StartOptions {});
        EmulatorProcess *d = store.runner(QStringLiteral("D"));
        QCOMPARE(d->port(), 5558);
        QTRY_COMPARE(d->state(), State::Booting);
        waitFor(store.refreshTask());
        for (const char *port : {"5556", "5558"})
            QVERIFY(!m_sim->adbCalls().contains(QStringLiteral("-s emulator-%1 emu avd name").arg(port)));
        QCOMPARE(
            store.elsewhere()->phones(), (QMap<QString, QStringList> {{"A", {serial, "emulator-5560"}}}));
        const QVariantMap a2 {{"name", "A"}, {"serial", "emulator-5560"}};
        const QVariantMap b {{"name", "B"}, {"serial", "emulator-5556"}};
        QCOMPARE(store.runningTargets(), (QVariantList {a, a2, b}));

        // Rounds long enough for the emulators to go even on a busy machine; the wait ends once they have.
        EmulatorProcess::Timing patient = EmulatorProcess::timing();
        patient.stopWaitStep = 500ms;
        EmulatorProcess::setTiming(patient);
        waitFor(store.elsewhere()->stopTask(QStringLiteral("A")));
        QVERIFY(store.elsewhere()->phones().isEmpty());
        QVERIFY(store.elsewhere()->stopping().isEmpty());
        QCOMPARE(m_sim->runningEmulators(), (QStringList {"emulator-5556", "emulator-5558"}));
        QCOMPARE(store.errorSummary(), std::nullopt);

        // A running phone refuses to start before the emulator is looked for; a stopped one without it is
        // told why, in a message that can be dismissed.
        QFile::remove(*AndroidTools::emulatorPath());
        QSignalSpy changes(&store, &PhoneStore::changed);
        store.start(QStringLiteral("B"), StartOptions {});
        QCOMPARE(changes.count(), 0);
        store.start(QStringLiteral("C"), StartOptions {});
        QCOMPARE(store.errorSummary(), QStringLiteral("The emulator is not installed."));
        QCOMPARE(store.errorDetails(), QStringLiteral("Install the emulator on the Setup tab first."));
        QCOMPARE(c->state(), State::Stopped);
        store.dismissError();
        QCOMPARE(store.property("errorSummary"), QVariant());
        QCOMPARE(store.errorDetails(), QString());
        stopAll(store);
    }

    // A system image a phone uses stays; an unused one goes, and the disk is read again.
    void removingImages()
    {
        const QString used = QStringLiteral("system-images;android-34;google_apis;arm64-v8a");
        const QString unused = QStringLiteral("system-images;android-35;google_apis;arm64-v8a");
        m_sim->createPhone(pixel7, QStringLiteral("pixel_7"), used);
        m_sim->installSystemImage(unused);
        PhoneStore store;
        waitFor(store.refreshTask());
        QCOMPARE(store.diskUse()->installedImages().size(), 2);

        const QString sdk = AndroidTools::sdkRoot() + QStringLiteral("/system-images/");
        QVERIFY(!waitFor(store.removeImageTask(used)));
        QCOMPARE(store.errorSummary(),
            QStringLiteral("Android 14 (API 34), Google APIs is used by Pixel_7_API_34."));
        QVERIFY(QFile::exists(sdk + QStringLiteral("android-34/google_apis/arm64-v8a/package.xml")));

        QVERIFY(waitFor(store.removeImageTask(unused)));
        QVERIFY(!QFile::exists(sdk + QStringLiteral("android-35/google_apis/arm64-v8a")));
        QCOMPARE(store.diskUse()->installedImages().size(), 1);
        QVERIFY(store.imageJob()->lines().first().endsWith(QStringLiteral(" --uninstall ") + unused));
    }

    // An emulator that crashed leaves its locks: the phone is offered "Remove lock and start", which asks adb
    // again and removes exactly the locks and starts it only when adb named every emulator, none of them
    // this phone's. A running phone of ours holds its locks rightly.
    void lockGuard_data()
    {
        // since: what happened after the refresh that found the stale lock
        columns<QString, QString>("since", "refusal");

        const QString stays = pixel7 + QStringLiteral("'s lock stays: ");
        QTest::newRow("nothing runs it") << ""
                                         << "";
        QTest::newRow("started elsewhere since")
            << "started" << pixel7 + " is running outside Tolvane (emulator-5556), so its lock stays.";
        QTest::newRow("adb cannot list") << "adb-version"
                                         << stays
                + "adb could not list the running emulators (adb server version (41) doesn't match this "
                  "client (39); killing...).";
        QTest::newRow("an emulator does not say its phone")
            << "unnamed" << stays + "emulator-5556 did not say which phone it runs.";
    }

    void lockGuard()
    {
        auto [since, refusal] = row<QString, QString>("since", "refusal");

        const QString other = QStringLiteral("Other");
        m_sim->createPhone(pixel7);
        m_sim->createPhone(other);
        const QString folder
            = m_root->filePath(QStringLiteral(".android/avd/") + pixel7 + QStringLiteral(".avd"));
        PhoneStore store;
        waitFor(store.refreshTask());
        EmulatorProcess *phone = store.runner(pixel7);
        store.start(pixel7, StartOptions {});
        QTRY_COMPARE(phone->state(), State::Running);
        waitFor(store.refreshTask());
        QCOMPARE(store.lockedPhones(), QStringList());
        waitFor(phone->stopTask());
        QTRY_COMPARE(phone->state(), State::Stopped);

        m_sim->setBehaviour(QStringLiteral("emulator.die"));
        store.start(pixel7, StartOptions {});
        QTRY_COMPARE(phone->state(), State::Stopped);
        QTRY_COMPARE(store.lockedPhones(), QStringList {pixel7});
        m_sim->clearBehaviour(QStringLiteral("emulator.die"));
        const QStringList locks = PhoneStore::lockFiles(folder);
        QCOMPARE(locks.size(), 3);
        const QStringList before = QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);

        if (since == QLatin1String("started")) {
            m_sim->startPhone(pixel7, 5556, {QStringLiteral("-read-only")});
        } else if (since == QLatin1String("unnamed")) {
            m_sim->startPhone(other, 5556);
            m_sim->setBehaviour(QStringLiteral("adb.avd-name.fail"));
        } else if (since == QLatin1String("adb-version")) {
            m_sim->setBehaviour(QStringLiteral("known-failure"), "adb-version");
        }
        waitFor(store.removeLockAndStartTask(pixel7, StartOptions {}));
        if (!refusal.isEmpty()) {
            QCOMPARE(store.refusals(), (QVariantMap {{pixel7, refusal}}));
            // Nothing says now that the lock is stale.
            QCOMPARE(store.lockedPhones(), QStringList());
            QCOMPARE(PhoneStore::lockFiles(folder), locks);
            QCOMPARE(phone->state(), State::Stopped);
            m_sim->killEmulators();
            return;
        }
        QCOMPARE(phone->state(), State::Starting);
        QCOMPARE(store.lockedPhones(), QStringList());
        QTRY_COMPARE(phone->state(), State::Running);
        // Only the locks went, and the running emulator holds them again.
        QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), before);
        QCOMPARE(store.refusals(), QVariantMap());
        stopAll(store);
    }

    // Each listing follows a first one of the same kind, so a failure can be seen keeping its list.
    void listings_data()
    {
        // kind: phones, devices or images; script: answers the second listing; empty for the tool's own;
        // listed: names, model ids, or image ids
        columns<QString, QByteArray, QStringList, QVariant, QVariant, QString>(
            "kind", "script", "listed", "raw", "summary", "details");

        const QVariant none;
        const QString phones = QStringLiteral("phones");
        QTest::newRow("heading only")
            << phones << QByteArray("echo 'Available Android Virtual Devices:'; exit 0") << QStringList {}
            << none << none << "";
        QTest::newRow("heading and separator")
            << phones << QByteArray("printf 'Available Android Virtual Devices:\\n---------\\n'; exit 0")
            << QStringList {} << none << none << "";
        QTest::newRow("text the parser cannot read")
            << phones << QByteArray("printf '\\n  Something else entirely\\n\\n'; exit 0") << QStringList {}
            << QVariant("Something else entirely") << none << "";
        QTest::newRow("carriage returns break lines too")
            << phones << QByteArray("printf 'Available Android Virtual Devices:\\rNot a phone\\r'; exit 0")
            << QStringList {} << QVariant("Available Android Virtual Devices:\rNot a phone") << none << "";
        QTest::newRow("a good listing after one it could not read")
            << phones << QByteArray("good") << QStringList {"A"} << none << none << "";
        QTest::newRow("failed phone listing")
            << phones << QByteArray("echo 'Error: JAVA_HOME is not set.' >&2; exit 1") << QStringList {"A"}
            << none << QVariant("Could not list phones. The command exited with status 1.")
            << "Error: JAVA_HOME is not set.\n";
        QTest::newRow("unloadable phone")
            << phones
            << QByteArray("printf 'Available Android Virtual Devices:\\n    Name: "
                          "Broken\\n   Error: Missing system image.\\n'; exit 0")
            << QStringList {"Broken"} << none << none << "";

        const QString devices = QStringLiteral("devices");
        const QStringList pixels {"pixel_6", "pixel_6_pro", "pixel_6a", "pixel_7", "pixel_7_pro", "pixel_8",
            "pixel_8_pro", "pixel_fold"};
        QTest::newRow("pixel models only") << devices << QByteArray() << pixels << none << none << "";
        QTest::newRow("no pixel model keeps all")
            << devices
            << QByteArray("printf 'id: 0 or \"tv_1080p\"\\n    Name: TV\\n---------\\nid: 1 or \"Nexus "
                          "5\"\\n'; exit 0")
            << QStringList {"tv_1080p", "Nexus 5"} << none << none << "";
        QTest::newRow("upper-case Pixel is not a pixel")
            << devices
            << QByteArray("printf 'id: 0 or \"Pixel_X\"\\n---------\\nid: 1 or \"wear\"\\n'; exit 0")
            << QStringList {"Pixel_X", "wear"} << none << none << "";
        QTest::newRow("no model readable")
            << devices << QByteArray("printf 'Available devices definitions:\\n\\n'; exit 0")
            << QStringList {} << QVariant("Available devices definitions:") << none << "";
        QTest::newRow("failed model listing")
            << devices << QByteArray("echo 'Error: offline'; exit 2") << pixels << none
            << QVariant("Could not list phone models. The command exited with status 2.")
            << "Error: offline\n";

        const QString images = QStringLiteral("images");
        const QStringList offered {"system-images;android-35;google_apis;arm64-v8a",
            "system-images;android-34;google_apis;arm64-v8a", playImage};
        QTest::newRow("images") << images << QByteArray() << offered << none << none << "";
        QTest::newRow("no image readable")
            << images << QByteArray("echo 'Warning: Failed to download'; exit 0") << QStringList {}
            << QVariant("Warning: Failed to download") << none << "";
        // A time-out keeps what was printed so far as the details.
        QTest::newRow("image listing times out")
            << images << QByteArray("echo 'Loading package information...'; exec sleep 10") << offered << none
            << QVariant("Could not list Android versions. The command did not finish in time.")
            << "Loading package information...\n";
    }

    void listings()
    {
        auto [kind, script, listed, raw, summary, details]
            = row<QString, QByteArray, QStringList, QVariant, QVariant, QString>(
                "kind", "script", "listed", "raw", "summary", "details");

        m_sim->createPhone(QStringLiteral("A"));
        PhoneStore::setTimeouts({.imageList = 3});
        PhoneStore store;
        const bool phones = kind == QLatin1String("phones");
        const bool images = kind == QLatin1String("images");
        const auto listing = [&] {
            return phones ? store.refreshTask() : images ? store.loadImagesTask() : store.loadDevicesTask();
        };
        // "good" follows a first listing the parser cannot read with the tool's own.
        if (script == "good")
            answer(QStringLiteral("avdmanager"), QStringLiteral("list avd"), "echo 'Something else'; exit 0");
        waitFor(listing());
        if (script == "good") {
            QCOMPARE(store.rawPhoneListing(), QStringLiteral("Something else"));
            m_sim->clearBehaviour(QStringLiteral("avdmanager.script"));
        } else if (!script.isEmpty()) {
            answer(images ? QStringLiteral("sdkmanager") : QStringLiteral("avdmanager"),
                phones       ? QStringLiteral("list avd")
                    : images ? QStringLiteral("--list")
                             : QStringLiteral("list device"),
                script);
        }
        const QByteArray flag = phones ? "isLoading" : kind.toLatin1() + "Loading";
        const QMetaObject *meta = store.metaObject();
        QSignalSpy loading(&store, meta->property(meta->indexOfProperty(flag)).notifySignal());
        waitFor(listing());
        QCOMPARE(loading.count(), 2);
        QCOMPARE(store.property(flag), false);
        QStringList ids;
        for (const QVariant &item : store.property(kind.toLatin1()).toList()) {
            ids.append(phones ? item.value<AVDInfo>().name
                    : images  ? item.value<SystemImage>().id
                              : item.value<DeviceDef>().id);
        }
        QCOMPARE(ids, listed);
        const QString singular = kind.left(1).toUpper() + kind.mid(1, kind.size() - 2);
        QCOMPARE(store.property(QStringLiteral("raw%1Listing").arg(singular).toLatin1()), raw);
        QCOMPARE(store.property("errorSummary"), summary);
        QCOMPARE(store.errorDetails(), details);
        // A failed model or version listing is the catalog's failure until a listing of its kind succeeds.
        QCOMPARE(store.property("catalogFailure"), phones ? QVariant() : summary);
        QCOMPARE(store.catalogFailureDetails(), phones ? QString() : details);
        if (!phones) {
            m_sim->clearBehaviour((images ? QStringLiteral("sdkmanager") : QStringLiteral("avdmanager"))
                + QStringLiteral(".script"));
            waitFor(listing());
            QCOMPARE(store.property("catalogFailure"), QVariant());
        }
        // A's runner stays when A is no longer listed; a newly listed phone gets one.
        QCOMPARE(store.allRunners().size(), !phones ? 0 : listed.contains(QStringLiteral("Broken")) ? 2 : 1);
    }

    void avdManagerFailures_data()
    {
        // script: answers the creation; empty for a deletion of a phone avdmanager does not know
        columns<QByteArray, QString>("script", "message");

        QTest::newRow("status 1 with text")
            << QByteArray(
                   "echo '  Error: Package path is not valid. Valid system image paths are: null  '; exit 1")
            << "Error: Package path is not valid. Valid system image paths are: null";
        QTest::newRow("status 1 without output")
            << QByteArray("exit 1") << "The command exited with status 1.";
        QTest::newRow("time-out") << QByteArray("exec sleep 10") << "The command did not finish in time.";
        QTest::newRow("unknown phone deleted")
            << QByteArray() << "Error: There is no Android Virtual Device named 'Pixel_7_API_34'.\n";
    }

    void avdManagerFailures()
    {
        auto [script, message] = row<QByteArray, QString>("script", "message");

        PhoneStore::setTimeouts({.create = 0.5});
        m_sim->createPhone(QStringLiteral("A"));
        const bool creating = !script.isEmpty();
        if (creating)
            answer(QStringLiteral("avdmanager"), QStringLiteral("create avd"), script);
        PhoneStore store;
        const QPointer<EmulatorProcess> ghost = store.runner(pixel7);
        QSignalSpy phones(&store, &PhoneStore::phonesChanged);
        if (creating)
            QCOMPARE(waitFor(store.createPhoneTask(pixel7, pixel7Device, image34)), message);
        else
            waitFor(store.deletePhoneTask(pixel7));
        QCOMPARE(store.errorSummary(),
            (creating ? QStringLiteral("Creating %1 failed.") : QStringLiteral("Deleting %1 failed."))
                .arg(pixel7));
        QCOMPARE(store.errorDetails(), message);
        // A failed deletion lists the phones again, which drops the runner of a phone no longer listed.
        QCOMPARE(names(store.phones()), creating ? QStringList {} : QStringList {"A"});
        QCOMPARE(phones.count(), creating ? 0 : 1);
        QTRY_COMPARE(bool(ghost), creating);
    }

    void deletingWhileAwaitsAreInFlight()
    {
        // A's stop waits on a slow "adb emu kill"; B's boot poll waits on a slow "get-state".
        m_sim->createPhone(QStringLiteral("A"));
        m_sim->createPhone(QStringLiteral("B"));
        PhoneStore store;
        waitFor(store.refreshTask());
        store.start(QStringLiteral("A"), StartOptions {});
        QTRY_COMPARE(store.runner(QStringLiteral("A"))->state(), State::Running);
        m_sim->setBehaviour(
            QStringLiteral("adb.script"), "case \"$*\" in *'emu kill'|*5556\\ get-state) sleep 0.6 ;; esac");
        store.start(QStringLiteral("B"), StartOptions {});
        const QPointer<EmulatorProcess> a = store.runner(QStringLiteral("A"));
        const QPointer<EmulatorProcess> b = store.runner(QStringLiteral("B"));
        a->stop();
        QTRY_VERIFY(m_sim->adbCalls().contains(QStringLiteral("-s emulator-5556 get-state")));

        auto deletingA = store.deletePhoneTask(QStringLiteral("A"));
        auto deletingB = store.deletePhoneTask(QStringLiteral("B"));
        waitFor(std::move(deletingA));
        waitFor(std::move(deletingB));
        QTRY_VERIFY(!a && !b);
        QVERIFY(store.allRunners().isEmpty());
        QVERIFY(store.phones().isEmpty());
        // Both emulators outlive their objects: A ends through the kill its stop asked for, B runs on.
        QTRY_COMPARE(m_sim->runningEmulators(), QStringList {"emulator-5556"});
    }

    void installImage_data()
    {
        // script: empty for the real install
        columns<QByteArray, bool, QString, QString>("script", "cancel", "summary", "details");

        // The summary before the install is the failed model listing's.
        const QString before
            = QStringLiteral("Could not list phone models. The command exited with status 1.");
        QTest::newRow("installed") << QByteArray() << false << before << "";
        QTest::newRow("failed") << QByteArray("echo 'Warning: Failed to find package'; exit 1") << false
                                << "Installing the system image failed."
                                << "Warning: Failed to find package\n";
        QTest::newRow("cancelled") << QByteArray("echo 'Downloading'; exec sleep 10") << true << before << "";
    }

    void installImage()
    {
        auto [script, cancel, summary, details]
            = row<QByteArray, bool, QString, QString>("script", "cancel", "summary", "details");

        PhoneStore store;
        answer(QStringLiteral("avdmanager"), QStringLiteral("list device"), "exit 1");
        waitFor(store.loadDevicesTask());
        if (!script.isEmpty())
            answer(QStringLiteral("sdkmanager"), playImage, script);
        connect(store.imageJob(), &JobRunner::linesChanged, this, [&store, cancel = cancel] {
            if (cancel && store.imageJob()->lines().size() == 2)
                store.imageJob()->job()->cancel();
        });
        QSignalSpy images(&store, &PhoneStore::imagesChanged);
        QSignalSpy changes(&store, &PhoneStore::changed);
        QSignalSpy jobChanges(store.imageJob(), &JobRunner::changed);
        QCOMPARE(waitFor(store.installImageTask(image34)), script.isEmpty());
        QCOMPARE(store.imageJob()->title(), QStringLiteral("Installing Android 14 (API 34), Google Play"));
        QCOMPARE(store.imageJob()->lines().first(),
            QStringLiteral("$ %1 --sdk_root=%2 %3")
                .arg(*AndroidTools::sdkManager(), AndroidTools::sdkRoot(), playImage));
        // The job's own announcements reach the store's observers.
        QVERIFY(changes.count() > jobChanges.count());
        QCOMPARE(store.errorSummary(), summary);
        QCOMPARE(store.errorDetails(), details);
        // The images were listed again, and show what is installed now.
        QCOMPARE(images.count(), 1);
        QCOMPARE(store.images().last().installed, script.isEmpty());
    }

    // Without the Android tools nothing is listed, created or installed, and nothing is announced; a runner
    // is made once per name, and the runners are kept in name order.
    void withoutTools()
    {
        PhoneStore store;
        QSignalSpy changes(&store, &PhoneStore::changed);
        waitFor(store.refreshTask());
        waitFor(store.loadDevicesTask());
        waitFor(store.loadImagesTask());
        QVERIFY(store.phones().isEmpty());
        QCOMPARE(store.rawPhoneListing(), std::nullopt);
        QCOMPARE(changes.count(), 2); // the phone list and its raw text, nothing else
        QCOMPARE(waitFor(store.createPhoneTask(pixel7, pixel7Device, image34)),
            QStringLiteral("avdmanager was not found."));
        QVERIFY(!waitFor(store.installImageTask(image34)));
        waitFor(store.deletePhoneTask(pixel7));
        QCOMPARE(changes.count(), 2);
        QCOMPARE(store.errorSummary(), std::nullopt);

        QSignalSpy runners(&store, &PhoneStore::runnersChanged);
        EmulatorProcess *b = store.runner(QStringLiteral("b"));
        EmulatorProcess *upper = store.runner(QStringLiteral("A"));
        EmulatorProcess *lower = store.runner(QStringLiteral("a"));
        QCOMPARE(store.runner(QStringLiteral("b")), b);
        QCOMPARE(b->name(), QStringLiteral("b"));
        QCOMPARE(runners.count(), 3);
        QCOMPARE(store.allRunners(), (QList<EmulatorProcess *> {upper, lower, b}));
    }
};

QTEST_GUILESS_MAIN(TestPhoneStore)
#include "tst_phonestore.moc"
