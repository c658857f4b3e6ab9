#include "AndroidTools.h"
#include "DataTable.h"
#include "Host.h"
#include "SetupController.h"
#include "SimHost.h"
#include "TestFiles.h"

#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <QCoro/QCoroTask>

#include <algorithm>
#include <functional>
#include <memory>

namespace {

using Action = QCoro::Task<> (SetupController::*)();
using Preparation = std::function<void(SimHost &)>;

QString messageOf(const SetupController &setup)
{
    return setup.message().value_or(QStringLiteral("<none>"));
}

// brew, java, cmdline, licences, emulator, platform tools, as 0 and 1
QString flagsOf(const SetupController &setup)
{
    QString flags;
    for (bool flag : {setup.brewReady(), setup.javaReady(), setup.cmdlineReady(), setup.licensesAccepted(),
             setup.emulatorReady(), setup.platformToolsReady()})
        flags += flag ? QLatin1Char('1') : QLatin1Char('0');
    return flags;
}

// One job-based action, its log's title, its heading once it succeeded, and its command; <brew>,
// <sdkmanager> and <root> stand for their paths.
struct Job
{
    Action action;
    QString title;
    QString done;
    QString command;
};

const Job javaJob {&SetupController::installJavaTask, QStringLiteral("Installing Java (OpenJDK 17)"),
    QStringLiteral("Installed Java (OpenJDK 17)"), QStringLiteral("<brew> install openjdk@17")};
const Job toolsJob {&SetupController::installCommandLineToolsTask,
    QStringLiteral("Installing Android command line tools"),
    QStringLiteral("Installed Android command line tools"),
    QStringLiteral("<brew> install --cask android-commandlinetools")};
const Job acceptJob {&SetupController::acceptLicensesTask, QStringLiteral("Accepting SDK licenses"),
    QStringLiteral("Accepted SDK licenses"), QStringLiteral("<sdkmanager> --sdk_root=<root> --licenses")};
const Job emulatorJob {&SetupController::installEmulatorTask,
    QStringLiteral("Installing emulator and platform tools"),
    QStringLiteral("Installed emulator and platform tools"),
    QStringLiteral("<sdkmanager> --sdk_root=<root> emulator platform-tools")};

Preparation with(Preparation first, const QString &key, const QByteArray &value = "1")
{
    return [=](SimHost &host) {
        first(host);
        host.setBehaviour(key, value);
    };
}

const Preparation nothing = [](SimHost &) {};
const Preparation brew = [](SimHost &host) { host.installBrew(); };
const Preparation brewAndTools = [](SimHost &host) {
    host.installBrew();
    host.installCommandLineTools();
};
const Preparation tools = [](SimHost &host) {
    brewAndTools(host);
    host.installJava();
};
const Preparation licensed = [](SimHost &host) {
    tools(host);
    host.acceptLicenses();
};

} // namespace

Q_DECLARE_METATYPE(Action)
Q_DECLARE_METATYPE(Preparation)
Q_DECLARE_METATYPE(Job)

class TestSetupController : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SimHost> m_host;

