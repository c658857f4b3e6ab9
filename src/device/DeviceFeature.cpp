#include "DeviceFeature.h"

#include "AndroidTools.h"

#include <QPointer>

DeviceFeature::DeviceFeature(QObject *parent)
    : QObject(parent)
{ }

void DeviceFeature::setSerial(const QString &serial)
{
    if (serial == m_serial)
        return;
    m_serial = serial;
    report(QString());
    serialSet();
    Q_EMIT serialChanged();
}

std::optional<QString> DeviceFeature::failure(const ProcessResult &result)
{
    if (result.launchError)
        return result.launchError;
    const QString text = result.text.trimmed();
    for (const QString &line : text.split(QLatin1Char('\n'))) {
        if (line.trimmed().startsWith(QLatin1String("KO:")))
            return line.trimmed().mid(3).trimmed();
    }
    if (result.isClean())
        return std::nullopt;
    return text.isEmpty() ? result.failureSummary() : text;
}

QCoro::Task<ProcessResult> DeviceFeature::adb(QStringList args, double timeout)
{
    if (m_serial.isEmpty())
        co_return ProcessResult::refused(QStringLiteral("No running phone is picked."));
    QPointer<DeviceFeature> self(this);
    setBusy(true);
    auto running = AndroidTools::runADB(args, m_serial, timeout);
    ProcessResult result = co_await std::move(running);
    if (self)
        setBusy(false);
    co_return result;
}

void DeviceFeature::setBusy(bool busy)
{
    if (busy == m_busy)
        return;
    m_busy = busy;
    Q_EMIT busyChanged();
}

void DeviceFeature::report(const QString &message, bool failed)
{
    m_message = message;
    m_failed = failed;
    Q_EMIT messageChanged();
}

bool DeviceFeature::reportFailure(const ProcessResult &result, const QString &what)
{
    const std::optional<QString> why = failure(result);
    if (why)
        report(what + QStringLiteral(": ") + *why, true);
    return !why;
}
