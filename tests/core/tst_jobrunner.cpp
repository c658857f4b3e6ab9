#include "DataTable.h"
#include "Host.h"
#include "JobRunner.h"

#include <QTemporaryDir>
#include <QTest>

#include <QCoro/QCoroTask>

#include <climits>
#include <cstdint>

namespace {

const QString shell = QStringLiteral("/bin/sh");

ProcessResult runScript(JobRunner &runner, const QString &script, std::optional<QString> input = std::nullopt)
{
    auto running = runner.run(QStringLiteral("Testing"), shell, {QStringLiteral("-c"), script}, input);
    return QCoro::waitFor(std::move(running));
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
        // script: run by /bin/sh -c, or an absolute path and its arguments; input: empty for none; lines:
        // after the command line; progress: -1 for none
        columns<QString, QString, QStringList, double>("script", "input", "lines", "progress");

        const QString none;
        QTest::newRow("progress bar redraws merge")
            << "printf '[====      ] 40%%\\r[======    ] 60%%\\r[==========] 100%%\\n'" << none
            << QStringList {"[==========] 100%"} << 1.0;
        QTest::newRow("ordinary percentage is its own line")
            << "printf '[==  ] 20%%\\nUnzipping 50%%\\n[====] 70%%\\n[=====] 80%%\\n'; exit 2" << none
            << QStringList {"[==  ] 20%", "Unzipping 50%", "[=====] 80%", "Finished with exit status 2."}
            << 0.8;
        QTest::newRow("Downloading counts as progress") << "printf 'Downloading 10%%\\rDownloading 90%%\\n'"
                                                        << none << QStringList {"Downloading 90%"} << 1.0;
        QTest::newRow("Homebrew's hash bar redraws merge")
            << "printf '\\r####       12.5%%\\r########   50.0%%\\n'; exit 1" << none
            << QStringList {"########   50.0%", "Finished with exit status 1."} << 0.5;
        // sdkmanager fills its bar once while it reads the catalog, before any download.
        QTest::newRow("reading the catalog is no progress")
            << "printf '[===      ] 25%% Fetch remote repository... \\r[=========] 100%% Computing "
               "updates... \\r'; "
               "exit 1"
            << none << QStringList {"[=========] 100% Computing updates... ", "Finished with exit status 1."}
            << -1.0;
        QTest::newRow("failure keeps the last progress")
            << "printf '[=====     ] 50%%\\n'; exit 1" << none
            << QStringList {"[=====     ] 50%", "Finished with exit status 1."} << 0.5;
        QTest::newRow("unfinished last line is flushed")
            << "printf 'first\\nlast'" << none << QStringList {"first", "last"} << 1.0;
        QTest::newRow("both streams interleave") << "echo out; sleep 0.1; echo err >&2; sleep 0.1; echo out2"
                                                 << none << QStringList {"out", "err", "out2"} << 1.0;
        QTest::newRow("input reaches the tool") << "read answer; echo \"answer: $answer\""
                                                << "y\n"
                                                << QStringList {"answer: y"} << 1.0;
        const QString missing = m_root.filePath(QStringLiteral("brew"));
        QTest::newRow("launch error closes the log")
            << missing + " install" << none
            << QStringList {QStringLiteral("Could not start %1: No such file or directory").arg(missing)}
            << -1.0;
    }

    void logs()
    {
        auto [script, input, lines, progress]
            = row<QString, QString, QStringList, double>("script", "input", "lines", "progress");

        JobRunner runner;
        const bool program = script.startsWith(QLatin1Char('/'));
        const QStringList arguments
            = program ? script.split(QLatin1Char(' ')).mid(1) : QStringList {QStringLiteral("-c"), script};
        const QString executable = program ? script.section(QLatin1Char(' '), 0, 0) : shell;
        auto running = runner.run(QStringLiteral("Testing"), executable, arguments,
            input.isEmpty() ? std::nullopt : std::optional(input));
        const ProcessResult result = QCoro::waitFor(std::move(running));
        QCOMPARE(runner.lines(),
            QStringList {QStringLiteral("$ ") + executable + QLatin1Char(' ') + arguments.join(' ')} + lines);
        QCOMPARE(runner.progress().value_or(-1), progress);
        QCOMPARE(runner.title(), QStringLiteral("Testing"));
        QCOMPARE(runner.isRunning(), false);
        QVERIFY(!runner.job());
        QCOMPARE(result.isClean(), progress == 1.0);
    }

    void logIsTrimmed_data()
    {
        // size: with the closing line, if any
        columns<int, int, int, QString>("count", "status", "size", "first");

        // The command line and 3000 lines reach 3001 entries, which drops the oldest 500.
        QTest::newRow("the line that makes 3001") << 3000 << 0 << 2501 << "line 500";
        QTest::newRow("one short of the bound") << 2999 << 0 << 3000 << "$ /bin/sh -c";
        // The closing line is appended as it is, without trimming.
        QTest::newRow("closing line at 3000") << 2999 << 1 << 3001 << "$ /bin/sh -c";
        // A flood arrives in batches; it ends as if its lines had been added one by one.
        QTest::newRow("flood") << 20000 << 3 << 2502 << "line 17500";
    }

    void logIsTrimmed()
    {
        auto [count, status, size, first] = row<int, int, int, QString>("count", "status", "size", "first");

        JobRunner runner;
        runScript(runner,
            QStringLiteral("awk 'BEGIN { for (i = 1; i <= %1; i++) print \"line \" i }'; exit %2")
                .arg(count)
                .arg(status));
        const QStringList &lines = runner.lines();
        QCOMPARE(lines.size(), size);
        QVERIFY2(lines.first().startsWith(first), qPrintable(lines.first()));
        QCOMPARE(lines.at(lines.size() - (status ? 2 : 1)), QStringLiteral("line %1").arg(count));
        if (status)
            QCOMPARE(lines.last(), QStringLiteral("Finished with exit status %1.").arg(status));
        QCOMPARE(runner.lineModel()->textBetween(0, 0, INT64_MAX, INT_MAX), lines.join(QLatin1Char('\n')));
    }

    // Refused while one runs, with nothing touched; the next run replaces the log and its progress.
    void secondRunIsRefused()
    {
        JobRunner runner;
        auto first = runner.run(QStringLiteral("First"), shell,
            {QStringLiteral("-c"), QStringLiteral("echo started; printf '[=] 50%%\\n'; sleep 0.3; exit 4")});
        QTRY_COMPARE(runner.lines().size(), 3);
        const QStringList before = runner.lines();

        auto second = runner.run(QStringLiteral("Second"), shell, {});
        const ProcessResult refused = QCoro::waitFor(std::move(second));
        QCOMPARE(refused.status, -1);
        QCOMPARE(refused.launchError, QStringLiteral("Another install is already running."));
        QCOMPARE(runner.title(), QStringLiteral("First"));
        QCOMPARE(runner.lines(), before);
        QCOMPARE(runner.progress(), 0.5);
        QVERIFY(runner.isRunning());

        QCOMPARE(QCoro::waitFor(std::move(first)).status, 4);
        QCOMPARE(runner.lines().last(), QStringLiteral("Finished with exit status 4."));
        runScript(runner, QStringLiteral("echo again"));
        QCOMPARE(runner.lines(), (QStringList {"$ /bin/sh -c echo again", "again"}));
        QCOMPARE(runner.title(), QStringLiteral("Testing"));
    }
};

QTEST_GUILESS_MAIN(TestJobRunner)
#include "tst_jobrunner.moc"
