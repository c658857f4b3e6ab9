#include "PhoneControls.h"

#include <QPointer>

namespace {

struct Place
{
    const char *name;
    double latitude;
    double longitude;
};

const Place placeTable[] = {
    {"Googleplex, Mountain View", 37.4220, -122.0841},
    {"Apple Park, Cupertino", 37.3349, -122.0090},
    {"Times Square, New York", 40.7580, -73.9855},
    {"Trafalgar Square, London", 51.5080, -0.1281},
    {"Shibuya Crossing, Tokyo", 35.6595, 139.7005},
    {"Sydney Opera House", -33.8568, 151.2153},
};

struct Preset
{
    const char *label;
    const char *value;
};

// The console's own preset names, from fastest to slowest.
const Preset speedTable[] = {{"Full", "full"}, {"LTE", "lte"}, {"HSDPA", "hsdpa"}, {"UMTS", "umts"},
    {"EDGE", "edge"}, {"GPRS", "gprs"}, {"GSM", "gsm"}};
const Preset delayTable[] = {{"None", "none"}, {"UMTS", "umts"}, {"EDGE", "edge"}, {"GPRS", "gprs"}};

template <std::size_t N> QVariantList presets(const Preset (&table)[N])
{
    QVariantList list;
    for (const Preset &each : table) {
        list.append(QVariantMap {{QStringLiteral("label"), QString::fromUtf8(each.label)},
            {QStringLiteral("value"), QString::fromUtf8(each.value)}});
    }
    return list;
}

template <std::size_t N> QString labelOf(const Preset (&table)[N], const QString &value)
{
    for (const Preset &each : table) {
        if (value == QLatin1String(each.value))
            return QString::fromUtf8(each.label);
    }
    return {};
}

QStringList words(std::initializer_list<QString> list)
{
    return QStringList(list);
}

} // namespace

QVariantList PhoneControls::places()
{
    QVariantList list;
    for (const Place &each : placeTable) {
        list.append(QVariantMap {{QStringLiteral("name"), QString::fromUtf8(each.name)},
            {QStringLiteral("latitude"), each.latitude}, {QStringLiteral("longitude"), each.longitude}});
    }
    return list;
}

QVariantList PhoneControls::speeds()
{
    return presets(speedTable);
}

QVariantList PhoneControls::delays()
{
    return presets(delayTable);
}

void PhoneControls::rotate(bool left)
{
    // The console only turns the screen a quarter anticlockwise; a right turn is three of those.
    const QStringList once = {QStringLiteral("rotate")};
    sendTask(QStringLiteral("rotation"),
        left ? QList<QStringList> {once} : QList<QStringList> {once, once, once},
        left ? QStringLiteral("Turned left") : QStringLiteral("Turned right"));
}

void PhoneControls::setLocation(double latitude, double longitude, const QString &place)
{
    if (!(latitude >= -90 && latitude <= 90 && longitude >= -180 && longitude <= 180)) {
        report(QStringLiteral("A latitude is between -90 and 90, a longitude between -180 and 180."), true);
        return;
    }
    const QString lat = QString::number(latitude, 'f', 6);
    const QString lon = QString::number(longitude, 'f', 6);
    const QString shown = place.isEmpty() ? lat + QStringLiteral(", ") + lon : place;
    // The console takes the longitude first.
    sendTask(
        QStringLiteral("location"), {words({QStringLiteral("geo"), QStringLiteral("fix"), lon, lat})}, shown);
}

void PhoneControls::setBatteryLevel(int percent)
{
    if (percent < 0 || percent > 100) {
        report(QStringLiteral("A battery level is between 0 and 100 %."), true);
        return;
    }
    sendTask(QStringLiteral("battery"),
        {words({QStringLiteral("power"), QStringLiteral("capacity"), QString::number(percent)})},
        QString::number(percent) + QStringLiteral(" %"));
}

void PhoneControls::setCharger(bool connected)
{
    const QString power = QStringLiteral("power");
    sendTask(QStringLiteral("charger"),
        {words({power, QStringLiteral("ac"), connected ? QStringLiteral("on") : QStringLiteral("off")}),
            words({power, QStringLiteral("status"),
                connected ? QStringLiteral("charging") : QStringLiteral("discharging")})},
        connected ? QStringLiteral("Charging") : QStringLiteral("On battery"));
}

void PhoneControls::setNetworkSpeed(const QString &preset)
{
    const QString label = labelOf(speedTable, preset);
    if (!label.isEmpty()) {
        sendTask(QStringLiteral("speed"),
            {words({QStringLiteral("network"), QStringLiteral("speed"), preset})}, label);
    }
}

void PhoneControls::setNetworkDelay(const QString &preset)
{
    const QString label = labelOf(delayTable, preset);
    if (!label.isEmpty()) {
        sendTask(QStringLiteral("delay"),
            {words({QStringLiteral("network"), QStringLiteral("delay"), preset})}, label);
    }
}

QCoro::Task<> PhoneControls::sendTask(QString setting, QList<QStringList> commands, QString shown)
{
    QPointer<PhoneControls> self(this);
    for (const QStringList &command : std::as_const(commands)) {
        auto running = adb(QStringList {QStringLiteral("emu")} + command);
        const ProcessResult result = co_await std::move(running);
        if (!self
            || !reportFailure(result, QStringLiteral("The phone refused \"%1\"").arg(command.join(' '))))
            co_return;
    }
    report(QString());
    m_lastSet.insert(setting, shown);
    Q_EMIT lastSetChanged();
}

void PhoneControls::serialSet()
{
    m_lastSet.clear();
    Q_EMIT lastSetChanged();
}
