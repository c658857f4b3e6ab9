#include "RunningJob.h"

RunningJob::RunningJob(QObject *parent)
    : QObject(parent)
{ }

void RunningJob::attach(QProcess *process)
{
    m_process = process;
    if (m_cancelled && m_process && m_process->state() != QProcess::NotRunning)
        m_process->terminate();
}

void RunningJob::cancel()
{
    m_cancelled = true;
    Q_EMIT cancelledChanged();
    if (m_process && m_process->state() != QProcess::NotRunning)
        m_process->terminate();
}
