#pragma once

#include "ChunkQueue.h"
#include "LogcatEntry.h"
#include "LogcatFilter.h"
#include "LogcatParser.h"

#include <QAbstractListModel>
#include <QHash>
#include <QPointer>
#include <QProcess>
#include <QStringDecoder>
#include <QTimer>
#include <QUrl>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

#include <QCoro/QCoroTask>

#include <chrono>
#include <deque>
#include <optional>
#include <vector>

// The log of one running phone, read live with `adb logcat` and held in bounded memory, and the rows of
// it that the filter lets through. It reads while it lives: when the phone stops, it says so and reads
// on once adb sees the phone again. Filtering, catching up after a pause and reading a flood are all cut
// into short turns, so the window stays live whatever the phone prints.
class Logcat : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Handed out per phone by TolvaneApp.logcats")
    Q_PROPERTY(QString serial READ serial CONSTANT)
    Q_PROPERTY(State state READ state NOTIFY stateChanged)
    Q_PROPERTY(QString stateText READ stateText NOTIFY stateChanged)
    // Rows shown, entries held, and entries held but not shown yet because the view is paused.
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(int held READ held NOTIFY heldChanged)
    Q_PROPERTY(int waiting READ waiting NOTIFY heldChanged)
    Q_PROPERTY(int crashCount READ crashCount NOTIFY countChanged)
    Q_PROPERTY(int minimumLevel READ minimumLevel WRITE setMinimumLevel NOTIFY filterChanged)
    Q_PROPERTY(QString app READ app WRITE setApp NOTIFY filterChanged)
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY filterChanged)
    Q_PROPERTY(bool regularExpression READ regularExpression WRITE setRegularExpression NOTIFY filterChanged)
    // Why the text is not a regular expression; undefined when it is, or when it is plain text.
    Q_PROPERTY(QVariant filterError READ filterErrorVariant NOTIFY filterChanged)
    // A filter change or a resume is still going through the held entries.
    Q_PROPERTY(bool filtering READ filtering NOTIFY filteringChanged)
    Q_PROPERTY(bool paused READ paused WRITE setPaused NOTIFY pausedChanged)
    Q_PROPERTY(QStringList packages READ packages NOTIFY packagesChanged)
    // What the last clear or save came to, in a sentence; undefined before either.
    Q_PROPERTY(QVariant note READ noteVariant NOTIFY noteChanged)

public:
    enum class State { Connecting, Reading, Stopped };
    Q_ENUM(State)
    enum Role {
        TimeRole = Qt::UserRole,
        LevelRole,
        LetterRole,
        TagRole,
        PidRole,
        TidRole,
        MessageRole,
        CrashRole
    };

    static constexpr int maxEntries = 100000;
    // The oldest go in blocks of this many, so trimming is rare.
    static constexpr int droppedEntries = 10000;

    // The waits in effect; tests shorten them.
    struct Timing
    {
        std::chrono::milliseconds reconnectInterval {2000};
        double adbTimeout = 10.0; // seconds
        // Output still in the pipe when logcat ends is read this long after.
        std::chrono::milliseconds endDelay {200};
    };
    static const Timing &timing();
    static void setTiming(const Timing &timing);

    explicit Logcat(const QString &serial, QObject *parent = nullptr);
    ~Logcat() override;

    QString serial() const { return m_serial; }
    State state() const { return m_state; }
    QString stateText() const;
    int count() const { return int(m_rows.size()); }
    int held() const { return int(m_entries.size()); }
    int waiting() const { return int(m_firstNumber + qint64(m_entries.size()) - m_shownEnd); }
    int crashCount() const { return m_crashCount; }
    const LogcatEntry &entryAt(int row) const
    {
        return m_entries[size_t(m_rows[size_t(row)] - m_firstNumber)];
    }

    int minimumLevel() const { return m_filter.minimumLevel; }
    void setMinimumLevel(int level);
    QString app() const { return m_app; }
    void setApp(const QString &package);
    QString text() const { return m_text; }
    void setText(const QString &text);
    bool regularExpression() const { return m_regularExpression; }
    void setRegularExpression(bool on);
    std::optional<QString> filterError() const { return m_filterError; }
    bool filtering() const { return m_scan.has_value(); }
    bool paused() const { return m_paused; }
    void setPaused(bool paused);
    QStringList packages() const { return m_packages; }
    std::optional<QString> note() const { return m_note; }

    // The row of the next crash after `row` or of the last one before it; -1 when there is none.
    Q_INVOKABLE int nextCrash(int row) const;
    Q_INVOKABLE int previousCrash(int row) const;
    // Forgets what is held and empties the phone's own log with `adb logcat -c`.
    Q_INVOKABLE void clear();
    QCoro::Task<> clearTask();
    // Writes the rows shown, as logcat prints them, to a text file.
    Q_INVOKABLE void save(const QUrl &file);
    QCoro::Task<> saveTask(QString path);
    // Lists the apps the user installed, for the app filter.
    Q_INVOKABLE void refreshPackages();
    QCoro::Task<> refreshPackagesTask();

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void stateChanged();
    void countChanged();
    void heldChanged();
    void filterChanged();
    void filteringChanged();
    void pausedChanged();
    void packagesChanged();
    void noteChanged();

private:
    // A pass over the held entries from `next` on, which ends by showing `rows`.
    struct Scan
    {
        qint64 next = 0;
        std::vector<qint64> rows;
    };

    QVariant filterErrorVariant() const { return m_filterError ? QVariant(*m_filterError) : QVariant(); }
    QVariant noteVariant() const { return m_note ? QVariant(*m_note) : QVariant(); }
    void setState(State state);
    void setNote(const QString &note);
    qint64 endNumber() const { return m_firstNumber + qint64(m_entries.size()); }
    const LogcatEntry &entry(qint64 number) const { return m_entries[size_t(number - m_firstNumber)]; }

    // Asks adb whether the phone runs: when it does, reads its log; else asks again after a while.
    void askForPhone();
    QCoro::Task<> askForPhoneTask();
    void askAgainLater();
    void finishWhenDrained();
    void startReading();
    void readingEnded();
    void take(const QStringList &lines);
    void add(LogcatEntry entry);
    void trim();
    qint16 appIndex(const QString &package);
    QCoro::Task<> findProcesses(QString package);

    void updateExpression();
    void filterChangedNow();
    void startScan(Scan scan);
    void scanTurn();
    void countCrashes();

    const QString m_serial;
    State m_state = State::Connecting;
    QPointer<QProcess> m_process;
    QStringDecoder m_decoder {QStringDecoder::Utf8};
    ChunkQueue *m_queue;
    QTimer *m_retry;
    LogcatParser m_parser;

    std::deque<LogcatEntry> m_entries;
    // The number of the first held entry: entries are numbered from the first one ever read.
    qint64 m_firstNumber = 0;
    // Numbers of the entries shown.
    std::vector<qint64> m_rows;
    // Entries from this number on have not been looked at for the rows yet (paused, or being scanned).
    qint64 m_shownEnd = 0;
    int m_crashCount = 0;
    std::optional<Scan> m_scan;
    bool m_scanScheduled = false;

    LogcatFilter m_filter;
    QString m_app;
    QString m_text;
    bool m_regularExpression = false;
    std::optional<QString> m_filterError;
    bool m_paused = false;

    // Packages of the apps seen in the log, and which of them each process belongs to.
    QStringList m_apps;
    QHash<qint32, qint16> m_processApps;
    QStringList m_packages;
    std::optional<QString> m_note;
};
