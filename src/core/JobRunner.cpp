#include "JobRunner.h"

#include "AndroidTools.h"
#include "ToolRunner.h"

#include <QRegularExpression>

#include <QCoro/QCoroTimer>

#include <algorithm>

namespace {

// One output line as progress: its percentage, whether it is a redrawn bar, and what the bar names.
struct ProgressLine
{
    std::optional<int> percent;
    bool bar = false;
    QString label;
};

ProgressLine readProgress(const QString &line)
{
    // Homebrew's download bar: hashes and a percentage with one decimal, "#####      45.0%".
    static const QRegularExpression hashes(QStringLiteral("^\\s*#*\\s*(\\d{1,3})\\.\\d%\\s*$"));
    if (const auto match = hashes.match(line); match.hasMatch() && match.captured(1).toInt() <= 100)
        return {match.captured(1).toInt(), true, QString()};
    const auto percent = percentValue(line);
    if (!percent)
        return {};
    const bool bar = (line.contains(QLatin1Char('[')) && line.contains(QLatin1Char(']')))
        || line.contains(QLatin1String("Downloading"));
    return {percent, bar, bar ? line.mid(line.lastIndexOf(QLatin1Char('%')) + 1).trimmed() : QString()};
}

// sdkmanager fills its bar while it reads the package catalog, then starts again at 0 for the downloads:
// that first bar says nothing about the install.
bool readsCatalog(const QString &label)
{
    static const QStringList phases
        = {QStringLiteral("Computing updates"), QStringLiteral("Loading local repository"),
            QStringLiteral("Fetch remote repository"), QStringLiteral("Loading package information")};
    return std::any_of(
        phases.begin(), phases.end(), [&](const QString &phase) { return label.startsWith(phase); });
}

// "Installing X" becomes "Installed X"; a title without a known verb just says it finished.
QString doneHeading(const QString &title)
{
    static const QList<std::pair<QString, QString>> verbs
        = {{QStringLiteral("Installing "), QStringLiteral("Installed ")},
            {QStringLiteral("Accepting "), QStringLiteral("Accepted ")},
            {QStringLiteral("Removing "), QStringLiteral("Removed ")}};
    for (const auto &[doing, done] : verbs) {
        if (title.startsWith(doing))
            return done + title.mid(doing.size());
    }
    return title + QStringLiteral(": done");
}

} // namespace

JobRunner::JobRunner(QObject *parent)
    : QObject(parent)
    , m_lines(new LogLines(this))
    , m_queue(new ChunkQueue([this](const QStringList &lines) { addLines(lines); }, this))
{
    for (auto signal : {&JobRunner::titleChanged, &JobRunner::headingChanged, &JobRunner::linesChanged,
             &JobRunner::progressChanged, &JobRunner::isRunningChanged, &JobRunner::jobChanged})
        connect(this, signal, this, &JobRunner::changed);
}

QCoro::Task<ProcessResult> JobRunner::run(
    QString title, QString executable, QStringList arguments, std::optional<QString> input)
{
    if (m_isRunning)
        co_return ProcessResult::refused(QStringLiteral("Another install is already running."));

    setRunning(true);
    setTitle(title);
    setHeading(title);
    m_lastStep.clear();
    setProgress(std::nullopt, QString());
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
        setHeading(title + QStringLiteral(" failed"));
    } else if (result.cancelled) {
        m_lines->append({QStringLiteral("Cancelled.")});
        Q_EMIT linesChanged();
        setHeading(QStringLiteral("Cancelled: ") + title);
    } else if (!result.timedOut && result.status == 0) {
        setProgress(1.0, QString());
        setHeading(doneHeading(title));
    } else {
        m_lines->append({QStringLiteral("Finished with exit status %1.").arg(result.status)});
        Q_EMIT linesChanged();
        setHeading(title + QStringLiteral(" failed"));
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
    bool progressRead = false;
    std::optional<double> progress = m_progress;
    QString progressText = m_progressText;
    for (const QString &line : lines) {
        const ProgressLine read = readProgress(line);
        if (read.percent) {
            progressRead = true;
            const QString label = read.bar && read.label.isEmpty() ? m_lastStep : read.label;
            if (read.bar)
                progressText = label;
            progress = readsCatalog(label) ? std::nullopt : std::optional(*read.percent / 100.0);
        } else if (line.startsWith(QLatin1String("==> "))) {
            m_lastStep = line.mid(4).trimmed();
        }
        if (read.bar && m_lastWasProgress && existing + added.size() - dropped > 0) {
            if (added.isEmpty())
                newLast = line;
            else
                added.last() = line;
        } else {
            added.append(line);
            m_lastWasProgress = read.bar;
        }
        if (existing + added.size() - dropped > maxLines)
            dropped += trimmedLines;
    }

    if (progressRead)
        setProgress(progress, progressText);
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

void JobRunner::setHeading(const QString &heading)
{
    m_heading = heading;
    Q_EMIT headingChanged();
}

void JobRunner::setProgress(std::optional<double> progress, const QString &text)
{
    m_progress = progress;
    m_progressText = text;
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
