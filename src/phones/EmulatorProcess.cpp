#include "EmulatorProcess.h"

#include "AndroidTools.h"
#include "OutputPipe.h"
#include "ProcessResult.h"
#include "ToolRunner.h"

#include <QRegularExpression>
#include <QTimer>

#include <QCoro/QCoroTimer>

#include <algorithm>

#include <unistd.h>

namespace {

EmulatorProcess::Timing &currentTiming()
{
    static EmulatorProcess::Timing timing;
    return timing;
}

bool answered(const ProcessResult &result, QLatin1String answer)
{
    return result.isClean() && result.text.trimmed() == answer;
}

qint64 roundedSeconds(qint64 ms)
{
    return (ms + 500) / 1000;
}

} // namespace

const EmulatorProcess::Timing &EmulatorProcess::timing()
{
    return currentTiming();
}

void EmulatorProcess::setTiming(const Timing &timing)
{
    currentTiming() = timing;
}

EmulatorProcess::EmulatorProcess(const QString &name, QObject *parent)
    : QObject(parent)
    , m_name(name)
    , m_lines(new LogLines(this))
    , m_queue(new ChunkQueue([this](const QStringList &lines) { appendLines(lines); }, this))
{
    for (auto signal :
        {&EmulatorProcess::stateChanged, &EmulatorProcess::linesChanged, &EmulatorProcess::failureChanged,
            &EmulatorProcess::portChanged, &EmulatorProcess::timelineChanged})
        connect(this, signal, this, &EmulatorProcess::changed);
}

EmulatorProcess::~EmulatorProcess()
{
    if (!m_process || m_process->state() == QProcess::NotRunning)
        return;
    // Deleting the handle would kill the emulator. It is let go instead and deletes itself once the
    // emulator ends.
    QProcess *process = m_process;
    process->disconnect(this);
    process->setParent(nullptr);
    connect(process, &QProcess::finished, process, &QObject::deleteLater);
    // Its pipes go with it and keep reading, which keeps the emulator from blocking on a full pipe; what
    // they read reaches nobody.
}

QString EmulatorProcess::stateName() const
{
    switch (m_state) {
    case State::Stopped:
        return QStringLiteral("Stopped");
    case State::Starting:
        return QStringLiteral("Starting");
    case State::Booting:
        return QStringLiteral("Booting");
    case State::Running:
        return QStringLiteral("Running");
    case State::Stopping:
        return QStringLiteral("Stopping");
    }
    Q_UNREACHABLE();
}

void EmulatorProcess::start(QString emulator, int port, StartOptions options)
{
    if (m_state != State::Stopped)
        return;
    setPort(port);
    setFailure(std::nullopt);
    m_queue->clear();
    m_stdoutText.resetState();
    m_stderrText.resetState();

    const QStringList arguments
        = QStringList {QStringLiteral("-avd"), m_name, QStringLiteral("-port"), QString::number(port)}
        + options.arguments();
    // The log names the tool, not where it is installed.
    m_lines->reset({QStringLiteral("$ emulator ") + arguments.join(QLatin1Char(' '))});
    Q_EMIT linesChanged();

    auto *process = new QProcess(this);
    process->setProgram(emulator);
    process->setArguments(arguments);
    process->setProcessEnvironment(AndroidTools::environment());
    process->setStandardInputFile(QProcess::nullDevice());
    // The output goes into pipes of our own, which outlast the emulator: what it (or a child of it)
    // writes just after its end still belongs to the log.
    auto *stdoutPipe = new OutputPipe(process);
    auto *stderrPipe = new OutputPipe(process);
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->setChildProcessModifier([stdoutPipe, stderrPipe] {
        stdoutPipe->attachInChild(STDOUT_FILENO);
        stderrPipe->attachInChild(STDERR_FILENO);
    });
    connect(stdoutPipe, &OutputPipe::received, this,
        [this](const QByteArray &bytes) { read(m_stdoutText, bytes); });
    connect(stderrPipe, &OutputPipe::received, this,
        [this](const QByteArray &bytes) { read(m_stderrText, bytes); });
    connect(process, &QProcess::finished, this, [this, stdoutPipe, stderrPipe](int status) {
        QTimer::singleShot(currentTiming().endDelay, this, [this, status, stdoutPipe, stderrPipe] {
            // Output that comes later, from a grandchild holding the pipes, is not this run's.
            m_process->disconnect(this);
            for (OutputPipe *pipe : {stdoutPipe, stderrPipe}) {
                pipe->readNow();
                delete pipe;
            }
            // A line break completes no UTF-8 sequence, so decoding one makes each decoder give up a
            // character the stream cut short, as U+FFFD. The streams end here: the break only ends the
            // unfinished line, as the flush at the end would.
            read(m_stdoutText, QByteArrayLiteral("\n"));
            read(m_stderrText, QByteArrayLiteral("\n"));
            finishWhenDrained(status);
        });
    });
    const QString pipeError = stdoutPipe->error().isEmpty() ? stderrPipe->error() : stdoutPipe->error();
    if (pipeError.isEmpty())
        process->start();
    // Blocks only as long as the exec takes: a launch failure must leave the phone stopped, never starting.
    if (!pipeError.isEmpty() || !process->waitForStarted()) {
        setFailure(QStringLiteral("Could not start the emulator: ")
            + (pipeError.isEmpty() ? ToolRunner::launchFailureReason(*process) : pipeError));
        // Nothing of this run may reach the phone once its handle is gone.
        process->disconnect(this);
        delete process;
        return;
    }
    stdoutPipe->closeWriteEnd();
    stderrPipe->closeWriteEnd();
    m_process = process;
    startTimeline();
    setState(State::Starting);
    startPolling();
}