private Q_SLOTS:
    void init()
    {
        m_host.reset();
        m_dir = std::make_unique<QTemporaryDir>();
        m_host = std::make_unique<SimHost>(m_dir->path());
        m_host->activate();
    }

    void cleanupTestCase() { m_host.reset(); }

    void refresh_data()
    {
        columns<bool, Preparation, QString>("arm64", "prepare", "flags");

        const Preparation makeReady = [](SimHost &host) { host.makeReady(); };
        QTest::newRow("fresh Mac") << true << nothing << "000000";
        QTest::newRow("Homebrew only") << true << brew << "100000";
        QTest::newRow("Homebrew only in /usr/local")
            << true << Preparation([](SimHost &host) { host.installBrew(true); }) << "100000";
        QTest::newRow("sdkmanager without avdmanager") << true << Preparation([](SimHost &host) {
            brewAndTools(host);
            QVERIFY(QFile::remove(AndroidTools::avdManager().value_or(QString())));
        }) << "100000";
        QTest::newRow("empty licence file")
            << true << Preparation([](SimHost &) { writeFile(AndroidTools::licenseFile(), QByteArray()); })
            << "000100";
        QTest::newRow("ready") << true << makeReady << "111111";
        QTest::newRow("ready, not arm64") << false << makeReady << "111111";
    }

    void refresh()
    {
        auto [arm64, prepare, flags] = row<bool, Preparation, QString>("arm64", "prepare", "flags");

        Host host = Host::current();
        host.arm64 = arm64;
        Host::setCurrent(host);
        prepare(*m_host);
        SetupController setup;
        // The processor is known at once; everything else waits for the first check.
        QCOMPARE(setup.isAppleSilicon(), arm64);
        QCOMPARE(flagsOf(setup), QStringLiteral("000000"));

        std::vector<std::unique_ptr<QSignalSpy>> spies;
        for (auto signal : {&SetupController::isAppleSiliconChanged, &SetupController::brewReadyChanged,
                 &SetupController::javaReadyChanged, &SetupController::cmdlineReadyChanged,
                 &SetupController::licensesAcceptedChanged, &SetupController::emulatorReadyChanged,
                 &SetupController::platformToolsReadyChanged})
            spies.push_back(std::make_unique<QSignalSpy>(&setup, signal));
        setup.refresh();
        setup.refresh();
        QCOMPARE(setup.isAppleSilicon(), arm64);
        QCOMPARE(flagsOf(setup), flags);
        // Each check announces its flag, changed or not.
        QList<qsizetype> announced;
        for (const auto &spy : spies)
            announced.append(spy->count());
        QCOMPARE(announced, QList<qsizetype>(7, 2));
    }

    // Only a Java the tools can run on, as its release file tells, counts; the Setup tab says what is wrong
    // with another.
    void javaCheck_data()
    {
        // release: what the one JDK's release file says, version and arch; empty for a JDK without one
        columns<QStringList, QString>("release", "note");

        QTest::newRow("17 for Apple silicon") << QStringList {"17.0.12", "aarch64"} << "";
        QTest::newRow("newer") << QStringList {"21-ea", "aarch64"} << "";
        QTest::newRow("older") << QStringList {"11.0.24", "aarch64"}
                               << "Java 11 found; the Android tools need 17";
        QTest::newRow("older, numbered the old way")
            << QStringList {"1.8.0_392", "x86_64"} << "Java 8 found; the Android tools need 17";
        QTest::newRow("for Intel") << QStringList {"17.0.12", "x86_64"}
                                   << "Java 17 for Intel found; the Android tools need one for Apple silicon";
        QTest::newRow("no release file") << QStringList {
            "", ""} << "Java found, but it does not say which version; the Android tools need 17";
    }

    void javaCheck()
    {
        auto [release, note] = row<QStringList, QString>("release", "note");

        m_host->installSystemJava(QStringLiteral("jdk.jdk"), release[0], release[1]);
        SetupController setup;
        setup.refresh();
        QCOMPARE(setup.javaNote(), note);
        QCOMPARE(setup.javaReady(), note.isEmpty());
    }

    void refusals_data()
    {
        columns<Preparation, Action, QString>("prepare", "action", "message");

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
        auto [prepare, action, message] = row<Preparation, Action, QString>("prepare", "action", "message");

        prepare(*m_host);
        SetupController setup;
        QSignalSpy loading(&setup, &SetupController::licenseLoadingChanged);
        QSignalSpy checked(&setup, &SetupController::brewReadyChanged);
        QCoro::waitFor((setup.*action)());
        QCOMPARE(messageOf(setup), message);
        QCOMPARE(loading.count(), 0);
        QVERIFY(setup.job()->lines().isEmpty());
        // A refused action checks nothing.
        QCOMPARE(checked.count(), 0);
    }

    void jobs_data()
    {
        // ending: the log's closing line; empty after a success; flags: as the check after the job finds them
        columns<Preparation, Job, QString, QString, QString>("prepare", "job", "ending", "message", "flags");

        const QString failed = QStringLiteral("Finished with exit status 1.");
        const QString cancelled = QStringLiteral("Cancelled.");
        const QString none = QStringLiteral("<none>");
        const Preparation legacyBrew = [](SimHost &host) { host.installBrew(true); };
        QTest::newRow("Java") << brew << javaJob << QString() << none << "110000";
        // Java from that Homebrew is not where the tools look for it.
        QTest::newRow("Java with Homebrew in /usr/local")
            << legacyBrew << javaJob << QString() << none << "100000";
        QTest::newRow("Java fails") << with(brew, QStringLiteral("brew.fail")) << javaJob << failed
                                    << "Java install failed. See the log for details."
                                    << "100000";
        QTest::newRow("Java cancelled")
            << with(brew, QStringLiteral("brew.hang")) << javaJob << cancelled << none << "100000";
        QTest::newRow("command line tools") << brew << toolsJob << QString() << none << "101000";
        QTest::newRow("command line tools fail")
            << with(brew, QStringLiteral("brew.fail")) << toolsJob << failed
            << "Command line tools install failed. See the log for details."
            << "100000";
        QTest::newRow("licences") << tools << acceptJob << QString() << none << "111100";
        // sdkmanager is a Java program: without Java it fails at once.
        QTest::newRow("licences without Java")
            << brewAndTools << acceptJob << failed << "Accepting licenses failed. See the log for details."
            << "101000";
        // Reading the licences answers no to each of them; accepting answers yes.
        QTest::newRow("licences cancelled") << with(tools, QStringLiteral("sdkmanager.script"),
            "read -r review; if read -r answer && [ \"$answer\" = y ]; then exec sleep 600; fi")
                                            << acceptJob << cancelled << none << "111000";
        QTest::newRow("emulator") << licensed << emulatorJob << QString() << none << "111111";
        QTest::newRow("emulator fails") << with(licensed, QStringLiteral("sdkmanager.fail")) << emulatorJob
                                        << failed << "Install failed. See the log for details."
                                        << "111100";
    }

    void jobs()
    {
        auto [prepare, job, ending, message, flags] = row<Preparation, Job, QString, QString, QString>(
            "prepare", "job", "ending", "message", "flags");

        prepare(*m_host);
        SetupController setup;
        // Licences are read before they are accepted; without Java that leaves a message instead.
        const bool accepting = job.action == acceptJob.action;
        if (accepting)
            QCoro::waitFor(setup.loadLicenseTextTask());
        const QString earlier = messageOf(setup);
        QSignalSpy checked(&setup, &SetupController::brewReadyChanged);
        // The bar as it is drawn: each value with what it is the progress of.
        QList<std::pair<std::optional<double>, QString>> bars;
        connect(setup.job(), &JobRunner::progressChanged, this, [&] {
            bars.append({setup.job()->progress(), setup.job()->progressText()});
        });
        auto running = (setup.*job.action)();
        QVERIFY(setup.job()->isRunning());
        // Installs clear the last message; accepting leaves it in view while it runs.
        QCOMPARE(messageOf(setup), accepting ? earlier : QStringLiteral("<none>"));
        if (ending == QLatin1String("Cancelled."))
            setup.job()->job()->cancel();
        QCoro::waitFor(std::move(running));

        QCOMPARE(setup.job()->title(), job.title);
        QCOMPARE(setup.job()->heading(),
            ending.isEmpty()                            ? job.done
                : ending == QLatin1String("Cancelled.") ? QStringLiteral("Cancelled: ") + job.title
                                                        : job.title + QStringLiteral(" failed"));
        // A bar never goes back within one download, and reading sdkmanager's catalog moves no bar.
        for (qsizetype i = 0; i < bars.size(); ++i) {
            const auto &[value, text] = bars[i];
            QVERIFY2(!value || !text.contains(QLatin1String("Computing updates")), qPrintable(text));
            if (i > 0 && value && bars[i - 1].first && bars[i - 1].second == text)
                QVERIFY2(*value >= *bars[i - 1].first, qPrintable(text));
        }
        // Homebrew's redrawn bar is one line of the log.
        QVERIFY(setup.job()->lines().filter(QRegularExpression(QStringLiteral("^#+ "))).size() <= 1);
        if (job.action == emulatorJob.action && ending.isEmpty())
            QVERIFY(std::any_of(bars.begin(), bars.end(), [](const auto &bar) {
                return bar.first && bar.second.startsWith(QLatin1String("Downloading emulator-"));
            }));
        QCOMPARE(setup.job()->lines().first(),
            QStringLiteral("$ ")
                + job.command.replace(QStringLiteral("<brew>"), AndroidTools::brewPath().value_or(""))
                      .replace(QStringLiteral("<sdkmanager>"), AndroidTools::sdkManager().value_or(""))
                      .replace(QStringLiteral("<root>"), AndroidTools::sdkRoot()));
        if (!ending.isEmpty())
            QCOMPARE(setup.job()->lines().last(), ending);
        QCOMPARE(messageOf(setup), message);
        // The machine is checked again whatever the outcome.
        QCOMPARE(checked.count(), 1);
        QCOMPARE(flagsOf(setup), flags);
        // Only accepted licences put their text away.
        if (accepting && AndroidTools::javaHome())
            QCOMPARE(setup.licenseText().has_value(), flags[3] == QLatin1Char('0'));
    }

    void secondJob()
    {
        brew(*m_host);
        SetupController setup;
        auto java = setup.installJavaTask();
        // Refused while the first runs, whose log stays.
        QCoro::waitFor(setup.installCommandLineToolsTask());
        QCOMPARE(
            messageOf(setup), QStringLiteral("Command line tools install failed. See the log for details."));
        QCOMPARE(setup.job()->title(), QStringLiteral("Installing Java (OpenJDK 17)"));
        QCoro::waitFor(std::move(java));
        QCoro::waitFor(setup.installCommandLineToolsTask());
        QCOMPARE(flagsOf(setup), QStringLiteral("111000"));
    }

    void licenseText_data()
    {
        // licenseText: a pattern; "<none>" when absent
        columns<Preparation, QString, QString>("prepare", "licenseText", "message");

        // Only the licences: not the catalog's progress, the questions or the count of refusals.
        QTest::newRow("refused one by one")
            << tools
            << "^(?![\\s\\S]*(Computing|Review|Accept\\?|not accepted))License "
               "android-sdk-license:\\n-{39}\\n"
               "[\\s\\S]*\\n-{39}\\n\\nLicense android-sdk-preview-license:\\n[\\s\\S]*-{39}$"
            << "<none>";
        QTest::newRow("trimmed, whatever the exit status") << with(
            tools, QStringLiteral("sdkmanager.script"), "printf '\\n \\nLicense x:\\n  text \\n\\n'; exit 1")
                                                           << "^License x:\\n  text$"
                                                           << "<none>";
        QTest::newRow("only blank lines") << with(tools, QStringLiteral("sdkmanager.licenses.blank"))
                                          << "^sdkmanager printed no license text\\.$"
                                          << "<none>";
        // A failure before any licence is no text to accept: it is shown as the failure it is.
        QTest::newRow("Java too old") << Preparation([](SimHost &host) {
            brewAndTools(host);
            host.installSystemJava(
                QStringLiteral("jdk-11.jdk"), QStringLiteral("11.0.24"), QStringLiteral("x86_64"));
        }) << "<none>"
                                      << "Showing the licenses failed: Exception in thread \"main\" "
                                         "java.lang.UnsupportedClassVersionError:";
        QTest::newRow("sdkmanager cannot start") << Preparation([](SimHost &host) {
            tools(host);
            writeFile(*AndroidTools::sdkManager(), "#!/nonexistent/interpreter\n", true);
        }) << "<none>"
                                                 << "Could not start <sdkmanager>: No such file or directory";
    }

    void licenseText()
    {
        auto [prepare, licenseText, message]
            = row<Preparation, QString, QString>("prepare", "licenseText", "message");

        prepare(*m_host);
        SetupController setup;
        QSignalSpy loading(&setup, &SetupController::licenseLoadingChanged);
        auto reading = setup.loadLicenseTextTask();
        QVERIFY(setup.licenseLoading());
        QCoro::waitFor(std::move(reading));
        QVERIFY(QRegularExpression(licenseText).match(setup.licenseText().value_or("<none>")).hasMatch());
        QVERIFY2(messageOf(setup).startsWith(
                     message.replace(QStringLiteral("<sdkmanager>"), *AndroidTools::sdkManager())),
            qPrintable(messageOf(setup)));
        QCOMPARE(loading.count(), 2);
        QVERIFY(!setup.licenseLoading());
        QVERIFY(setup.job()->lines().isEmpty());
        setup.refresh();
        QVERIFY(!setup.licensesAccepted());
    }
};

QTEST_GUILESS_MAIN(TestSetupController)
#include "tst_setupcontroller.moc"
