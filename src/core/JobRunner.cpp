#include "JobRunner.h"

#include "AndroidTools.h"
#include "ToolRunner.h"

JobRunner::JobRunner(QObject *parent)
    : QObject(parent)
    , m_lines(new LogLines(this))
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
    m_splitter = {};
    m_lastWasProgress = false;
    m_lines->reset({QStringLiteral("$ ") + (QStringList {executable} + arguments).join(QLatin1Char(' '))});
    Q_EMIT linesChanged();
    auto *job = new RunningJob(this);
    setJob(job);

    QPointer<JobRunner> self(this);
    ToolRunner::OutputSink sink = [self](const QString &chunk) {
        if (self)
            self->appendLines(self->m_splitter.feed(chunk));
    };
    // Arguments are built before the await: GCC 12 destroys temporaries of an awaited call twice.
    auto running = ToolRunner::run(
        executable, arguments, AndroidTools::environment(), std::nullopt, input, job, std::move(sink));
    const ProcessResult result = co_await std::move(running);
    if (!self)
        co_return result;

    if (const auto rest = m_splitter.flush())
        addLine(*rest);

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

void JobRunner::appendLines(const QStringList &lines)
{
    for (const QString &line : lines)
        addLine(line);
}

void JobRunner::addLine(const QString &line)
{
    if (const auto percent = percentValue(line)) {
        setProgress(*percent / 100.0);
        const bool progressLine = (line.contains(QLatin1Char('[')) && line.contains(QLatin1Char(']')))
            || line.contains(QLatin1String("Downloading"));
        if (progressLine && m_lastWasProgress && m_lines->count() > 0) {
            m_lines->replaceLast(line);
        } else {
            m_lines->append({line});
            m_lastWasProgress = progressLine;
        }
    } else {
        m_lines->append({line});
        m_lastWasProgress = false;
    }
    if (m_lines->count() > maxLines)
        m_lines->dropFirst(trimmedLines);
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