void EmulatorProcess::stop()
{
    stopTask();
}

QCoro::Task<> EmulatorProcess::stopTask()
{
    if (m_state == State::Stopped || m_state == State::Stopping)
        co_return;
    setState(State::Stopping);
    cancelPolling();

    QPointer<EmulatorProcess> self(this);
    // The run being stopped; a later start brings a process of its own that this stop must not touch.
    const QPointer<QProcess> process = m_process;
    const Timing timing = currentTiming();
    const QStringList arguments {QStringLiteral("emu"), QStringLiteral("kill")};
    const QString serial = this->serial();
    auto killing = AndroidTools::runADB(arguments, serial, timing.adbTimeout);
    const ProcessResult result = co_await std::move(killing);
    if (!self)
        co_return;
    if (!result.isClean()) {
        m_queue->pushLine(QStringLiteral("adb emu kill did not succeed: ")
            + result.launchError.value_or(result.text.trimmed()));
    }

    for (int round = 0; round < timing.stopWaitRounds; ++round) {
        if (!process || m_process != process)
            co_return;
        auto sleeping = QCoro::sleepFor(timing.stopWaitStep);
        co_await std::move(sleeping);
        if (!self)
            co_return;
    }
    if (process && m_process == process && process->state() != QProcess::NotRunning) {
        m_queue->pushLine(
            QStringLiteral("The emulator did not exit within 10 seconds; terminating the process."));
        // The end arrives as for any other exit; the state is stopping, so no failure is recorded.
        process->terminate();
    }
}

bool EmulatorProcess::slowBoot() const
{
    return (m_state == State::Starting || m_state == State::Booting) && m_sinceLaunch
        && *m_sinceLaunch >= currentTiming().slowBootAfter.count();
}

QVariant EmulatorProcess::secondsSoFarVariant() const
{
    return m_sinceLaunch ? QVariant(roundedSeconds(*m_sinceLaunch)) : QVariant();
}

void EmulatorProcess::startTimeline()
{
    m_launchClock.start();
    m_sinceLaunch = 0;
    m_seenAfter.reset();
    m_bootedAfter.reset();
    Q_EMIT timelineChanged();
}

void EmulatorProcess::noteTime(std::optional<qint64> *mark)
{
    m_sinceLaunch = m_launchClock.elapsed();
    if (mark)
        *mark = m_sinceLaunch;
    Q_EMIT timelineChanged();
}

void EmulatorProcess::setState(State state)
{
    m_state = state;
    Q_EMIT stateChanged();
}

void EmulatorProcess::setFailure(std::optional<QString> failure, const QString &cause)
{
    m_failure = std::move(failure);
    m_failureCause = cause;
    Q_EMIT failureChanged();
}

void EmulatorProcess::setPort(int port)
{
    m_port = port;
    Q_EMIT portChanged();
}

qsizetype EmulatorProcess::linesToDrop(qsizetype count)
{
    // A large block at a time keeps trimming rare.
    return count > maxLines ? std::max<qsizetype>(trimmedLines, count - linesAfterDrain) : 0;
}

