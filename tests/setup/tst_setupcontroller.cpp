#include "AndroidTools.h"
#include "Host.h"
#include "SetupController.h"
#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <QCoroTask>

#include <functional>
#include <memory>

namespace {

// A temporary Mac laid out as macOS lays it out, with sh stand-ins for Homebrew and the Android tools.
// Its HOME is its root, where the stand-ins find their copies and the behaviours asked of them.
class StandInMac
{
public:
    explicit StandInMac(const QString &root)
        : m_root(root)
    {
        Host::setCurrent(Host::underRoot(root, true));
        qunsetenv("ANDROID_HOME");
        qunsetenv("ANDROID_SDK_ROOT");
        qputenv("HOME", root.toUtf8());
        const QDir source(QStringLiteral(STAND_INS_DIR));
        for (const QString &name : source.entryList(QDir::Files))
            copy(source.filePath(name), standIn(name));
        QDir().mkpath(root + QStringLiteral("/control"));
    }

    void installBrew()
    {
        copy(standIn(QStringLiteral("brew")), Host::current().homebrewPrefix + QStringLiteral("/bin/brew"));
    }
    void installLegacyBrew()
    {
        copy(standIn(QStringLiteral("brew")),
            Host::current().legacyHomebrewPrefix + QStringLiteral("/bin/brew"));
    }
    void installJava()
    {
        copy(standIn(QStringLiteral("java")),
            Host::current().homebrewPrefix + QStringLiteral("/opt/openjdk@17")
                + Host::current().homebrewJavaHomeSuffix + QStringLiteral("/bin/java"));
    }
    void installCommandLineTools()
    {
        const QString bin = Host::current().homebrewPrefix
            + QStringLiteral("/share/android-commandlinetools/cmdline-tools/latest/bin/");
        copy(standIn(QStringLiteral("sdkmanager")), bin + QStringLiteral("sdkmanager"));
        copy(standIn(QStringLiteral("avdmanager")), bin + QStringLiteral("avdmanager"));
    }
    void acceptLicenses()
    {
        writeFile(AndroidTools::licenseFile(), "24333f8a63b6825ea9c5514f83c2829b004d1fee\n");
    }
    void installEmulator()
    {
        copy(standIn(QStringLiteral("java")), AndroidTools::sdkRoot() + QStringLiteral("/emulator/emulator"));
        copy(
            standIn(QStringLiteral("java")), AndroidTools::sdkRoot() + QStringLiteral("/platform-tools/adb"));
    }
    void makeReady()
    {
        installBrew();
        installJava();
        installCommandLineTools();
        acceptLicenses();
        installEmulator();
    }
    void setBehaviour(const QString &key)
    {
        writeFile(m_root + QStringLiteral("/control/") + key, QByteArray());
    }

private:
    QString standIn(const QString &name) const { return m_root + QStringLiteral("/stand-ins/") + name; }
    static void copy(const QString &from, const QString &to)
    {
        QFile source(from);
        if (!source.open(QIODevice::ReadOnly))
            qFatal("cannot read %s", qPrintable(from));
        writeFile(to, source.readAll(), true);
    }

    QString m_root;
};

using Action = QCoro::Task<> (SetupController::*)();
using Preparation = std::function<void(StandInMac &)>;

QString messageOf(const SetupController &setup)
{
    return setup.message().value_or(QStringLiteral("<none>"));
}

} // namespace

Q_DECLARE_METATYPE(Action)
Q_DECLARE_METATYPE(Preparation)

class TestSetupController : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<StandInMac> m_host;

    void setArm64(bool arm64)
    {
        Host host = Host::current();
        host.arm64 = arm64;
        Host::setCurrent(host);
    }

