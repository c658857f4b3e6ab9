#include "Logcat.h"

#include "AndroidTools.h"
#include "OutputPipe.h"
#include "PhoneShell.h"
#include "ToolRunner.h"

#include <QElapsedTimer>
#include <QPromise>
#include <QSaveFile>
#include <QThreadPool>
#include <QTimer>

#include <QCoro/QCoroFuture>

#include <algorithm>
#include <memory>
#include <unistd.h>

namespace {

Logcat::Timing &currentTiming()
{
    static Logcat::Timing timing;
    return timing;
}

// Where a break in the log is: the phone stopped, restarted, or adb lost it.
const QString breakLine = QStringLiteral("--------- The phone stopped or restarted here.");

// Writes the entries as logcat prints them; the error, or nothing when the file was written.
std::optional<QString> writeEntries(const QString &path, const std::vector<LogcatEntry> &entries)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    for (const LogcatEntry &entry : entries) {
        file.write(entry.text().toUtf8());
        file.write("\n", 1);
    }
    if (!file.commit())
        return file.errorString();
    return std::nullopt;
}

} // namespace

const Logcat::Timing &Logcat::timing()
{
    return currentTiming();
}

void Logcat::setTiming(const Timing &timing)
{
    currentTiming() = timing;
}

Logcat::Logcat(const QString &serial, QObject *parent)
    : QAbstractListModel(parent)
    , m_serial(serial)
    , m_queue(new ChunkQueue([this](const QStringList &lines) { take(lines); }, this))
    , m_retry(new QTimer(this))
{
    // The wait between two questions is a timer of the log's own, so nothing waits on after it is gone.
    m_retry->setSingleShot(true);
    connect(m_retry, &QTimer::timeout, this, [this] { askForPhone(); });
    askForPhone();
}

Logcat::~Logcat()
{
    if (m_process) {
        // logcat is ours alone: it goes with the log.
        m_process->disconnect(this);
        m_process->kill();
        m_process->waitForFinished(1000);
        delete m_process;
    }
}

QString Logcat::stateText() const
{
    switch (m_state) {
    case State::Connecting:
        return QStringLiteral("Waiting for adb to see the phone.");
    case State::Reading:
        return QStringLiteral("Reading the phone's log as it comes.");
    case State::Stopped:
        return QStringLiteral("The phone stopped or restarted. Its log goes on here when it runs again.");
    }
    Q_UNREACHABLE();
}

void Logcat::setState(State state)
{
    m_state = state;
    Q_EMIT stateChanged();
}

void Logcat::setNote(const QString &note)
{
    m_note = note;
    Q_EMIT noteChanged();
}

void Logcat::askForPhone()
{
    askForPhoneTask();
}

void Logcat::askAgainLater()
{
    m_retry->start(currentTiming().reconnectInterval);
}

QCoro::Task<> Logcat::askForPhoneTask()
{
    QPointer<Logcat> self(this);
    auto asking = AndroidTools::runADB({QStringLiteral("get-state")}, m_serial, currentTiming().adbTimeout);
    const ProcessResult result = co_await std::move(asking);
    if (!self)
        co_return;
    if (result.isClean() && result.text.trimmed() == QLatin1String("device"))
        startReading();
    else
        askAgainLater();
}

void Logcat::startReading()
{
    const std::optional<QString> adb = AndroidTools::adbPath();
    if (!adb) {
        askAgainLater();
        return;
    }
    QStringList arguments {QStringLiteral("-s"), m_serial, QStringLiteral("logcat"), QStringLiteral("-v"),
        QStringLiteral("threadtime")};
    // After a break only what is new: the entries held already stay as they are.
    const auto last = std::find_if(m_entries.rbegin(), m_entries.rend(),
        [](const LogcatEntry &entry) { return entry.level != LogcatEntry::None; });
    if (last != m_entries.rend())
        arguments << QStringLiteral("-T") << last->timeText();
    m_decoder.resetState();
    m_queue->clear();
    m_parser.reset();

    auto *process = new QProcess(this);
    process->setProgram(*adb);
    process->setArguments(arguments);
    process->setProcessEnvironment(AndroidTools::environment());
    process->setStandardInputFile(QProcess::nullDevice());
    // Read through a pipe of our own a pipe's worth a turn, as the emulator's output is; adb's complaints
    // ("device offline") belong to the log too.
    auto *pipe = new OutputPipe(process);
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->setChildProcessModifier([pipe] {
        pipe->attachInChild(STDOUT_FILENO);
        pipe->attachInChild(STDERR_FILENO);
    });
    connect(pipe, &OutputPipe::received, this, [this](const QByteArray &bytes) {
        const QString text = m_decoder.decode(bytes);
        if (!text.isEmpty())
            m_queue->push(text);
    });
    connect(process, &QProcess::finished, this, [this, pipe] {
        QTimer::singleShot(currentTiming().endDelay, this, [this, pipe] {
            pipe->readNow();
            delete pipe;
            m_process->disconnect(this);
            m_process->deleteLater();
            m_process = nullptr;
            finishWhenDrained();
        });
    });
    if (pipe->error().isEmpty())
        process->start();
    if (!pipe->error().isEmpty() || !process->waitForStarted()) {
        setNote(QStringLiteral("Could not start adb logcat: ")
            + (pipe->error().isEmpty() ? ToolRunner::launchFailureReason(*process) : pipe->error()));
        process->disconnect(this);
        delete process;
        askAgainLater();
        return;
    }
    pipe->closeWriteEnd();
    m_process = process;
    setState(State::Reading);
}