void EmulatorProcess::appendLines(const QStringList &lines)
{
    if (lines.isEmpty())
        return;
    const qsizetype existing = m_lines->count();
    const qsizetype dropped = linesToDrop(existing + lines.size());
    const qsizetype fromExisting = std::min(dropped, existing);
    m_lines->dropFirst(fromExisting);
    // Lines that would go at once are never added.
    m_lines->append(dropped > fromExisting ? lines.mid(dropped - fromExisting) : lines);
    Q_EMIT linesChanged();
}

void EmulatorProcess::read(QStringDecoder &decoder, const QByteArray &bytes)
{
    const QString text = decoder.decode(bytes);
    if (!text.isEmpty())
        m_queue->push(text);
}

void EmulatorProcess::startPolling()
{
    cancelPolling();
    m_pollCancelled = std::make_shared<bool>(false);
    poll(m_pollCancelled, serial());
}

void EmulatorProcess::cancelPolling()
{
    if (m_pollCancelled)
        *m_pollCancelled = true;
    m_pollCancelled.reset();
}

QCoro::Task<> EmulatorProcess::poll(std::shared_ptr<bool> cancelled, QString serial)
{
    QPointer<EmulatorProcess> self(this);
    const Timing timing = currentTiming();
    const QStringList getState {QStringLiteral("get-state")};
    const QStringList bootCompleted {
        QStringLiteral("shell"), QStringLiteral("getprop"), QStringLiteral("sys.boot_completed")};
    const auto over = [&] { return *cancelled || !self; };

    while (!over() && m_state != State::Stopped && m_state != State::Stopping) {
        noteTime();
        auto askingState = AndroidTools::runADB(getState, serial, timing.adbTimeout);
        const ProcessResult device = co_await std::move(askingState);
        if (over())
            co_return;
        if (device.launchError && !AndroidTools::adbPath()) {
            // Without adb the boot cannot be followed; the emulator runs on regardless.
            setFailure(device.launchError);
            co_return;
        }
        if (answered(device, QLatin1String("device"))) {
            if (m_state == State::Starting) {
                noteTime(&m_seenAfter);
                setState(State::Booting);
            }
            auto askingBoot = AndroidTools::runADB(bootCompleted, serial, timing.adbTimeout);
            const ProcessResult boot = co_await std::move(askingBoot);
            if (over())
                co_return;
            if (answered(boot, QLatin1String("1"))) {
                if (m_state == State::Booting || m_state == State::Starting) {
                    if (!m_seenAfter)
                        noteTime(&m_seenAfter);
                    noteTime(&m_bootedAfter);
                    // Queued, so that it follows every line that came before it.
                    m_queue->pushLine(QStringLiteral("Booted in %1 s; adb saw it after %2 s.")
                                          .arg(roundedSeconds(*m_bootedAfter))
                                          .arg(roundedSeconds(*m_seenAfter)));
                    setState(State::Running);
                }
                co_return;
            }
        }
        auto sleeping = QCoro::sleepFor(timing.bootPollInterval);
        co_await std::move(sleeping);
    }
}

void EmulatorProcess::finishWhenDrained(int status)
{
    if (!m_queue->isEmpty()) {
        QTimer::singleShot(1, this, [this, status] { finishWhenDrained(status); });
        return;
    }
    processEnded(status);
}

void EmulatorProcess::processEnded(int status)
{
    if (const auto rest = m_queue->flush())
        appendLines({*rest});
    cancelPolling();

    const State previous = m_state;
    m_process->deleteLater();
    m_process = nullptr;
    if (previous != State::Stopping) {
        if (status != 0) {
            const QStringList &all = lines();
            const QStringList last = all.mid(std::max<qsizetype>(0, all.size() - 15));
            // The first of its own error lines says why; those after it tend to say only that it gave up.
            static const QRegularExpression error(QStringLiteral("^\\s*(?:(?:ERROR|FATAL)\\s*\\||PANIC:)"));
            const auto cause = std::find_if(
                last.begin(), last.end(), [](const QString &line) { return error.match(line).hasMatch(); });
            setFailure(QStringLiteral("The emulator exited with status %1.\n\n").arg(status)
                    + last.join(QLatin1Char('\n')),
                cause != last.end() ? cause->simplified() : QString());
        } else if (previous == State::Starting) {
            setFailure(QStringLiteral("The emulator exited before it finished starting."));
        }
    }
    setState(State::Stopped);
}
