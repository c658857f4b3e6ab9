#include "AndroidTools.h"
#include "Host.h"
#include "JobRunner.h"
#include "SimHost.h"

#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <QCoro/QCoroTask>

namespace {

const QString shell = QStringLiteral("/bin/sh");

ProcessResult runScript(JobRunner &runner, const QString &script, std::optional<QString> input = std::nullopt)
{
    return QCoro::waitFor(
        runner.run(QStringLiteral("Testing"), shell, {QStringLiteral("-c"), script}, input));
}

} // namespace

class TestJobRunner : public QObject
{
    Q_OBJECT

    QTemporaryDir m_root;

private Q_SLOTS:
    void initTestCase() { Host::setCurrent(Host::underRoot(m_root.path(), true)); }

    void logs_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<double>("progress"); // -1 for none

        const QString command = QStringLiteral("$ /bin/sh -c ");
        QTest::newRow("progress bar redraws merge")
            << "printf '[====      ] 40%%\\r[======    ] 60%%\\r[==========] 100%%\\n'"
            << QStringList {command
                       + "printf '[====      ] 40%%\\r[======    ] 60%%\\r[==========] 100%%\\n'",
                   "[==========] 100%"}
            << 1.0;
        QTest::newRow("ordinary percentage is its own line")
            << "printf '[==  ] 20%%\\nUnzipping 50%%\\n[====] 70%%\\n[=====] 80%%\\n'; exit 2"
            << QStringList {command
                       + "printf '[==  ] 20%%\\nUnzipping 50%%\\n[====] 70%%\\n[=====] 80%%\\n'; exit 2",
                   "[==  ] 20%", "Unzipping 50%", "[=====] 80%", "Finished with exit status 2."}
            << 0.8;
        QTest::newRow("Downloading counts as progress")
            << "printf 'Downloading 10%%\\rDownloading 90%%\\n'"
            << QStringList {command + "printf 'Downloading 10%%\\rDownloading 90%%\\n'", "Downloading 90%"}
            << 1.0;
        QTest::newRow("failure keeps the last progress")
            << "printf '[=====     ] 50%%\\n'; exit 1"
            << QStringList {command + "printf '[=====     ] 50%%\\n'; exit 1", "[=====     ] 50%",
                   "Finished with exit status 1."}
            << 0.5;
        QTest::newRow("unfinished last line is flushed")
            << "printf 'first\\nlast'" << QStringList {command + "printf 'first\\nlast'", "first", "last"}
            << 1.0;
        QTest::newRow("both streams interleave")
            << "echo out; sleep 0.1; echo err >&2; sleep 0.1; echo out2"
            << QStringList {command + "echo out; sleep 0.1; echo err >&2; sleep 0.1; echo out2", "out", "err",
                   "out2"}
            << 1.0;
    }

    void logs()
    {
        QFETCH(QString, script);
        QFETCH(QStringList, lines);
        QFETCH(double, progress);

        JobRunner runner;
        const ProcessResult result = runScript(runner, script);
        QCOMPARE(runner.lines(), lines);
        QCOMPARE(runner.progress().value_or(-1), progress);
        QCOMPARE(runner.title(), QStringLiteral("Testing"));
        QVERIFY(!runner.isRunning());
        QVERIFY(!runner.job());
        QCOMPARE(result.isClean(), !lines.last().startsWith(QLatin1String("Finished")));
    }

    void launchErrorIsTheClosingLine()
    {
        JobRunner runner;
        const ProcessResult result = QCoro::waitFor(runner.run(QStringLiteral("Installing Java (OpenJDK 17)"),
            m_root.filePath(QStringLiteral("brew")),
            {QStringLiteral("install"), QStringLiteral("openjdk@17")}));
        QCOMPARE(runner.lines().size(), 2);
        QCOMPARE(
            runner.lines().first(), QStringLiteral("$ %1 install openjdk@17").arg(m_root.filePath("brew")));
        QCOMPARE(runner.lines().last(), *result.launchError);
        QVERIFY(runner.lines().last().startsWith(QLatin1String("Could not start ")));
        QCOMPARE(runner.progress(), std::nullopt);
    }

    void logIsTrimmed_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("status");
        QTest::addColumn<QStringList>("expected"); // size, first line, last line before the closing one

        // The command line plus 3000 lines reach 3001 entries once, which drops the oldest 500.
        QTest::newRow("one trim") << 3000 << 0 << QStringList {"2501", "line 500", "line 3000"};
        // A flood arrives in batches over many turns; it ends as if its lines had been added one by one,
        // and the closing line comes after all of them.
        QTest::newRow("flood") << 20000 << 3 << QStringList {"2502", "line 17500", "line 20000"};
    }

    void logIsTrimmed()
    {
        QFETCH(int, count);
        QFETCH(int, status);
        QFETCH(QStringList, expected);

        JobRunner runner;
        runScript(runner,
            QStringLiteral("awk 'BEGIN { for (i = 1; i <= %1; i++) print \"line \" i }'; exit %2")
                .arg(count)
                .arg(status));
        const QStringList &lines = runner.lines();
        QCOMPARE(lines.size(), expected[0].toInt());
        QCOMPARE(lines.first(), expected[1]);
        QCOMPARE(lines.at(status == 0 ? lines.size() - 1 : lines.size() - 2), expected[2]);
        if (status != 0)
            QCOMPARE(lines.last(), QStringLiteral("Finished with exit status %1.").arg(status));
        QCOMPARE(runner.lineModel()->count(), lines.size());
        QCOMPARE(runner.lineModel()->text(), lines.join(QLatin1Char('\n')));
    }

    void secondRunIsRefused()
    {
        JobRunner runner;
        auto first = runner.run(QStringLiteral("First"), shell,
            {QStringLiteral("-c"), QStringLiteral("echo started; sleep 0.5; echo finished")});
        QTRY_COMPARE(runner.lines().size(), 2);
        const QStringList before = runner.lines();

        const ProcessResult refused = QCoro::waitFor(runner.run(QStringLiteral("Second"), shell, {}));
        QCOMPARE(refused.status, -1);
        QCOMPARE(refused.launchError, QStringLiteral("Another install is already running."));
        QCOMPARE(runner.title(), QStringLiteral("First"));
        QCOMPARE(runner.lines(), before);
        QVERIFY(runner.isRunning());

        const ProcessResult result = QCoro::waitFor(std::move(first));
        QVERIFY(result.isClean());
        QCOMPARE(runner.lines().last(), QStringLiteral("finished"));
    }

    void cancelFromTheHandle()
    {
        JobRunner runner;
        QSignalSpy changes(&runner, &JobRunner::changed);
        QTimer::singleShot(300, &runner, [&] { runner.job()->cancel(); });
        const ProcessResult result = runScript(runner, QStringLiteral("echo working; exec sleep 10"));
        QVERIFY(result.cancelled);
        QCOMPARE(runner.lines().last(), QStringLiteral("Cancelled."));
        QCOMPARE(runner.progress(), std::nullopt);
        QVERIFY(changes.count() >= 5);
    }

    void inputReachesTheTool()
    {
        JobRunner runner;
        const ProcessResult result = runScript(
            runner, QStringLiteral("read answer; echo \"answer: $answer\""), QStringLiteral("y\n"));
        QVERIFY(result.isClean());
        QCOMPARE(runner.lines().last(), QStringLiteral("answer: y"));
    }

    // The simulated Homebrew and sdkmanager redraw their progress with carriage returns and read their
    // answers from standard input, as the real ones do.
    void simulatedInstalls()
    {
        QTemporaryDir root;
        SimHost sim(root.path());
        sim.installBrew();
        sim.activate();
        JobRunner runner;

        ProcessResult result = QCoro::waitFor(runner.run(QStringLiteral("Installing Java (OpenJDK 17)"),
            sim.brewPath(), {QStringLiteral("install"), QStringLiteral("openjdk@17")}));
        QVERIFY2(result.isClean(), qPrintable(runner.lines().join('\n')));
        QCOMPARE(runner.progress(), 1.0);
        QVERIFY(runner.lines().contains(
            QStringLiteral("==> Pouring openjdk@17--17.0.13.arm64_sonoma.bottle.tar.gz")));
        QVERIFY(AndroidTools::javaHome());

        sim.installCommandLineTools();
        const QString sdkManager = *AndroidTools::sdkManager();
        const QStringList licences
            = {QStringLiteral("--sdk_root=") + AndroidTools::sdkRoot(), QStringLiteral("--licenses")};
        result = QCoro::waitFor(runner.run(QStringLiteral("Accepting SDK licenses"), sdkManager, licences,
            QStringLiteral("y\n").repeated(40)));
        QVERIFY(result.isClean());
        QCOMPARE(runner.lines().last(), QStringLiteral("All SDK package licenses accepted"));
        QVERIFY(QFileInfo::exists(AndroidTools::licenseFile()));

        result
            = QCoro::waitFor(runner.run(QStringLiteral("Installing emulator and platform tools"), sdkManager,
                {QStringLiteral("--sdk_root=") + AndroidTools::sdkRoot(), QStringLiteral("emulator"),
                    QStringLiteral("platform-tools")}));
        QVERIFY(result.isClean());
        // Each package's redrawn bar stays one line in the log.
        QCOMPARE(runner.lines().filter(QStringLiteral("Downloading emulator")).size(), 0);
        QVERIFY(runner.lines().size() < 8);
        QVERIFY(AndroidTools::emulatorPath());
        QVERIFY(AndroidTools::adbPath());

        sim.setBehaviour(QStringLiteral("sdkmanager.fail"));
        result = QCoro::waitFor(runner.run(QStringLiteral("Installing"), sdkManager,
            {QStringLiteral("--sdk_root=") + AndroidTools::sdkRoot(),
                QStringLiteral("system-images;android-35;google_apis;arm64-v8a")}));
        QCOMPARE(result.status, 1);
        QCOMPARE(runner.lines().last(), QStringLiteral("Finished with exit status 1."));
        QVERIFY(runner.progress().value_or(0) > 0.9);
    }

    void nextRunReplacesTheLog()
    {
        JobRunner runner;
        runScript(runner, QStringLiteral("printf '[==] 50%%\\n'; exit 1"));
        QCOMPARE(runner.progress(), 0.5);
        runScript(runner, QStringLiteral("echo again"));
        QCOMPARE(runner.lines().size(), 2);
        QCOMPARE(runner.lines().last(), QStringLiteral("again"));
    }
};

QTEST_GUILESS_MAIN(TestJobRunner)
#include "tst_jobrunner.moc"
