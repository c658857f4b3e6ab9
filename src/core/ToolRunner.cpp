#include "ToolRunner.h"

#include "RunningJob.h"

#include <QDir>
#include <QProcess>
#include <QTimer>

#include <cerrno>
#include <coroutine>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <unistd.h>

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

// Appends in place. QByteArray's own append copies the whole array each time it outgrows its block, which
// for a tool's long output means copying tens of megabytes in one event-loop turn; growing by resize()
// lets the allocator extend the block instead.
void appendBytes(QByteArray &to, const QByteArray &bytes)
{
    const qsizetype held = to.size();
    to.resize(held + bytes.size());
    std::memcpy(to.data() + held, bytes.constData(), size_t(bytes.size()));
}

// The next slice of the channel being read, extended to the end of a character it would otherwise cut
// (at most three more bytes), so that slicing never changes the decoded text.
QByteArray nextSlice(QProcess &process)
{
    QByteArray bytes = process.read(ToolRunner::outputSlice);
    char next = 0;
    for (int more = 0; more < 3 && process.peek(&next, 1) == 1 && (uchar(next) & 0xC0) == 0x80; ++more)
        bytes += process.read(1);
    return bytes;
}

// The error of opening as many descriptors as a run needs for its pipes, or 0 when that works.
int descriptorShortage()
{
    constexpr int needed = 8;
    int opened[needed];
    int count = 0;
    int error = 0;
    for (; count < needed; ++count) {
        opened[count] = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        if (opened[count] < 0) {
            error = errno;
            break;
        }
    }
    for (int i = 0; i < count; ++i)
        ::close(opened[i]);
    return error == EMFILE || error == ENFILE ? error : 0;
}

} // namespace

namespace ToolRunner {

QString launchFailureReason(const QProcess &process)
{
    // QProcess names the system's reason only when the program itself could not be run; when the run
    // could not even be set up (no descriptors left for its pipes) it says nothing useful, so the
    // system is asked directly.
    if (const int error = descriptorShortage())
        return QString::fromLocal8Bit(std::strerror(error));
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
    if (!QDir::isAbsolutePath(tool)) {
        // Never looked up in a search path: a relative name could run anything.
        co_return ProcessResult::refused(
            QStringLiteral("Could not start %1: not an absolute path").arg(tool));
    }
    ProcessResult result;
    QProcess process;
    process.setProgram(tool);
    process.setArguments(args);
    process.setProcessEnvironment(env);
    if (!input)
        process.setStandardInputFile(QProcess::nullDevice());

    // Each read is decoded on its own, so a character whose bytes two reads split stands as replacement
    // characters in the text; the exact bytes of standard output are in stdoutData.
    const auto collect = [&](QByteArray bytes, bool isStdout) {
        if (bytes.isEmpty())
            return;
        if (isStdout)
            appendBytes(result.stdoutData, bytes);
        const QString chunk = QString::fromUtf8(bytes);
        result.text += chunk;
        if (onOutput)
            onOutput(chunk);
    };
    const auto readChannel = [&](QProcess::ProcessChannel channel) {
        process.setReadChannel(channel);
        while (process.bytesAvailable() > 0)
            collect(nextSlice(process), channel == QProcess::StandardOutput);
    };
    QObject::connect(&process, &QProcess::readyReadStandardOutput, &process,
        [&] { readChannel(QProcess::StandardOutput); });
    QObject::connect(
        &process, &QProcess::readyReadStandardError, &process, [&] { readChannel(QProcess::StandardError); });
    bool failedToStart = false;
    QObject::connect(&process, &QProcess::errorOccurred, &process, [&](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            failedToStart = true;
    });

    process.start();
    // A run that could not be set up ends before it began, without a word from QProcess.
    if (process.state() == QProcess::NotRunning)
        failedToStart = true;

    QTimer deadline;
    if (!failedToStart) {
        if (job)
            job->attach(&process);
        if (input) {
            process.write(input->toUtf8());
            process.closeWriteChannel();
        }
        // A time-out the timer cannot hold (or NaN) is no practical limit.
        const double milliseconds = timeout.value_or(std::numeric_limits<double>::quiet_NaN()) * 1000;
        if (milliseconds < double(std::numeric_limits<int>::max())) {
            deadline.setSingleShot(true);
            QObject::connect(&deadline, &QTimer::timeout, &process, [&] {
                if (process.state() == QProcess::NotRunning)
                    return;
                result.timedOut = true;
                process.terminate();
            });
            deadline.start(milliseconds > 0 ? int(milliseconds) : 0);
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
    readChannel(QProcess::StandardOutput);
    readChannel(QProcess::StandardError);
    result.status = process.exitCode();
    result.cancelled = job && job->isCancelled();
    co_return result;
}

} // namespace ToolRunner
