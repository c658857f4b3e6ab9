#pragma once

#include "ChunkQueue.h"
#include "LogLines.h"
#include "StartOptions.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QProcess>
#include <QStringDecoder>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

#include <QCoro/QCoroTask>

#include <chrono>
#include <memory>
#include <optional>

// The life of one phone's emulator: launches it, gathers its output, follows the boot through adb
// and stops it. One object per phone name, started and stopped any number of times.
class EmulatorProcess : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the phone store, one per phone")
    Q_PROPERTY(QString name READ name CONSTANT)
    Q_PROPERTY(State state READ state NOTIFY stateChanged)
    Q_PROPERTY(QString stateName READ stateName NOTIFY stateChanged)
    Q_PROPERTY(QStringList lines READ lines NOTIFY linesChanged)
    Q_PROPERTY(LogLines *lineModel READ lineModel CONSTANT)
    Q_PROPERTY(QVariant failure READ failureVariant NOTIFY failureChanged)
    // The emulator's own ERROR, FATAL or PANIC line that explains the failure; empty when it printed none.
    Q_PROPERTY(QString failureCause READ failureCause NOTIFY failureChanged)
    Q_PROPERTY(int port READ port NOTIFY portChanged)
    Q_PROPERTY(QString serial READ serial NOTIFY portChanged)
    Q_PROPERTY(QVariant secondsSoFar READ secondsSoFarVariant NOTIFY timelineChanged)
    Q_PROPERTY(bool slowBoot READ slowBoot NOTIFY timelineChanged)

public:
    enum class State { Stopped, Starting, Booting, Running, Stopping };
    Q_ENUM(State)

    static constexpr std::chrono::milliseconds bootPollInterval {2000};
    static constexpr double adbTimeout = 10.0; // seconds
    static constexpr int stopWaitRounds = 20;
    static constexpr std::chrono::milliseconds stopWaitStep {500};
    // The end of the process is handled this long after it is reported, so late output still arrives first.
    static constexpr std::chrono::milliseconds endDelay {500};
    // Once a drain brings the log past maxLines, the oldest trimmedLines go; however much one drain
    // brings, no more than linesAfterDrain stay.
    static constexpr int maxLines = 4000;
    static constexpr int trimmedLines = 1000;
    static constexpr int linesAfterDrain = 5000;
    // Booting longer than this is worth a word to the user.
    static constexpr std::chrono::milliseconds slowBootAfter {std::chrono::minutes(3)};

    // The waits in effect; tests shorten them.
    struct Timing
    {
        std::chrono::milliseconds bootPollInterval = EmulatorProcess::bootPollInterval;
        double adbTimeout = EmulatorProcess::adbTimeout;
        int stopWaitRounds = EmulatorProcess::stopWaitRounds;
        std::chrono::milliseconds stopWaitStep = EmulatorProcess::stopWaitStep;
        std::chrono::milliseconds endDelay = EmulatorProcess::endDelay;
        std::chrono::milliseconds slowBootAfter = EmulatorProcess::slowBootAfter;
    };
    static const Timing &timing();
    static void setTiming(const Timing &timing);

    explicit EmulatorProcess(const QString &name, QObject *parent = nullptr);
    // A running emulator outlives this object.
    ~EmulatorProcess() override;

    QString name() const { return m_name; }
    State state() const { return m_state; }
    QString stateName() const;
    const QStringList &lines() const { return m_lines->lines(); }
    LogLines *lineModel() const { return m_lines; }
    std::optional<QString> failure() const { return m_failure; }
    QString failureCause() const { return m_failureCause; }
    int port() const { return m_port; }
    QString serial() const { return QStringLiteral("emulator-") + QString::number(m_port); }

    // The current run's timeline, in milliseconds since the launch. The time so far is taken at each
    // boot-poll round while starting or booting, and at boot completion.
    std::optional<qint64> sinceLaunch() const { return m_sinceLaunch; }
    std::optional<qint64> seenAfter() const { return m_seenAfter; }
    std::optional<qint64> bootedAfter() const { return m_bootedAfter; }
    // Starting or booting for longer than usual, as of the last poll round.
    bool slowBoot() const;

    // Does nothing unless stopped. `emulator` is the executable's absolute path.
    void start(QString emulator, int port, StartOptions options);
    // Asks the emulator to quit and terminates it when it does not. Does nothing when stopped or stopping.
    Q_INVOKABLE void stop();
    // The same as stop(), for callers that wait for the stop to finish.
    QCoro::Task<> stopTask();

Q_SIGNALS:
    void stateChanged();
    void linesChanged();
    void failureChanged();
    void portChanged();
    void timelineChanged();
    // Any of the above; the phone store repeats it as its own change.
    void changed();

private:
    QVariant failureVariant() const { return m_failure ? QVariant(*m_failure) : QVariant(); }
    void setState(State state);
    void setFailure(std::optional<QString> failure, const QString &cause = QString());
    void setPort(int port);
    QVariant secondsSoFarVariant() const;
    void startTimeline();
    void noteTime(std::optional<qint64> *mark = nullptr);
    // How many of the oldest lines go once a drain has brought the log to `count` lines.
    static qsizetype linesToDrop(qsizetype count);
    void appendLines(const QStringList &lines);
    void read(QStringDecoder &decoder, const QByteArray &bytes);
    void startPolling();
    void cancelPolling();
    QCoro::Task<> poll(std::shared_ptr<bool> cancelled, QString serial);
    // Handles the end once every queued chunk has reached the log.
    void finishWhenDrained(int status);
    void processEnded(int status);

    const QString m_name;
    State m_state = State::Stopped;
    LogLines *m_lines;
    std::optional<QString> m_failure;
    QString m_failureCause;
    int m_port = 5554;
    QPointer<QProcess> m_process;
    // Set when the current boot poll is to end.
    std::shared_ptr<bool> m_pollCancelled;
    ChunkQueue *m_queue;
    // A character whose bytes a read splits is held back until the rest of it comes.
    QStringDecoder m_stdoutText {QStringDecoder::Utf8};
    QStringDecoder m_stderrText {QStringDecoder::Utf8};
    QElapsedTimer m_launchClock;
    std::optional<qint64> m_sinceLaunch;
    std::optional<qint64> m_seenAfter;
    std::optional<qint64> m_bootedAfter;
};
