#pragma once

#include "DeviceFeature.h"
#include "SaveLocationChooser.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QProcess>
#include <QTimer>

// Records a running phone's screen with screenrecord, to a file on the phone that is then copied to a
// file the user picks and removed from the phone.
class ScreenRecorder : public DeviceFeature
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(SaveLocationChooser *chooser READ chooser WRITE setChooser NOTIFY chooserChanged)
    Q_PROPERTY(bool recording READ recording NOTIFY recordingChanged)
    Q_PROPERTY(int elapsedSeconds READ elapsedSeconds NOTIFY elapsedChanged)
    Q_PROPERTY(int limitSeconds READ limitSeconds CONSTANT)

public:
    // screenrecord stops by itself after three minutes, its longest.
    static constexpr int timeLimit = 180;
    static constexpr const char *phoneFile = "/sdcard/tolvane-recording.mp4";

    explicit ScreenRecorder(QObject *parent = nullptr);
    ~ScreenRecorder() override;

    SaveLocationChooser *chooser() const { return m_chooser; }
    void setChooser(SaveLocationChooser *chooser);
    bool recording() const { return m_process != nullptr; }
    int elapsedSeconds() const { return m_elapsedSeconds; }
    int limitSeconds() const { return timeLimit; }

    Q_INVOKABLE void start();
    // Interrupts screenrecord, as Ctrl-C in a terminal would, so that it finishes the file.
    Q_INVOKABLE void stop();

Q_SIGNALS:
    void chooserChanged();
    void recordingChanged();
    void elapsedChanged();
    // The recording ended and its file was saved, moved on, or refused.
    void finished();

private:
    QCoro::Task<> keepTask(bool stoppedByUser, int status, QString output);

    QPointer<SaveLocationChooser> m_chooser;
    QProcess *m_process = nullptr;
    bool m_stopping = false;
    QElapsedTimer m_clock;
    QTimer m_tick;
    int m_elapsedSeconds = 0;
};