void Logcat::finishWhenDrained()
{
    if (!m_queue->isEmpty()) {
        QTimer::singleShot(1, this, [this] { finishWhenDrained(); });
        return;
    }
    readingEnded();
}

void Logcat::readingEnded()
{
    if (const auto rest = m_queue->flush())
        take({*rest});
    take({breakLine});
    setState(State::Stopped);
    askAgainLater();
}

void Logcat::take(const QStringList &lines)
{
    LogcatParser::Batch batch = m_parser.parse(lines);
    if (!batch.continuation.isEmpty() && !m_entries.empty()) {
        m_entries.back().message += batch.continuation;
        if (!m_rows.empty() && m_rows.back() == endNumber() - 1) {
            const QModelIndex last = index(count() - 1);
            Q_EMIT dataChanged(last, last, {MessageRole});
        }
    }
    for (LogcatEntry &entry : batch.entries)
        add(std::move(entry));
    trim();
    if (!m_paused && !m_scan) {
        std::vector<qint64> fresh;
        int crashes = 0;
        for (qint64 number = std::max(m_shownEnd, m_firstNumber); number < endNumber(); ++number) {
            const LogcatEntry &shown = entry(number);
            if (m_filter.matches(shown)) {
                fresh.push_back(number);
                crashes += shown.crash;
            }
        }
        m_shownEnd = endNumber();
        if (!fresh.empty()) {
            beginInsertRows({}, count(), count() + int(fresh.size()) - 1);
            m_rows.insert(m_rows.end(), fresh.begin(), fresh.end());
            m_crashCount += crashes;
            endInsertRows();
            Q_EMIT countChanged();
        }
    }
    Q_EMIT heldChanged();
}

void Logcat::add(LogcatEntry entry)
{
    if (const auto started = LogcatParser::startedProcess(entry))
        m_processApps.insert(started->first, appIndex(started->second));
    if (entry.pid > 0)
        entry.app = m_processApps.value(entry.pid, -1);
    m_entries.push_back(std::move(entry));
}

void Logcat::trim()
{
    if (m_entries.size() <= size_t(maxEntries))
        return;
    const qint64 drop = std::max<qint64>(droppedEntries, qint64(m_entries.size()) - maxEntries);
    m_entries.erase(m_entries.begin(), m_entries.begin() + drop);
    m_firstNumber += drop;
    m_shownEnd = std::max(m_shownEnd, m_firstNumber);
    if (m_scan)
        m_scan->next = std::max(m_scan->next, m_firstNumber);
    const auto kept = std::lower_bound(m_rows.begin(), m_rows.end(), m_firstNumber);
    if (kept == m_rows.begin())
        return;
    beginRemoveRows({}, 0, int(kept - m_rows.begin()) - 1);
    m_rows.erase(m_rows.begin(), kept);
    endRemoveRows();
    countCrashes();
    Q_EMIT countChanged();
}

qint16 Logcat::appIndex(const QString &package)
{
    const qsizetype known = m_apps.indexOf(package);
    if (known >= 0)
        return qint16(known);
    if (m_apps.size() >= std::numeric_limits<qint16>::max())
        return -1;
    m_apps.append(package);
    return qint16(m_apps.size() - 1);
}

void Logcat::setMinimumLevel(int level)
{
    const auto clamped
        = LogcatEntry::Level(std::clamp(level, int(LogcatEntry::Verbose), int(LogcatEntry::Fatal)));
    const bool changed = clamped != m_filter.minimumLevel;
    m_filter.minimumLevel = clamped;
    if (changed)
        filterChangedNow();
    else
        Q_EMIT filterChanged();
}

