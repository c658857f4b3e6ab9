#include "PhonesElsewhere.h"

#include "AndroidTools.h"
#include "EmulatorProcess.h"

#include <QPointer>

#include <QCoro/QCoroTimer>

#include <algorithm>

namespace {

const QLatin1String serialPrefix("emulator-");

// The console ports of the emulators in `adb devices` output, whatever state adb gives them.
QList<int> emulatorPorts(const QString &listing)
{
    QList<int> ports;
    for (const QString &line : listing.split(QLatin1Char('\n'))) {
        const QString serial = line.section(QLatin1Char('\t'), 0, 0).trimmed();
        bool number = false;
        const int port = serial.mid(serialPrefix.size()).toInt(&number);
        if (serial.startsWith(serialPrefix) && number && line.contains(QLatin1Char('\t')))
            ports.append(port);
    }
    std::sort(ports.begin(), ports.end());
    return ports;
}

// "a", "a and b", "a, b and c".
QString listed(const QStringList &items)
{
    return items.size() < 2
        ? items.value(0)
        : items.mid(0, items.size() - 1).join(QStringLiteral(", ")) + QStringLiteral(" and ") + items.last();
}

} // namespace

PhonesElsewhere::PhonesElsewhere(OurPorts ours, QObject *parent)
    : QObject(parent)
    , m_ours(std::move(ours))
{ }

QVariantMap PhonesElsewhere::phonesVariant() const
{
    QVariantMap map;
    for (auto phone = m_phones.begin(); phone != m_phones.end(); ++phone)
        map.insert(phone.key(), phone.value());
    return map;
}

QCoro::Task<> PhonesElsewhere::scanTask()
{
    QPointer<PhonesElsewhere> self(this);
    if (!AndroidTools::adbPath()) {
        // What was seen before stays shown: nothing says those emulators have gone.
        m_problem = QStringLiteral("adb is not installed, so the running emulators cannot be listed.");
        Q_EMIT changed();
        co_return;
    }
    const double timeout = EmulatorProcess::timing().adbTimeout;
    auto listing = AndroidTools::runADB({QStringLiteral("devices")}, std::nullopt, timeout);
    const ProcessResult devices = co_await std::move(listing);
    if (!self)
        co_return;
    if (!devices.isClean()) {
        QString said = devices.launchError.value_or(devices.text.trimmed().section(QLatin1Char('\n'), 0, 0));
        if (said.isEmpty()) {
            // "The command did not finish in time." inside the sentence.
            said = devices.failureSummary().chopped(1);
            said[0] = said[0].toLower();
        }
        m_problem = QStringLiteral("adb could not list the running emulators (%1).").arg(said);
        Q_EMIT changed();
        co_return;
    }

    // Asked after the listing: a phone of ours that started meanwhile is ours.
    const QSet<int> ours = m_ours();
    QMap<QString, QStringList> phones;
    QSet<int> foreign;
    QStringList unnamed;
    for (const int port : emulatorPorts(devices.text)) {
        if (ours.contains(port))
            continue;
        foreign.insert(port);
        const QString serial = serialPrefix + QString::number(port);
        auto asking = AndroidTools::runADB(
            {QStringLiteral("emu"), QStringLiteral("avd"), QStringLiteral("name")}, serial, timeout);
        const ProcessResult answer = co_await std::move(asking);
        if (!self)
            co_return;
        // The console answers with the name on one line and "OK" on the next.
        const QString name = answer.text.section(QLatin1Char('\n'), 0, 0).trimmed();
        if (answer.isClean() && !name.isEmpty() && name != QLatin1String("OK")
            && !name.startsWith(QLatin1String("KO")))
            phones[name].append(serial);
        else
            unnamed.append(serial);
    }
    m_phones = std::move(phones);
    m_ports = std::move(foreign);
    m_problem.reset();
    if (unnamed.size() == 1)
        m_problem = unnamed.first() + QStringLiteral(" did not say which phone it runs.");
    else if (!unnamed.isEmpty())
        m_problem = listed(unnamed) + QStringLiteral(" did not say which phones they run.");
    Q_EMIT changed();
}

void PhonesElsewhere::stop(const QString &name)
{
    stopTask(name);
}

QCoro::Task<> PhonesElsewhere::stopTask(QString name)
{
    const QStringList serials = m_phones.value(name);
    if (serials.isEmpty() || m_stopping.contains(name))
        co_return;
    QPointer<PhonesElsewhere> self(this);
    m_stopping.append(name);
    Q_EMIT changed();
    const EmulatorProcess::Timing timing = EmulatorProcess::timing();
    bool asked = true;
    for (const QString &serial : serials) {
        auto killing = AndroidTools::runADB(
            {QStringLiteral("emu"), QStringLiteral("kill")}, serial, timing.adbTimeout);
        const ProcessResult result = co_await std::move(killing);
        if (!self)
            co_return;
        if (!result.isClean()) {
            asked = false;
            Q_EMIT stopFailed(name, result.launchError.value_or(result.text.trimmed()));
        }
    }
    // An emulator takes a moment to go; it is gone once adb no longer lists it.
    for (int round = 0; round < timing.stopWaitRounds && asked; ++round) {
        auto looking = scanTask();
        co_await std::move(looking);
        if (!self)
            co_return;
        if (!m_phones.contains(name))
            break;
        auto sleeping = QCoro::sleepFor(timing.stopWaitStep);
        co_await std::move(sleeping);
        if (!self)
            co_return;
    }
    m_stopping.removeAll(name);
    Q_EMIT changed();
}
