#include "JobRunner.h"

#include "AndroidTools.h"
#include "ToolRunner.h"

#include <QCoro/QCoroTimer>

JobRunner::JobRunner(QObject *parent)
    : QObject(parent)
    , m_lines(new LogLines(this))
    , m_queue(new ChunkQueue([this](const QStringList &lines) { addLines(lines); }, this))
{
    for (auto signal : {&JobRunner::titleChanged, &JobRunner::linesChanged, &JobRunner::progressChanged,
             &JobRunner::isRunningChanged, &JobRunner::jobChanged})
        connect(this, signal, this, &JobRunner::changed);
}

QCoro::Task<ProcessResult> JobRunner::run(
    QString title, QString executable, QStringList arguments, std::optional<QString> input)
{
    if (m_isRunning)
        co_return ProcessResult::refused(QStringLiteral("Another install is already running."));

    setRunning(true);
    setTitle(title);
    setProgress(std::nullopt);
    m_queue->clear();
    m_lastWasProgress = false;
    m_lines->reset({QStringLiteral("$ ") + (QStringList {executable} + arguments).join(QLatin1Char(' '))});
    Q_EMIT linesChanged();
    auto *job = new RunningJob(this);
    setJob(job);

    QPointer<JobRunner> self(this);
    ToolRunner::OutputSink sink = [self](const QString &chunk) {
        if (self)
            self->m_queue->push(chunk);
    };
    // Arguments are built before the await: GCC 12 destroys temporaries of an awaited call twice.
    auto running = ToolRunner::run(
        executable, arguments, AndroidTools::environment(), std::nullopt, input, job, std::move(sink));
    const ProcessResult result = co_await std::move(running);
    if (!self)
        co_return result;
    // What is still queued reaches the log, a turn at a time, before the closing line.
    while (!m_queue->isEmpty()) {
        auto pause = QCoro::sleepFor(std::chrono::milliseconds(1));
        co_await std::move(pause);
        if (!self)
            co_return result;
    }

    if (const auto rest = m_queue->flush())
        addLines({*rest});

    // The closing line is written as it is: it never merges with a progress line and never trims.
    if (result.launchError) {
        m_lines->append({*result.launchError});
        Q_EMIT linesChanged();
    } else if (result.cancelled) {
        m_lines->append({QStringLiteral("Cancelled.")});
        Q_EMIT linesChanged();
    } else if (!result.timedOut && result.status == 0) {
        setProgress(1.0);
    } else {
        m_lines->append({QStringLiteral("Finished with exit status %1.").arg(result.status)});
        Q_EMIT linesChanged();
    }

    setRunning(false);
    setJob(nullptr);
    job->deleteLater();
    co_return result;
}

void JobRunner::addLines(const QStringList &lines)
{
    const qsizetype existing = m_lines->count();
    QStringList added;
    std::optional<QString> newLast; // replaces the last line the log already holds
    qsizetype dropped = 0; // from the front of the existing lines, then of the added ones
    std::optional<int> lastPercent;
    for (const QString &line : lines) {
        const auto percent = percentValue(line);
        const bool progressLine = percent
            && ((line.contains(QLatin1Char('[')) && line.contains(QLatin1Char(']')))
                || line.contains(QLatin1String("Downloading")));
        if (percent)
            lastPercent = percent;
        if (progressLine && m_lastWasProgress && existing + added.size() - dropped > 0) {
            if (added.isEmpty())
                newLast = line;
            else
                added.last() = line;
        } else {
            added.append(line);
            m_lastWasProgress = progressLine;
        }
        if (existing + added.size() - dropped > maxLines)
            dropped += trimmedLines;
    }

    if (lastPercent)
        setProgress(*lastPercent / 100.0);
    if (newLast)
        m_lines->replaceLast(*newLast);
    const qsizetype fromExisting = std::min(dropped, existing);
    m_lines->dropFirst(fromExisting);
    m_lines->append(added.mid(dropped - fromExisting));
    Q_EMIT linesChanged();
}

void JobRunner::setTitle(const QString &title)
{
    m_title = title;
    Q_EMIT titleChanged();
}

void JobRunner::setProgress(std::optional<double> progress)
{
    m_progress = progress;
    Q_EMIT progressChanged();
}

void JobRunner::setRunning(bool running)
{
    m_isRunning = running;
    Q_EMIT isRunningChanged();
}

void JobRunner::setJob(RunningJob *job)
{
    m_job = job;
    Q_EMIT jobChanged();
}