void Logcat::setApp(const QString &package)
{
    const bool changed = package != m_app;
    m_app = package;
    m_filter.app = package.isEmpty() ? qint16(-1) : appIndex(package);
    if (!changed) {
        Q_EMIT filterChanged();
        return;
    }
    filterChangedNow();
    if (!package.isEmpty())
        findProcesses(package);
}

void Logcat::setText(const QString &text)
{
    const bool changed = text != m_text;
    m_text = text;
    if (changed)
        updateExpression();
    else
        Q_EMIT filterChanged();
}

void Logcat::setRegularExpression(bool on)
{
    const bool changed = on != m_regularExpression;
    m_regularExpression = on;
    if (changed)
        updateExpression();
    else
        Q_EMIT filterChanged();
}

void Logcat::updateExpression()
{
    m_filterError.reset();
    m_filter.expression.reset();
    m_filter.text = m_regularExpression ? QString() : m_text;
    if (m_regularExpression && !m_text.isEmpty()) {
        QRegularExpression expression(m_text, QRegularExpression::CaseInsensitiveOption);
        if (expression.isValid()) {
            expression.optimize();
            m_filter.expression = expression;
        } else {
            // Until it is one, the text filters nothing.
            m_filterError = QStringLiteral("This is not a regular expression: %1 (at character %2).")
                                .arg(expression.errorString())
                                .arg(expression.patternErrorOffset() + 1);
        }
    }
    filterChangedNow();
}

void Logcat::setPaused(bool paused)
{
    const bool resumed = m_paused && !paused;
    m_paused = paused;
    Q_EMIT pausedChanged();
    // What came while paused joins the rows in turns, as a filter change does.
    // A scan under way goes on to the end by itself.
    if (resumed && !m_scan)
        startScan({m_shownEnd, m_rows});
}

void Logcat::filterChangedNow()
{
    Q_EMIT filterChanged();
    startScan({m_firstNumber, {}});
}

void Logcat::startScan(Scan scan)
{
    const bool started = !m_scan;
    m_scan = std::move(scan);
    if (started)
        Q_EMIT filteringChanged();
    if (!m_scanScheduled) {
        m_scanScheduled = true;
        QMetaObject::invokeMethod(this, &Logcat::scanTurn, Qt::QueuedConnection);
    }
}

void Logcat::scanTurn()
{
    m_scanScheduled = false;
    if (!m_scan)
        return;
    Scan &scan = *m_scan;
    QElapsedTimer clock;
    clock.start();
    scan.next = std::max(scan.next, m_firstNumber);
    const qint64 end = m_paused ? m_shownEnd : endNumber();
    // The clock is read every few hundred entries: a regular expression takes a few microseconds each.
    constexpr qint64 step = 256;
    while (scan.next < end && clock.nsecsElapsed() < ChunkQueue::turnBudget.count()) {
        for (const qint64 stop = std::min(end, scan.next + step); scan.next < stop; ++scan.next) {
            if (m_filter.matches(entry(scan.next)))
                scan.rows.push_back(scan.next);
        }
    }
    if (scan.next < end) {
        m_scanScheduled = true;
        QMetaObject::invokeMethod(this, &Logcat::scanTurn, Qt::QueuedConnection);
        return;
    }
    beginResetModel();
    m_rows = std::move(scan.rows);
    m_rows.erase(m_rows.begin(), std::lower_bound(m_rows.begin(), m_rows.end(), m_firstNumber));
    m_shownEnd = std::max(m_shownEnd, scan.next);
    m_scan.reset();
    endResetModel();
    countCrashes();
    Q_EMIT countChanged();
    Q_EMIT heldChanged();
    Q_EMIT filteringChanged();
}

void Logcat::countCrashes()
{
    m_crashCount = int(
        std::count_if(m_rows.begin(), m_rows.end(), [this](qint64 number) { return entry(number).crash; }));
}

int Logcat::nextCrash(int row) const
{
    for (int next = std::max(row + 1, 0); next < count(); ++next) {
        if (entryAt(next).crash)
            return next;
    }
    return -1;
}

int Logcat::previousCrash(int row) const
{
    for (int previous = std::min(row, count()) - 1; previous >= 0; --previous) {
        if (entryAt(previous).crash)
            return previous;
    }
    return -1;
}

