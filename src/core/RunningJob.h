#pragma once

#include <QObject>
#include <QPointer>
#include <QProcess>
#include <QtQml/qqmlregistration.h>

// The cancel handle of one job run, shared by the job runner, its log view and the run itself.
class RunningJob : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by a job runner for each run")
    Q_PROPERTY(bool cancelled READ isCancelled NOTIFY cancelledChanged)

public:
    explicit RunningJob(QObject *parent = nullptr);

    // Called by the run right after the child was launched. A cancel that came earlier ends it at once.
    void attach(QProcess *process);
    Q_INVOKABLE void cancel();
    bool isCancelled() const { return m_cancelled; }

Q_SIGNALS:
    void cancelledChanged();

private:
    QPointer<QProcess> m_process;
    bool m_cancelled = false;
};
