#pragma once

#include "DeviceFeature.h"

#include <QVariantList>
#include <QVariantMap>

// Rotation, location, battery and network of a running phone, through the emulator's console. Each
// control remembers what it last set, as the phone itself cannot be asked.
class PhoneControls : public DeviceFeature
{
    Q_OBJECT
    QML_ELEMENT
    // What each control last set, shown as text: rotation, location, battery, charger, speed, delay.
    Q_PROPERTY(QVariantMap lastSet READ lastSet NOTIFY lastSetChanged)
    // Each as {name, latitude, longitude}.
    Q_PROPERTY(QVariantList places READ places CONSTANT)
    // Each as {label, value}: the console's preset names.
    Q_PROPERTY(QVariantList speeds READ speeds CONSTANT)
    Q_PROPERTY(QVariantList delays READ delays CONSTANT)

public:
    using DeviceFeature::DeviceFeature;

    QVariantMap lastSet() const { return m_lastSet; }
    static QVariantList places();
    static QVariantList speeds();
    static QVariantList delays();

    Q_INVOKABLE void rotate(bool left);
    Q_INVOKABLE void setLocation(double latitude, double longitude, const QString &place = {});
    Q_INVOKABLE void setBatteryLevel(int percent);
    Q_INVOKABLE void setCharger(bool connected);
    Q_INVOKABLE void setNetworkSpeed(const QString &preset);
    Q_INVOKABLE void setNetworkDelay(const QString &preset);

    // Sends the console commands in turn; when all succeed, `setting` shows `shown`.
    QCoro::Task<> sendTask(QString setting, QList<QStringList> commands, QString shown);

Q_SIGNALS:
    void lastSetChanged();

protected:
    void serialSet() override;

private:
    QVariantMap m_lastSet;
};
