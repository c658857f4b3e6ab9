#include "ToolRunner.h"

#include "RunningJob.h"

#include <QProcess>
#include <QTimer>

#include <coroutine>

namespace {

// Resumes the awaiting coroutine once the process has ended (or failed to start). The resumption is
// queued, so it happens after QProcess has finished its own bookkeeping.
struct ProcessEnd
{
    QProcess *process;

    bool await_ready() const { return process->state() == QProcess::NotRunning; }
    void await_suspend(std::coroutine_handle<> awaiting) const
    {
        auto connection = std::make_shared<QMetaObject::Connection>();
        *connection = QObject::connect(process, &QProcess::stateChanged, process,
            [process = process, awaiting, connection](QProcess::ProcessState state) {
                if (state != QProcess::NotRunning)
                    return;
                QObject::disconnect(*connection);
                QMetaObject::invokeMethod(
                    process, [awaiting] { awaiting.resume(); }, Qt::QueuedConnection);
            });
    }
    void await_resume() const { }
};

} // namespace

namespace ToolRunner {

QString launchFailureReason(const QProcess &process)
{
    QString reason = process.errorString();
    const qsizetype colon = reason.lastIndexOf(QStringLiteral(": "));
    if (colon >= 0)
        reason = reason.mid(colon + 2);
    return reason;
}

QCoro::Task<ProcessResult> run(QString tool, QStringList args, QProcessEnvironment env,
    std::optional<double> timeout, std::optional<QString> input, QPointer<RunningJob> job,
    OutputSink onOutput)
{
    ProcessResult result;
    QProcess process;
    process.setProgram(tool);
    process.setArguments(args);
    process.setProcessEnvironment(env);
    if (!input)
        process.setStandardInputFile(QProcess::nullDevice());

    const auto collect = [&](QByteArray bytes, bool isStdout) {
        if (bytes.isEmpty())
            return;
        const QString chunk = QString::fromUtf8(bytes);
        result.text += chunk;
        if (isStdout)
            result.stdoutData += bytes;
        if (onOutput)
            onOutput(chunk);
    };
    QObject::connect(&process, &QProcess::readyReadStandardOutput, &process,
        [&] { collect(process.readAllStandardOutput(), true); });
    QObject::connect(&process, &QProcess::readyReadStandardError, &process,
        [&] { collect(process.readAllStandardError(), false); });
    bool failedToStart = false;
    QObject::connect(&process, &QProcess::errorOccurred, &process, [&](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            failedToStart = true;
    });

    process.start();

    QTimer deadline;
    if (!failedToStart) {
        if (job)
            job->attach(&process);
        if (input) {
            process.write(input->toUtf8());
            process.closeWriteChannel();
        }
        if (timeout) {
            deadline.setSingleShot(true);
            QObject::connect(&deadline, &QTimer::timeout, &process, [&] {
                if (process.state() == QProcess::NotRunning)
                    return;
                result.timedOut = true;
                process.terminate();
            });
            deadline.start(std::max(0, int(*timeout * 1000)));
        }
        co_await ProcessEnd {&process};
    }

    if (failedToStart) {
        co_return ProcessResult::refused(
            QStringLiteral("Could not start %1: %2").arg(tool, launchFailureReason(process)));
    }
    deadline.stop();
    // Whatever the child left in the pipes before it ended belongs to the run; a grandchild's later output
    // does not.
    collect(process.readAllStandardOutput(), true);
    collect(process.readAllStandardError(), false);
    result.status = process.exitCode();
    result.cancelled = job && job->isCancelled();
    co_return result;
}

} // namespace ToolRunner
