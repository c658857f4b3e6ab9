#include "DataTable.h"
#include "RunningJob.h"
#include "TestFiles.h"
#include "ToolRunner.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <QCoro/QCoroTask>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

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
    auto running = ToolRunner::run(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script},
        plainEnvironment(), timeout, input, job, std::move(sink));
    return QCoro::waitFor(std::move(running));
}

} // namespace

class TestToolRunner : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The app ignores SIGPIPE at start; a child that never reads its input must not end the tests.
    void initTestCase() { std::signal(SIGPIPE, SIG_IGN); }

    void runs_data()
    {
        // timeout: 0 for none; cancel: "before" the launch, "on output", or empty
        columns<QString, double, QString, int, QString, QByteArray, QString>(
            "script", "timeout", "cancel", "status", "text", "stdoutData", "summary");

        const QString exited = QStringLiteral("The command exited with status %1.");
        QTest::newRow("silent success") << "exit 0" << 0.0 << "" << 0 << "" << QByteArray() << exited.arg(0);
        QTest::newRow("exit 3") << "echo out; exit 3" << 0.0 << "" << 3 << "out\n"
                                << QByteArray("out\n") << exited.arg(3);
        QTest::newRow("only standard error") << "echo problem >&2; exit 1" << 0.0 << "" << 1 << "problem\n"
                                             << QByteArray() << exited.arg(1);
        QTest::newRow("streams alternate") << "printf a; sleep 0.1; printf b >&2; sleep 0.1; printf c" << 0.0
                                           << "" << 0 << "abc" << QByteArray("ac") << exited.arg(0);
        QTest::newRow("invalid UTF-8") << "printf '\\377ok'" << 0.0 << "" << 0 << QStringLiteral("\uFFFDok")
                                       << QByteArray("\xffok") << exited.arg(0);
        QTest::newRow("a character split between reads")
            << "printf '\\303'; sleep 0.2; printf '\\251'" << 0.0 << "" << 0 << QStringLiteral("\uFFFD\uFFFD")
            << QByteArray("é") << exited.arg(0);
        QTest::newRow("one read of 7000 three-byte characters")
            << "f=$(mktemp); awk 'BEGIN { for (i = 0; i < 7000; i++) printf \"€\" }' >$f; cat $f; rm $f"
            << 0.0 << "" << 0 << QString(7000, u'€') << QString(7000, u'€').toUtf8() << exited.arg(0);
        QTest::newRow("ended by a signal")
            << "kill -TERM $$; sleep 5" << 0.0 << "" << 15 << "" << QByteArray() << exited.arg(15);
        QTest::newRow("time-out") << "echo begun; exec sleep 10" << 0.5 << "" << 15 << "begun\n"
                                  << QByteArray("begun\n") << "The command did not finish in time.";
        QTest::newRow("ends before the time-out") << "sleep 0.3; echo done" << 5.0 << "" << 0 << "done\n"
                                                  << QByteArray("done\n") << exited.arg(0);
        // A time-out too large for the timer is no practical limit.
        for (const double huge :
            {3e6, 1e300, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
            QTest::addRow("time-out %g", huge) << "sleep 0.3; echo done" << huge << "" << 0 << "done\n"
                                               << QByteArray("done\n") << exited.arg(0);
        }
        QTest::newRow("cancel before the launch")
            << "exec sleep 10" << 0.0 << "before" << 15 << "" << QByteArray() << "Cancelled.";
        QTest::newRow("cancel while running")
            << "echo working; exec sleep 10" << 0.0 << "on output" << 15 << "working\n"
            << QByteArray("working\n") << "Cancelled.";
        QTest::newRow("grandchild holding the pipes")
            << "sleep 10 & echo parent done" << 0.0 << "" << 0 << "parent done\n"
            << QByteArray("parent done\n") << exited.arg(0);
    }

    void runs()
    {
        auto [script, timeout, cancel, status, text, stdoutData, summary]
            = row<QString, double, QString, int, QString, QByteArray, QString>(
                "script", "timeout", "cancel", "status", "text", "stdoutData", "summary");

        RunningJob job;
        if (cancel == QLatin1String("before"))
            job.cancel();
        QString streamed;
        QElapsedTimer clock;
        clock.start();
        const ProcessResult result = runShell(script, timeout ? std::optional(timeout) : std::nullopt,
            std::nullopt, &job, [&, cancel = cancel](const QString &chunk) {
                streamed += chunk;
                if (cancel == QLatin1String("on output"))
                    job.cancel();
            });
        // Every ending comes long before a child's own ten seconds.
        QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(result.status, status);
        QCOMPARE(result.text, text);
        QCOMPARE(result.stdoutData, stdoutData);
        QCOMPARE(streamed, text);
        QCOMPARE(result.failureSummary(), summary);
        QCOMPARE(result.launchError, std::nullopt);
        QCOMPARE(result.timedOut, timeout == 0.5);
        QCOMPARE(result.cancelled, !cancel.isEmpty());
        QCOMPARE(result.isClean(), summary == QLatin1String("The command exited with status 0."));
    }

    void launchFailures_data()
    {
        // tool: below a temporary folder unless it is a path or "sh"
        columns<QString, bool, bool, QString>("tool", "create", "noFilesLeft", "reason");

        QTest::newRow("missing") << "nothing-here" << false << false << "No such file or directory";
        QTest::newRow("not executable") << "plain-file" << true << false << "Permission denied";
        // A relative name is never looked up in PATH, not even one that names a real program.
        QTest::newRow("relative name") << "sh" << false << false << "not an absolute path";
        QTest::newRow("no file descriptors left") << "/bin/sh" << false << true << "Too many open files";
    }

    void launchFailures()
    {
        auto [tool, create, noFilesLeft, reason]
            = row<QString, bool, bool, QString>("tool", "create", "noFilesLeft", "reason");

        QTemporaryDir dir;
        if (tool != QLatin1String("sh") && !tool.startsWith(QLatin1Char('/')))
            tool = dir.filePath(tool);
        if (create)
            writeFile(tool, "#!/bin/sh\necho never\n");
        bool called = false;
        RunningJob job;
        rlimit limit {};
        getrlimit(RLIMIT_NOFILE, &limit);
        const rlimit saved = limit;
        if (noFilesLeft) {
            // Only the descriptors already open, and no more.
            limit.rlim_cur = rlim_t(dup(0));
            close(int(limit.rlim_cur));
            setrlimit(RLIMIT_NOFILE, &limit);
        }
        auto running = ToolRunner::run(tool, {QStringLiteral("-c"), QStringLiteral("echo ran")},
            plainEnvironment(), 0.5, QStringLiteral("input"), &job, [&](const QString &) { called = true; });
        const ProcessResult result = QCoro::waitFor(std::move(running));
        setrlimit(RLIMIT_NOFILE, &saved);
        const QString error = QStringLiteral("Could not start %1: %2").arg(tool, reason);
        QCOMPARE(result.launchError, error);
        QCOMPARE(result.failureSummary(), error);
        QCOMPARE(std::tuple(result.status, result.text, result.stdoutData, result.timedOut, result.cancelled),
            std::tuple(-1, QString(), QByteArray(), false, false));
        QVERIFY(!called);
    }

    void standardInput_data()
    {
        // input: null for none
        columns<QString, QVariant, QString>("script", "input", "text");

        QTest::newRow("read then closed") << "cat" << QVariant("y\ny\n") << "y\ny\n";
        QTest::newRow("UTF-8 input") << "cat" << QVariant(QStringLiteral("grüß\n")) << "grüß\n";
        QTest::newRow("no input is the null device") << "cat; echo end" << QVariant() << "end\n";
        QTest::newRow("never read") << "echo ignored the input"
                                    << QVariant(QString(1 << 20, QLatin1Char('n'))) << "ignored the input\n";
    }

    void standardInput()
    {
        auto [script, input, text] = row<QString, QVariant, QString>("script", "input", "text");

        const ProcessResult result
            = runShell(script, 10.0, input.isNull() ? std::nullopt : std::optional(input.toString()));
        QCOMPARE(result.status, 0);
        QCOMPARE(result.text, text);
    }

    // Exactly the given environment and arguments: nothing added, nothing read by a shell.
    void childGetsExactlyItsEnvironmentAndArguments()
    {
        QProcessEnvironment env;
        env.insert(QStringLiteral("ONLY"), QStringLiteral("this"));
        auto running = ToolRunner::run(QStringLiteral("/usr/bin/env"), {}, env);
        QCOMPARE(QCoro::waitFor(std::move(running)).text, QStringLiteral("ONLY=this\n"));

        const QStringList args = {QStringLiteral("-c"), QStringLiteral("printf '%s|' \"$@\""),
            QStringLiteral("sh"), QStringLiteral("two words"), QStringLiteral("$HOME"),
            QStringLiteral("; rm -rf /"), QString()};
        running = ToolRunner::run(QStringLiteral("/bin/sh"), args, plainEnvironment());
        QCOMPARE(QCoro::waitFor(std::move(running)).text, QStringLiteral("two words|$HOME|; rm -rf /||"));
    }
};

QTEST_GUILESS_MAIN(TestToolRunner)
#include "tst_toolrunner.moc"
