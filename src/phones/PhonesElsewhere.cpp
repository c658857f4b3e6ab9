// Emulators that another program started (Android Studio, a terminal): found through adb at each
// refresh, shown beside our own runners, and stopped through adb.
#include "PhoneStore.h"

#include "AndroidTools.h"

#include <QPointer>

#include <QCoro/QCoroTimer>

namespace {

const QLatin1String serialPrefix("emulator-");

// The console ports of the emulators in `adb devices` output, whatever state adb gives them.
QSet<int> emulatorPorts(const QString &listing)
{
    QSet<int> ports;
    for (const QString &line : listing.split(QLatin1Char('\n'))) {
        const QString serial = line.section(QLatin1Char('\t'), 0, 0).trimmed();
        bool number = false;
        const int port = serial.mid(serialPrefix.size()).toInt(&number);
        if (serial.startsWith(serialPrefix) && number && line.contains(QLatin1Char('\t')))
            ports.insert(port);
    }
    return ports;
}

} // namespace

QVariantMap PhoneStore::elsewhereVariant() const
{
    QVariantMap map;
    for (auto phone = m_elsewhere.begin(); phone != m_elsewhere.end(); ++phone)
        map.insert(phone.key(), phone.value());
    return map;
}

QVariantList PhoneStore::runningTargets() const
{
    QMap<QString, QString> targets = m_elsewhere;
    for (EmulatorProcess *runner : runningRunners())
        targets.insert(runner->name(), runner->serial());
    QVariantList list;
    for (auto target = targets.begin(); target != targets.end(); ++target)
        list.append(
            QVariantMap {{QStringLiteral("name"), target.key()}, {QStringLiteral("serial"), target.value()}});
    return list;
}

void PhoneStore::setElsewhere(QMap<QString, QString> phones, QSet<int> ports)
{
    m_elsewhere = std::move(phones);
    m_elsewherePorts = std::move(ports);
    Q_EMIT elsewhereChanged();
    Q_EMIT runnersChanged();
    Q_EMIT changed();
}

QCoro::Task<> PhoneStore::findElsewhereTask()
{
    if (!AndroidTools::adbPath()) {
        setElsewhere({}, {});
        co_return;
    }
    QPointer<PhoneStore> self(this);
    const double timeout = EmulatorProcess::timing().adbTimeout;
    auto listing = AndroidTools::runADB({QStringLiteral("devices")}, std::nullopt, timeout);
    const ProcessResult devices = co_await std::move(listing);
    if (!self || !devices.isClean())
        co_return;

    QSet<int> foreign = emulatorPorts(devices.text);
    for (EmulatorProcess *runner : std::as_const(m_runners)) {
        if (runner->state() != EmulatorProcess::State::Stopped)
            foreign.remove(runner->port());
    }
    QMap<QString, QString> phones;
    for (const int port : std::as_const(foreign)) {
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
            phones.insert(name, serial);
    }
    setElsewhere(std::move(phones), std::move(foreign));
}

void PhoneStore::stopElsewhere(const QString &name)
{
    stopElsewhereTask(name);
}

QCoro::Task<> PhoneStore::stopElsewhereTask(QString name)
{
    const QString serial = m_elsewhere.value(name);
    if (serial.isEmpty() || m_stoppingElsewhere.contains(name))
        co_return;
    QPointer<PhoneStore> self(this);
    m_stoppingElsewhere.append(name);
    Q_EMIT elsewhereChanged();
    const EmulatorProcess::Timing timing = EmulatorProcess::timing();
    auto killing
        = AndroidTools::runADB({QStringLiteral("emu"), QStringLiteral("kill")}, serial, timing.adbTimeout);
    const ProcessResult result = co_await std::move(killing);
    if (!self)
        co_return;
    if (!result.isClean()) {
        setError(QStringLiteral("Could not stop ") + name + QStringLiteral("."),
            result.launchError.value_or(result.text.trimmed()));
    }
    // The emulator takes a moment to go; it is gone once adb no longer lists it.
    for (int round = 0; round < timing.stopWaitRounds && result.isClean(); ++round) {
        auto looking = findElsewhereTask();
        co_await std::move(looking);
        if (!self)
            co_return;
        if (m_elsewhere.value(name) != serial)
            break;
        auto sleeping = QCoro::sleepFor(timing.stopWaitStep);
        co_await std::move(sleeping);
        if (!self)
            co_return;
    }
    m_stoppingElsewhere.removeAll(name);
    Q_EMIT elsewhereChanged();
    Q_EMIT changed();
}
