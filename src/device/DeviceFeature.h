#pragma once

#include "ProcessResult.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

#include <QCoro/QCoroTask>

#include <optional>

// What every feature of a running phone shares: the phone's serial, whether a command is under way, and
// a sentence on what last happened or why it failed.
class DeviceFeature : public QObject
{
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(QString serial READ serial WRITE setSerial NOTIFY serialChanged)
    Q_PROPERTY(bool busy READ busy NOTIFY busyChanged)
    Q_PROPERTY(QString message READ message NOTIFY messageChanged)
    Q_PROPERTY(bool failed READ failed NOTIFY messageChanged)

public:
    // How long a command to the phone may take, in seconds.
    static constexpr double commandTimeout = 30.0;

    explicit DeviceFeature(QObject *parent = nullptr);

    QString serial() const { return m_serial; }
    void setSerial(const QString &serial);
    bool busy() const { return m_busy; }
    QString message() const { return m_message; }
    bool failed() const { return m_failed; }

    // Why a run failed in the tools' own words, or none when it succeeded. The emulator's console
    // answers "KO: ..." for a refused command, and adb may still exit with 0.
    static std::optional<QString> failure(const ProcessResult &result);

Q_SIGNALS:
    void serialChanged();
    void busyChanged();
    void messageChanged();

protected:
    // Runs adb for this phone; while it runs the feature is busy.
    QCoro::Task<ProcessResult> adb(QStringList args, double timeout = commandTimeout);
    void setBusy(bool busy);
    void report(const QString &message, bool failed = false);
    // Reports the run's failure with `what` in front; true when it succeeded.
    bool reportFailure(const ProcessResult &result, const QString &what);

    // Called when the serial changes, for a feature that forgets what it knew of the phone before.
    virtual void serialSet() { }

private:
    QString m_serial;
    bool m_busy = false;
    QString m_message;
    bool m_failed = false;
};