private Q_SLOTS:
    void init()
    {
        m_host.reset();
        m_dir = std::make_unique<QTemporaryDir>();
        m_host = std::make_unique<StandInMac>(m_dir->path());
    }

    void cleanupTestCase() { m_host.reset(); }

    void processor_data()
    {
        QTest::addColumn<bool>("arm64");
        QTest::newRow("arm64") << true;
        QTest::newRow("not arm64") << false;
    }

    void processor()
    {
        QFETCH(bool, arm64);
        setArm64(arm64);
        m_host->makeReady();

        SetupController setup;
        QCOMPARE(setup.isAppleSilicon(), arm64);
        // Everything else waits for the first check, even on a ready machine.
        QVERIFY(!setup.brewReady());
        QVERIFY(!setup.emulatorReady());
        QCOMPARE(setup.message(), std::nullopt);
        QCOMPARE(setup.licenseText(), std::nullopt);

        setup.refresh();
        QCOMPARE(setup.isAppleSilicon(), arm64);
        QVERIFY(setup.brewReady());
    }

    void refresh_data()
    {
        QTest::addColumn<Preparation>("prepare");
        QTest::addColumn<QList<bool>>("flags"); // brew, java, cmdline, licences, emulator, platform tools

        QTest::newRow("fresh Mac") << Preparation([](StandInMac &) {})
                                   << QList<bool> {false, false, false, false, false, false};
        QTest::newRow("Homebrew only") << Preparation([](StandInMac &host) { host.installBrew(); })
                                       << QList<bool> {true, false, false, false, false, false};
        QTest::newRow("sdkmanager without avdmanager") << Preparation([](StandInMac &host) {
            host.installBrew();
            host.installCommandLineTools();
            const auto avdManager = AndroidTools::avdManager();
            QVERIFY(avdManager);
            QVERIFY(QFile::remove(*avdManager));
        }) << QList<bool> {true, false, false, false, false, false};
        QTest::newRow("empty licence file")
            << Preparation([](StandInMac &) { writeFile(AndroidTools::licenseFile(), QByteArray()); })
            << QList<bool> {false, false, false, true, false, false};
        QTest::newRow("ready") << Preparation([](StandInMac &host) { host.makeReady(); })
                               << QList<bool> {true, true, true, true, true, true};
    }

    void refresh()
    {
        QFETCH(Preparation, prepare);
        QFETCH(QList<bool>, flags);

        prepare(*m_host);
        SetupController setup;
        QSignalSpy changes(&setup, &SetupController::changed);
        setup.refresh();
        const QList<bool> found = {setup.brewReady(), setup.javaReady(), setup.cmdlineReady(),
            setup.licensesAccepted(), setup.emulatorReady(), setup.platformToolsReady()};
        QCOMPARE(found, flags);
        QCOMPARE(setup.sdkRoot(), AndroidTools::sdkRoot());
        // Every flag and the SDK folder are announced, changed or not.
        QCOMPARE(changes.count(), 8);
        setup.refresh();
        QCOMPARE(changes.count(), 16);
    }

    void refusals_data()
    {
        QTest::addColumn<Preparation>("prepare");
        QTest::addColumn<Action>("action");
        QTest::addColumn<QString>("message");

        const Preparation nothing = [](StandInMac &) {};
        const Preparation brewAndTools = [](StandInMac &host) {
            host.installBrew();
            host.installCommandLineTools();
        };
        const QString noBrew = QStringLiteral("Homebrew is needed first.");
        const QString noSdkManager = QStringLiteral("sdkmanager was not found.");

        QTest::newRow("Java without Homebrew")
            << nothing << Action(&SetupController::installJavaTask) << noBrew;
        QTest::newRow("command line tools without Homebrew")
            << nothing << Action(&SetupController::installCommandLineToolsTask) << noBrew;
        QTest::newRow("licence text without sdkmanager")
            << nothing << Action(&SetupController::loadLicenseTextTask) << noSdkManager;
        QTest::newRow("accepting without sdkmanager")
            << nothing << Action(&SetupController::acceptLicensesTask) << noSdkManager;
        QTest::newRow("emulator without sdkmanager")
            << nothing << Action(&SetupController::installEmulatorTask) << noSdkManager;
        QTest::newRow("licence text without Java")
            << brewAndTools << Action(&SetupController::loadLicenseTextTask)
            << QStringLiteral("Install Java first.");
    }

    void refusals()
    {
        QFETCH(Preparation, prepare);
        QFETCH(Action, action);
        QFETCH(QString, message);

        prepare(*m_host);
        SetupController setup;
        QSignalSpy loading(&setup, &SetupController::licenseLoadingChanged);
        QSignalSpy flags(&setup, &SetupController::brewReadyChanged);
        QSignalSpy jobs(setup.job(), &JobRunner::isRunningChanged);
        QCoro::waitFor((setup.*action)());
        QCOMPARE(messageOf(setup), message);
        QCOMPARE(loading.count(), 0);
        QCOMPARE(jobs.count(), 0);
        QVERIFY(setup.job()->lines().isEmpty());
        // A refused action checks nothing.
        QCOMPARE(flags.count(), 0);
    }

    // A fresh Mac with only Homebrew becomes ready through the controller's own actions, as the
    // Setup tab drives it.
    void walkToReady()
    {
        m_host->installBrew();
        SetupController setup;
        QSignalSpy jobChanges(setup.job(), &JobRunner::changed);
        QSignalSpy changes(&setup, &SetupController::changed);
        setup.refresh();
        QVERIFY(setup.brewReady());
        QVERIFY(!setup.javaReady());
        const QString brew = *AndroidTools::brewPath();

        setup.installJava();
        QVERIFY(setup.job()->isRunning());
        QCOMPARE(setup.job()->title(), QStringLiteral("Installing Java (OpenJDK 17)"));
        QCOMPARE(setup.job()->lines().first(),
            QStringLiteral("$ ") + brew + QStringLiteral(" install openjdk@17"));
        QTRY_VERIFY_WITH_TIMEOUT(setup.javaReady(), 20000);
        QTRY_VERIFY(!setup.job()->isRunning());

        setup.installCommandLineTools();
        QCOMPARE(setup.job()->title(), QStringLiteral("Installing Android command line tools"));
        QCOMPARE(setup.job()->lines().first(),
            QStringLiteral("$ ") + brew + QStringLiteral(" install --cask android-commandlinetools"));
        QTRY_VERIFY_WITH_TIMEOUT(setup.cmdlineReady(), 20000);
        QTRY_VERIFY(!setup.job()->isRunning());
        const QString sdkManager = *AndroidTools::sdkManager();
        const QString sdkRootArgument = QStringLiteral("--sdk_root=") + AndroidTools::sdkRoot();

        setup.loadLicenseText();
        QVERIFY(setup.licenseLoading());
        QTRY_VERIFY_WITH_TIMEOUT(!setup.licenseLoading(), 20000);
        QVERIFY(setup.licenseText());
        QVERIFY(setup.licenseText()->contains(QLatin1String("android-sdk-license")));
        QVERIFY(!setup.licenseText()->startsWith(QLatin1Char('\n')));
        setup.refresh();
        QVERIFY(!setup.licensesAccepted());

        setup.acceptLicenses();
        QCOMPARE(setup.job()->title(), QStringLiteral("Accepting SDK licenses"));
        QCOMPARE(setup.job()->lines().first(),
            QStringLiteral("$ ") + sdkManager + QLatin1Char(' ') + sdkRootArgument
                + QStringLiteral(" --licenses"));
        QTRY_VERIFY_WITH_TIMEOUT(setup.licensesAccepted(), 20000);
        QCOMPARE(setup.licenseText(), std::nullopt);
        QTRY_VERIFY(!setup.job()->isRunning());

        setup.installEmulator();
        QCOMPARE(setup.job()->title(), QStringLiteral("Installing emulator and platform tools"));
        QCOMPARE(setup.job()->lines().first(),
            QStringLiteral("$ ") + sdkManager + QLatin1Char(' ') + sdkRootArgument
                + QStringLiteral(" emulator platform-tools"));
        QTRY_VERIFY_WITH_TIMEOUT(setup.emulatorReady() && setup.platformToolsReady(), 20000);
        QTRY_VERIFY(!setup.job()->isRunning());

        const QList<bool> flags
            = {setup.isAppleSilicon(), setup.brewReady(), setup.javaReady(), setup.cmdlineReady(),
                setup.licensesAccepted(), setup.emulatorReady(), setup.platformToolsReady()};
        QCOMPARE(flags, QList<bool>(7, true));
        QCOMPARE(setup.message(), std::nullopt);
        // Each of the job's announcements was repeated by the controller.
        QVERIFY(jobChanges.count() > 0);
        QVERIFY(changes.count() > jobChanges.count());
    }

    void jobFailures_data()
    {
        QTest::addColumn<Preparation>("prepare");
        QTest::addColumn<Action>("action");
        QTest::addColumn<QString>("message");

        QTest::newRow("Java") << Preparation([](StandInMac &host) {
            host.installBrew();
            host.setBehaviour(QStringLiteral("brew.fail"));
        }) << Action(&SetupController::installJavaTask)
                              << QStringLiteral("Java install failed. See the log for details.");
        QTest::newRow("command line tools")
            << Preparation([](StandInMac &host) {
                   host.installBrew();
                   host.setBehaviour(QStringLiteral("brew.fail"));
               })
            << Action(&SetupController::installCommandLineToolsTask)
            << QStringLiteral("Command line tools install failed. See the log for details.");
        QTest::newRow("accepting licences")
            << Preparation([](StandInMac &host) {
                   host.installBrew();
                   host.installJava();
                   host.installCommandLineTools();
                   host.setBehaviour(QStringLiteral("sdkmanager.fail"));
               })
            << Action(&SetupController::acceptLicensesTask)
            << QStringLiteral("Accepting licenses failed. See the log for details.");
        QTest::newRow("emulator") << Preparation([](StandInMac &host) {
            host.installBrew();
            host.installJava();
            host.installCommandLineTools();
            host.acceptLicenses();
            host.setBehaviour(QStringLiteral("sdkmanager.fail"));
        }) << Action(&SetupController::installEmulatorTask)
                                  << QStringLiteral("Install failed. See the log for details.");
    }

    void jobFailures()
    {
        QFETCH(Preparation, prepare);
        QFETCH(Action, action);
        QFETCH(QString, message);

        prepare(*m_host);
        SetupController setup;
        QSignalSpy flags(&setup, &SetupController::brewReadyChanged);
        QCoro::waitFor((setup.*action)());
        QCOMPARE(messageOf(setup), message);
        QCOMPARE(setup.job()->lines().last(), QStringLiteral("Finished with exit status 1."));
        QCOMPARE(flags.count(), 1);
    }

    void cancelledJob()
    {
        m_host->installBrew();
        m_host->setBehaviour(QStringLiteral("brew.slow"));
        SetupController setup;
        setup.refresh();
        QSignalSpy flags(&setup, &SetupController::javaReadyChanged);
        auto installing = setup.installJavaTask();
        QTRY_COMPARE(setup.job()->lines().size(), 2);
        setup.job()->job()->cancel();
        QCoro::waitFor(std::move(installing));
        QCOMPARE(setup.message(), std::nullopt);
        QCOMPARE(setup.job()->lines().last(), QStringLiteral("Cancelled."));
        QCOMPARE(flags.count(), 1);
        QVERIFY(!setup.javaReady());
    }

    void legacyHomebrewRunsTheInstall()
    {
        m_host->installLegacyBrew();
        SetupController setup;
        setup.refresh();
        QVERIFY(setup.brewReady());
        QCoro::waitFor(setup.installJavaTask());
        QCOMPARE(setup.job()->lines().first(),
            QStringLiteral("$ ") + Host::current().legacyHomebrewPrefix
                + QStringLiteral("/bin/brew install openjdk@17"));
        QCOMPARE(setup.message(), std::nullopt);
    }

    void licenseText_data()
    {
        QTest::addColumn<Preparation>("prepare");
        QTest::addColumn<QString>("licenseText"); // "<none>" when absent
        QTest::addColumn<QString>("message");

        const auto ready = [](StandInMac &host) {
            host.installBrew();
            host.installJava();
            host.installCommandLineTools();
        };
        QTest::newRow("only blank lines") << Preparation([=](StandInMac &host) {
            ready(host);
            host.setBehaviour(QStringLiteral("sdkmanager.blank"));
        }) << QStringLiteral("sdkmanager printed no license text.")
                                          << QStringLiteral("<none>");
        QTest::newRow("sdkmanager cannot start")
            << Preparation([=](StandInMac &host) {
                   ready(host);
                   writeFile(*AndroidTools::sdkManager(), "#!/nonexistent/interpreter\n", true);
               })
            << QStringLiteral("<none>")
            << QStringLiteral("Could not start <sdkmanager>: No such file or directory");
    }

    void licenseText()
    {
        QFETCH(Preparation, prepare);
        QFETCH(QString, licenseText);
        QFETCH(QString, message);

        prepare(*m_host);
        SetupController setup;
        QSignalSpy loading(&setup, &SetupController::licenseLoadingChanged);
        QCoro::waitFor(setup.loadLicenseTextTask());
        QCOMPARE(setup.licenseText().value_or(QStringLiteral("<none>")), licenseText);
        QCOMPARE(
            messageOf(setup), message.replace(QStringLiteral("<sdkmanager>"), *AndroidTools::sdkManager()));
        QCOMPARE(loading.count(), 2);
        QVERIFY(!setup.licenseLoading());
        QVERIFY(setup.job()->lines().isEmpty());
    }

    void acceptingKeepsTheEarlierMessage()
    {
        m_host->installBrew();
        m_host->installCommandLineTools();
        m_host->setBehaviour(QStringLiteral("brew.fail"));
        SetupController setup;
        QCoro::waitFor(setup.installJavaTask());
        const QString failure = QStringLiteral("Java install failed. See the log for details.");
        QCOMPARE(messageOf(setup), failure);

        auto accepting = setup.acceptLicensesTask();
        QVERIFY(setup.job()->isRunning());
        QCOMPARE(messageOf(setup), failure);
        QCoro::waitFor(std::move(accepting));
        QCOMPARE(messageOf(setup), failure);
        QVERIFY(setup.licensesAccepted());
    }
};

QTEST_GUILESS_MAIN(TestSetupController)
#include "tst_setupcontroller.moc"
