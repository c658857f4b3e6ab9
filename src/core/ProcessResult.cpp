#include "ProcessResult.h"

ProcessResult ProcessResult::refused(const QString &reason)
{
    ProcessResult result;
    result.launchError = reason;
    return result;
}

bool ProcessResult::isClean() const
{
    return !launchError && !timedOut && !cancelled && status == 0;
}

QString ProcessResult::failureSummary() const
{
    if (launchError)
        return *launchError;
    if (timedOut)
        return QStringLiteral("The command did not finish in time.");
    if (cancelled)
        return QStringLiteral("Cancelled.");
    return QStringLiteral("The command exited with status %1.").arg(status);
}
