#include "ScreenRecorder.h"

#include "AndroidTools.h"
#include "PhoneShell.h"

#include <QFileInfo>

#include <QCoro/QCoroTimer>

#include <csignal>

ScreenRecorder::ScreenRecorder(QObject *parent)
    : DeviceFeature(parent)
{
    m_tick.setInterval(1000);
    connect(&m_tick, &QTimer::timeout, this, [this] {
        m_elapsedSeconds = int(m_clock.elapsed() / 1000);
        Q_EMIT elapsedChanged();
    });
}

ScreenRecorder::~ScreenRecorder()
{
    // A recording still under way ends with the app; the phone keeps its file.
    if (m_process) {
        m_process->disconnect(this);
        m_process->kill();
        m_process->waitForFinished(1000);
    }
}

void ScreenRecorder::setChooser(SaveLocationChooser *chooser)
{
    if (chooser == m_chooser)
        return;
    m_chooser = chooser;
    Q_EMIT chooserChanged();
}

void ScreenRecorder::start()
{
    if (m_process || serial().isEmpty())
        return;
    const auto adb = AndroidTools::adbPath();
    if (!adb) {
        report(QStringLiteral(
                   "adb was not found. Install the emulator and platform tools on the Setup tab first."),
            true);
        return;
    }
    m_process = new QProcess(this);
    m_process->setProgram(*adb);
    m_process->setArguments({QStringLiteral("-s"), serial(), QStringLiteral("shell"),
        QStringLiteral("screenrecord"), QStringLiteral("--time-limit"), QString::number(timeLimit),
        PhoneShell::quote(QString::fromLatin1(phoneFile))});
    m_process->setProcessEnvironment(AndroidTools::environment());
    m_process->setProcessChannelMode(QProcess::MergedChannels);
    m_process->setStandardInputFile(QProcess::nullDevice());
    connect(m_process, &QProcess::finished, this, [this](int status, QProcess::ExitStatus) {
        const QString output = QString::fromUtf8(m_process->readAll()).trimmed();
        const bool byUser = m_stopping;
        m_process->deleteLater();
        m_process = nullptr;
        m_stopping = false;
        m_tick.stop();
        Q_EMIT recordingChanged();
        keepTask(byUser, status, output);
    });
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return;
        report(QStringLiteral("Could not start recording: ") + m_process->errorString(), true);
        m_process->deleteLater();
        m_process = nullptr;
        m_tick.stop();
        Q_EMIT recordingChanged();
    });
    m_stopping = false;
    m_elapsedSeconds = 0;
    Q_EMIT elapsedChanged();
    report(QStringLiteral("Recording. screenrecord stops by itself after 3 minutes."));
    m_clock.start();
    m_tick.start();
    m_process->start();
    Q_EMIT recordingChanged();
}

void ScreenRecorder::stop()
{
    if (!m_process || m_stopping)
        return;
    m_stopping = true;
    // Not a kill: screenrecord finishes the file when adb lets go of it.
    ::kill(pid_t(m_process->processId()), SIGINT);
}

QCoro::Task<> ScreenRecorder::keepTask(bool stoppedByUser, int status, QString output)
{
    QPointer<ScreenRecorder> self(this);
    // Ended with a failure without being asked: the phone could not record.
    if (!stoppedByUser && status != 0) {
        report(QStringLiteral("This phone cannot record its screen: ")
                + (output.isEmpty() ? QStringLiteral("screenrecord exited with status %1.").arg(status)
                                    : output),
            true);
        Q_EMIT finished();
        co_return;
    }
    // Ended cleanly without being asked: screenrecord reached its limit, and the file is complete.
    const QString limitNote = stoppedByUser
        ? QString()
        : QStringLiteral("The recording reached screenrecord's 3-minute limit and stopped by itself. ");
    const QString remote = QString::fromLatin1(phoneFile);
    std::optional<QString> path;
    if (m_chooser) {
        auto choosing = m_chooser->chooseSaveLocation(QStringLiteral("Android Screen Recording.mp4"));
        path = co_await std::move(choosing);
        if (!self)
            co_return;
    }
    if (path) {
        // adb ends as soon as it lets go; screenrecord finishes the file on the phone a moment later.
        co_await QCoro::sleepFor(std::chrono::milliseconds(500));
        if (!self)
            co_return;
        auto pulling = adb({QStringLiteral("pull"), remote, *path}, 120.0);
        const ProcessResult pulled = co_await std::move(pulling);
        if (!self)
            co_return;
        if (reportFailure(pulled, limitNote + QStringLiteral("Could not copy the recording from the phone")))
            report(limitNote + QStringLiteral("Saved the recording to ") + QFileInfo(*path).fileName()
                + QLatin1Char('.'));
    } else {
        report(limitNote + QStringLiteral("The recording was not saved."));
    }
    auto removing = adb(
        {QStringLiteral("shell"), QStringLiteral("rm"), QStringLiteral("-f"), PhoneShell::quote(remote)});
    co_await std::move(removing);
    if (self)
        Q_EMIT finished();
}