QCoro::Task<> Logcat::findProcesses(QString package)
{
    QPointer<Logcat> self(this);
    auto asking
        = AndroidTools::runADB({QStringLiteral("shell"), QStringLiteral("pidof"), PhoneShell::quote(package)},
            m_serial, currentTiming().adbTimeout);
    const ProcessResult result = co_await std::move(asking);
    if (!self || !result.isClean())
        co_return;
    const qint16 app = appIndex(package);
    QSet<qint32> pids;
    for (const QString &word : result.text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        bool isNumber = false;
        const qint32 pid = word.trimmed().toInt(&isNumber);
        if (isNumber && pid > 0) {
            pids.insert(pid);
            m_processApps.insert(pid, app);
        }
    }
    // What these processes logged before the app was picked is the app's too.
    bool found = false;
    for (LogcatEntry &held : m_entries) {
        if (held.app < 0 && pids.contains(held.pid)) {
            held.app = app;
            found = true;
        }
    }
    if (found && m_filter.app == app)
        filterChangedNow();
}

void Logcat::clear()
{
    clearTask();
}

QCoro::Task<> Logcat::clearTask()
{
    beginResetModel();
    m_firstNumber = endNumber();
    m_entries.clear();
    m_rows.clear();
    m_shownEnd = m_firstNumber;
    if (m_scan) {
        m_scan->rows.clear();
        m_scan->next = m_firstNumber;
    }
    endResetModel();
    m_crashCount = 0;
    Q_EMIT countChanged();
    Q_EMIT heldChanged();

    QPointer<Logcat> self(this);
    auto clearing = AndroidTools::runADB(
        {QStringLiteral("logcat"), QStringLiteral("-c")}, m_serial, currentTiming().adbTimeout);
    const ProcessResult result = co_await std::move(clearing);
    if (!self)
        co_return;
    if (!result.isClean())
        setNote(QStringLiteral("The phone's own log could not be cleared: ") + result.failureSummary());
    else
        setNote(QStringLiteral("Cleared the phone's log."));
}

void Logcat::save(const QUrl &file)
{
    saveTask(file.isLocalFile() ? file.toLocalFile() : file.toString());
}

QCoro::Task<> Logcat::saveTask(QString path)
{
    // The rows as they are now; writing them leaves the main thread.
    auto shown = std::make_shared<std::vector<LogcatEntry>>();
    shown->reserve(m_rows.size());
    for (const qint64 number : m_rows)
        shown->push_back(entry(number));
    auto promise = std::make_shared<QPromise<std::optional<QString>>>();
    QFuture<std::optional<QString>> writing = promise->future();
    promise->start();
    QThreadPool::globalInstance()->start([promise, shown, path] {
        promise->addResult(writeEntries(path, *shown));
        promise->finish();
    });
    QPointer<Logcat> self(this);
    const std::optional<QString> error = co_await writing;
    if (!self)
        co_return;
    if (error)
        setNote(QStringLiteral("Could not save the log to %1: %2").arg(path, *error));
    else
        setNote(shown->size() == 1 ? QStringLiteral("Saved 1 entry to %1.").arg(path)
                                   : QStringLiteral("Saved %1 entries to %2.").arg(shown->size()).arg(path));
}

void Logcat::refreshPackages()
{
    refreshPackagesTask();
}

QCoro::Task<> Logcat::refreshPackagesTask()
{
    QPointer<Logcat> self(this);
    auto listing
        = AndroidTools::runADB({QStringLiteral("shell"), QStringLiteral("pm"), QStringLiteral("list"),
                                   QStringLiteral("packages"), QStringLiteral("-3")},
            m_serial, currentTiming().adbTimeout);
    const ProcessResult result = co_await std::move(listing);
    if (!self || !result.isClean())
        co_return;
    QStringList packages;
    for (const QString &line : result.text.split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1String("package:")))
            packages.append(line.mid(8).trimmed());
    }
    packages.sort();
    m_packages = packages;
    Q_EMIT packagesChanged();
}

int Logcat::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant Logcat::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= count())
        return {};
    const LogcatEntry &shown = entryAt(index.row());
    switch (role) {
    case TimeRole:
        return shown.timeText();
    case LevelRole:
        return int(shown.level);
    case LetterRole:
        return QString(LogcatEntry::letterOf(shown.level));
    case TagRole:
        return shown.tag;
    case PidRole:
        return shown.pid;
    case TidRole:
        return shown.tid;
    case Qt::DisplayRole:
    case MessageRole:
        // Stack traces indent with tabs, which a text item draws as wide gaps.
        if (shown.message.contains(QLatin1Char('\t')))
            return QString(shown.message).replace(QLatin1Char('\t'), QLatin1String("    "));
        return shown.message;
    case CrashRole:
        return shown.crash;
    default:
        return {};
    }
}

QHash<int, QByteArray> Logcat::roleNames() const
{
    return {{TimeRole, "time"}, {LevelRole, "level"}, {LetterRole, "letter"}, {TagRole, "tag"},
        {PidRole, "pid"}, {TidRole, "tid"}, {MessageRole, "message"}, {CrashRole, "crash"}};
}
