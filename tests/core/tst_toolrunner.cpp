#include "RunningJob.h"
#include "TestFiles.h"
#include "ToolRunner.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <QCoro/QCoroTask>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

// Declared before the first data table that uses it.
Q_DECLARE_METATYPE(std::optional<QString>)

namespace {

QProcessEnvironment plainEnvironment()
{
    QProcessEnvironment env;
    env.insert(QStringLiteral("PATH"), QStringLiteral("/usr/bin:/bin"));
    return env;
}

ProcessResult runShell(const QString &script, std::optional<double> timeout = std::nullopt,
    std::optional<QString> input = std::nullopt, RunningJob *job = nullptr, ToolRunner::OutputSink sink = {})
{
    return QCoro::waitFor(ToolRunner::run(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script},
        plainEnvironment(), timeout, input, job, std::move(sink)));
}

} // namespace

class TestToolRunner : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // The app ignores SIGPIPE at start; a child that never reads its input must not kill the tests
        // either.
        std::signal(SIGPIPE, SIG_IGN);
    }

    void finishedRuns_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("stdoutData");
        QTest::addColumn<QString>("summary");

        QTest::newRow("silent success")
            << "exit 0" << 0 << "" << QByteArray() << "The command exited with status 0.";
        QTest::newRow("exit 3") << "echo out; exit 3" << 3 << "out\n"
                                << QByteArray("out\n") << "The command exited with status 3.";
        QTest::newRow("only standard error") << "echo problem >&2; exit 1" << 1 << "problem\n"
                                             << QByteArray() << "The command exited with status 1.";
        QTest::newRow("streams alternate")
            << "printf a; sleep 0.1; printf b >&2; sleep 0.1; printf c" << 0 << "abc" << QByteArray("ac")
            << "The command exited with status 0.";
        QTest::newRow("invalid UTF-8") << "printf '\\377ok'" << 0 << QStringLiteral("\uFFFDok")
                                       << QByteArray("\xffok") << "The command exited with status 0.";
        QTest::newRow("ended by a signal")
            << "kill -TERM $$; sleep 5" << 15 << "" << QByteArray() << "The command exited with status 15.";
    }

    void finishedRuns()
    {
        QFETCH(QString, script);
        QFETCH(int, status);
        QFETCH(QString, text);
        QFETCH(QByteArray, stdoutData);
        QFETCH(QString, summary);

        QString streamed;
        const ProcessResult result = runShell(
            script, std::nullopt, std::nullopt, nullptr, [&](const QString &chunk) { streamed += chunk; });
        QCOMPARE(result.status, status);
        QCOMPARE(result.text, text);
        QCOMPARE(result.stdoutData, stdoutData);
        QCOMPARE(streamed, text);
        QVERIFY(!result.launchError);
        QVERIFY(!result.timedOut);
        QVERIFY(!result.cancelled);
        QCOMPARE(result.isClean(), status == 0);
        QCOMPARE(result.failureSummary(), summary);
    }

    void launchFailures_data()
    {
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<bool>("create");
        QTest::addColumn<int>("openFiles"); // limit on open files while starting; 0 for none
        QTest::addColumn<QString>("reason");

        QTest::newRow("missing") << "nothing-here" << false << 0 << "No such file or directory";
        QTest::newRow("not executable") << "plain-file" << true << 0 << "Permission denied";
        // A relative name is never looked up in PATH, not even one that names a real program.
        QTest::newRow("relative name") << "sh" << false << 0 << "not an absolute path";
        QTest::newRow("no file descriptors left") << "/bin/sh" << false << 1 << "Too many open files";
    }

    void launchFailures()
    {
        QFETCH(QString, fileName);
        QFETCH(bool, create);
        QFETCH(int, openFiles);
        QFETCH(QString, reason);

        QTemporaryDir dir;
        const QString tool = fileName == QLatin1String("sh") || fileName.startsWith(QLatin1Char('/'))
            ? fileName
            : dir.filePath(fileName);
        if (create)
            writeFile(tool, "#!/bin/sh\necho never\n");
        bool called = false;
        RunningJob job;
        rlimit limit {};
        getrlimit(RLIMIT_NOFILE, &limit);
        const rlimit saved = limit;
        if (openFiles > 0) {
            // Only the descriptors already open, and no more.
            limit.rlim_cur = rlim_t(dup(0));
            close(int(limit.rlim_cur));
            setrlimit(RLIMIT_NOFILE, &limit);
        }
        auto running = ToolRunner::run(tool, {QStringLiteral("-c"), QStringLiteral("echo ran")},
            plainEnvironment(), 0.5, QStringLiteral("input"), &job, [&](const QString &) { called = true; });
        const ProcessResult result = QCoro::waitFor(std::move(running));
        setrlimit(RLIMIT_NOFILE, &saved);
        QCOMPARE(result.status, -1);
        QCOMPARE(result.launchError, QStringLiteral("Could not start %1: %2").arg(tool, reason));
        QCOMPARE(result.failureSummary(), *result.launchError);
        QVERIFY(result.text.isEmpty());
        QVERIFY(result.stdoutData.isEmpty());
        QVERIFY(!result.timedOut);
        QVERIFY(!result.cancelled);
        QVERIFY(!called);
    }

    void timeOutTerminatesTheChild()
    {
        QElapsedTimer clock;
        clock.start();
        const ProcessResult result = runShell(QStringLiteral("echo begun; exec sleep 10"), 0.5);
        QVERIFY2(clock.elapsed() < 5000, "the time-out should end the child well before it ends by itself");
        QVERIFY(result.timedOut);
        QCOMPARE(result.status, 15);
        QCOMPARE(result.text, QStringLiteral("begun\n"));
        QCOMPARE(result.failureSummary(), QStringLiteral("The command did not finish in time."));
    }

    void timeOutsBeyondTheTimer_data()
    {
        QTest::addColumn<double>("timeout");
        QTest::newRow("beyond int milliseconds") << 3e6;
        QTest::newRow("huge") << 1e300;
        QTest::newRow("infinity") << std::numeric_limits<double>::infinity();
        QTest::newRow("NaN") << std::numeric_limits<double>::quiet_NaN();
    }

    // A time-out too large for the timer is no practical limit: the child runs to its end.
    void timeOutsBeyondTheTimer()
    {
        QFETCH(double, timeout);
        const ProcessResult result = runShell(QStringLiteral("sleep 0.3; echo done"), timeout);
        QVERIFY(result.isClean());
        QCOMPARE(result.text, QStringLiteral("done\n"));
    }

    void timeOutAfterTheEndDoesNothing()
    {
        const ProcessResult result = runShell(QStringLiteral("exit 0"), 0.2);
        QVERIFY(!result.timedOut);
        QVERIFY(result.isClean());
        QTest::qWait(400); // the deadline passing later must not touch anything
    }

    void cancelBeforeTheChildIsAttached()
    {
        RunningJob job;
        job.cancel();
        QElapsedTimer clock;
        clock.start();
        const ProcessResult result
            = runShell(QStringLiteral("exec sleep 10"), std::nullopt, std::nullopt, &job);
        QVERIFY(clock.elapsed() < 5000);
        QVERIFY(result.cancelled);
        QCOMPARE(result.status, 15);
        QCOMPARE(result.failureSummary(), QStringLiteral("Cancelled."));
    }

    void cancelWhileRunning()
    {
        RunningJob job;
        QTimer::singleShot(200, &job, &RunningJob::cancel);
        const ProcessResult result
            = runShell(QStringLiteral("echo working; exec sleep 10"), std::nullopt, std::nullopt, &job);
        QVERIFY(result.cancelled);
        QVERIFY(!result.timedOut);
        QCOMPARE(result.text, QStringLiteral("working\n"));
    }

    void grandchildHoldingThePipes()
    {
        QElapsedTimer clock;
        clock.start();
        const ProcessResult result = runShell(QStringLiteral("sleep 10 & echo parent done"));
        QVERIFY2(clock.elapsed() < 3000, "the result must not wait for the grandchild");
        QCOMPARE(result.status, 0);
        QCOMPARE(result.text, QStringLiteral("parent done\n"));
    }

    void standardInput_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<std::optional<QString>>("input");
        QTest::addColumn<QString>("text");

        QTest::newRow("read then closed")
            << "cat" << std::optional<QString>(QStringLiteral("y\ny\n")) << "y\ny\n";
        QTest::newRow("UTF-8 input") << "cat" << std::optional<QString>(QStringLiteral("grüß\n")) << "grüß\n";
        QTest::newRow("no input is the null device")
            << "cat; echo end" << std::optional<QString>() << "end\n";
        QTest::newRow("never read") << "echo ignored the input"
                                    << std::optional<QString>(QString(1 << 20, QLatin1Char('n')))
                                    << "ignored the input\n";
    }

    void standardInput()
    {
        QFETCH(QString, script);
        QFETCH(std::optional<QString>, input);
        QFETCH(QString, text);

        const ProcessResult result = runShell(script, 10.0, input);
        QCOMPARE(result.status, 0);
        QCOMPARE(result.text, text);
    }

    void environmentIsExactlyTheGivenOne()
    {
        QProcessEnvironment env;
        env.insert(QStringLiteral("ONLY"), QStringLiteral("this"));
        const ProcessResult result = QCoro::waitFor(ToolRunner::run(QStringLiteral("/usr/bin/env"), {}, env));
        QCOMPARE(result.text, QStringLiteral("ONLY=this\n"));
    }

    void argumentsReachTheChildUnchanged()
    {
        const QStringList args = {QStringLiteral("-c"), QStringLiteral("printf '%s|' \"$@\""),
            QStringLiteral("sh"), QStringLiteral("two words"), QStringLiteral("$HOME"),
            QStringLiteral("; rm -rf /"), QString()};
        const ProcessResult result
            = QCoro::waitFor(ToolRunner::run(QStringLiteral("/bin/sh"), args, plainEnvironment()));
        QCOMPARE(result.text, QStringLiteral("two words|$HOME|; rm -rf /||"));
    }
};

QTEST_GUILESS_MAIN(TestToolRunner)
#include "tst_toolrunner.moc"
