#pragma once

#include "ChunkQueue.h"
#include "LogLines.h"
#include "ProcessResult.h"
#include "RunningJob.h"

#include <QObject>
#include <QPointer>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

#include <QCoro/QCoroTask>

#include <optional>

// Runs one long command at a time and turns its output into a live log with a progress value.
class JobRunner : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the setup controller and the phone store")
    Q_PROPERTY(QString title READ title NOTIFY titleChanged)
    // The title while the job runs; once it has ended, how it ended: "Installed ...", "... failed" or
    // "Cancelled: ...".
    Q_PROPERTY(QString heading READ heading NOTIFY headingChanged)
    Q_PROPERTY(QStringList lines READ lines NOTIFY linesChanged)
    Q_PROPERTY(LogLines *lineModel READ lineModel CONSTANT)
    Q_PROPERTY(QVariant progress READ progressVariant NOTIFY progressChanged)
    // What the progress is the progress of: the download or step the tool's bar names.
    Q_PROPERTY(QString progressText READ progressText NOTIFY progressChanged)
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY isRunningChanged)
    Q_PROPERTY(RunningJob *job READ job NOTIFY jobChanged)

public:
    static constexpr int maxLines = 3000;
    static constexpr int trimmedLines = 500;

    explicit JobRunner(QObject *parent = nullptr);

    QString title() const { return m_title; }
    QString heading() const { return m_heading; }
    QString progressText() const { return m_progressText; }
    const QStringList &lines() const { return m_lines->lines(); }
    LogLines *lineModel() const { return m_lines; }
    std::optional<double> progress() const { return m_progress; }
    bool isRunning() const { return m_isRunning; }
    RunningJob *job() const { return m_job; }

    // Refused at once, with nothing changed, while another job runs.
    QCoro::Task<ProcessResult> run(QString title, QString executable, QStringList arguments,
        std::optional<QString> input = std::nullopt);

Q_SIGNALS:
    void titleChanged();
    void headingChanged();
    void linesChanged();
    void progressChanged();
    void isRunningChanged();
    void jobChanged();
    // Any of the above; owners repeat it as their own change.
    void changed();

private:
    QVariant progressVariant() const { return m_progress ? QVariant(*m_progress) : QVariant(); }
    void setTitle(const QString &title);
    void setHeading(const QString &heading);
    void setProgress(std::optional<double> progress, const QString &text);
    void setRunning(bool running);
    void setJob(RunningJob *job);
    // One batch of lines, as if added one by one: progress redraws merge, and the log is trimmed
    // whenever it passes its bound.
    void addLines(const QStringList &lines);

    QString m_title;
    QString m_heading;
    QString m_progressText;
    // Homebrew's last "==> " step: its download bar names nothing itself.
    QString m_lastStep;
    LogLines *m_lines;
    std::optional<double> m_progress;
    bool m_isRunning = false;
    QPointer<RunningJob> m_job;
    ChunkQueue *m_queue;
    bool m_lastWasProgress = false;
};
