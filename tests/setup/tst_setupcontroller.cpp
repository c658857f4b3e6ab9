#include "AndroidTools.h"
#include "Host.h"
#include "SetupController.h"
#include "SimHost.h"
#include "TestFiles.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <QCoro/QCoroTask>

#include <functional>
#include <memory>

namespace {

using Action = QCoro::Task<> (SetupController::*)();
using Preparation = std::function<void(SimHost &)>;

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
    std::unique_ptr<SimHost> m_host;

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
        m_host = std::make_unique<SimHost>(m_dir->path());
        m_host->activate();
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

        QTest::newRow("fresh Mac") << Preparation([](SimHost &) {})
                                   << QList<bool> {false, false, false, false, false, false};
        QTest::newRow("Homebrew only") << Preparation([](SimHost &host) { host.installBrew(); })
                                       << QList<bool> {true, false, false, false, false, false};
        QTest::newRow("sdkmanager without avdmanager") << Preparation([](SimHost &host) {
            host.installBrew();
            host.installCommandLineTools();
            const auto avdManager = AndroidTools::avdManager();
            QVERIFY(avdManager);
            QVERIFY(QFile::remove(*avdManager));
        }) << QList<bool> {true, false, false, false, false, false};
        QTest::newRow("empty licence file")
            << Preparation([](SimHost &) { writeFile(AndroidTools::licenseFile(), QByteArray()); })
            << QList<bool> {false, false, false, true, false, false};
        QTest::newRow("ready") << Preparation([](SimHost &host) { host.makeReady(); })
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

        const Preparation nothing = [](SimHost &) {};
        const Preparation brewAndTools = [](SimHost &host) {
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

        QTest::newRow("Java") << Preparation([](SimHost &host) {
            host.installBrew();
            host.setBehaviour(QStringLiteral("brew.fail"));
        }) << Action(&SetupController::installJavaTask)
                              << QStringLiteral("Java install failed. See the log for details.");
        QTest::newRow("command line tools")
            << Preparation([](SimHost &host) {
                   host.installBrew();
                   host.setBehaviour(QStringLiteral("brew.fail"));
               })
            << Action(&SetupController::installCommandLineToolsTask)
            << QStringLiteral("Command line tools install failed. See the log for details.");
        // sdkmanager is a Java program: without Java it fails at once.
        QTest::newRow("accepting licences without Java")
            << Preparation([](SimHost &host) {
                   host.installBrew();
                   host.installCommandLineTools();
               })
            << Action(&SetupController::acceptLicensesTask)
            << QStringLiteral("Accepting licenses failed. See the log for details.");
        QTest::newRow("emulator") << Preparation([](SimHost &host) {
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
        m_host->setBehaviour(QStringLiteral("brew.hang"));
        SetupController setup;
        setup.refresh();
        QSignalSpy flags(&setup, &SetupController::javaReadyChanged);
        auto installing = setup.installJavaTask();
        QTRY_VERIFY(setup.job()->lines().last().contains(QLatin1String("/blobs/")));
        setup.job()->job()->cancel();
        QCoro::waitFor(std::move(installing));
        QCOMPARE(setup.message(), std::nullopt);
        QCOMPARE(setup.job()->lines().last(), QStringLiteral("Cancelled."));
        QCOMPARE(flags.count(), 1);
        QVERIFY(!setup.javaReady());
    }

    void legacyHomebrewRunsTheInstall()
    {
        m_host->installBrew(true);
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

        const auto ready = [](SimHost &host) {
            host.installBrew();
            host.installJava();
            host.installCommandLineTools();
        };
        QTest::newRow("only blank lines") << Preparation([=](SimHost &host) {
            ready(host);
            host.setBehaviour(QStringLiteral("sdkmanager.licenses.blank"));
        }) << QStringLiteral("sdkmanager printed no license text.")
                                          << QStringLiteral("<none>");
        QTest::newRow("sdkmanager cannot start")
            << Preparation([=](SimHost &host) {
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
        SetupController setup;
        QCoro::waitFor(setup.loadLicenseTextTask());
        const QString refusal = QStringLiteral("Install Java first.");
        QCOMPARE(messageOf(setup), refusal);

        m_host->installJava();
        auto accepting = setup.acceptLicensesTask();
        QVERIFY(setup.job()->isRunning());
        QCOMPARE(messageOf(setup), refusal);
        QCoro::waitFor(std::move(accepting));
        QCOMPARE(messageOf(setup), refusal);
        QVERIFY(setup.licensesAccepted());
    }
};

QTEST_GUILESS_MAIN(TestSetupController)
#include "tst_setupcontroller.moc"
