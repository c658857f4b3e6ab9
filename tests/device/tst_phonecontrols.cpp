#include "DataTable.h"
#include "PhoneControls.h"
#include "RunningPhone.h"

#include <QFile>
#include <QTest>

#include <memory>

class TestPhoneControls : public QObject
{
    Q_OBJECT

    std::unique_ptr<RunningPhone> m_phone;

    QStringList consoleLog() const
    {
        QFile log(m_phone->sim.stateDir() + QStringLiteral("/emulators/5554/console.log"));
        if (!log.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(log.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

private Q_SLOTS:
    void initTestCase() { m_phone = std::make_unique<RunningPhone>(QStringLiteral("Pixel_7")); }

    void cleanup() { m_phone->sim.clearBehaviour(QStringLiteral("adb.console.fail")); }

    void controls_data()
    {
        columns<QString, QString, QStringList, QString, QString>(
            "control", "refusal", "sent", "setting", "message");
        const QStringList none;
        QTest::newRow("rotate left") << "left"
                                     << "" << QStringList {"rotate"} << "Turned left"
                                     << "";
        QTest::newRow("rotate right: three quarter turns anticlockwise")
            << "right"
            << "" << QStringList {"rotate", "rotate", "rotate"} << "Turned right"
            << "";
        QTest::newRow("a place: longitude first")
            << "tokyo"
            << "" << QStringList {"geo fix 139.700500 35.659500"} << "Shibuya Crossing, Tokyo"
            << "";
        QTest::newRow("coordinates") << "coordinates"
                                     << "" << QStringList {"geo fix -0.128100 51.508000"}
                                     << "51.508000, -0.128100"
                                     << "";
        QTest::newRow("latitude out of range")
            << "north of the pole"
            << "" << none << ""
            << "A latitude is between -90 and 90, a longitude between -180 and 180.";
        QTest::newRow("battery") << "battery 15"
                                 << "" << QStringList {"power capacity 15"} << "15 %"
                                 << "";
        QTest::newRow("battery out of range") << "battery 101"
                                              << "" << none << ""
                                              << "A battery level is between 0 and 100 %.";
        QTest::newRow("charger") << "charger"
                                 << "" << QStringList {"power ac on", "power status charging"} << "Charging"
                                 << "";
        QTest::newRow("network speed") << "speed"
                                       << "" << QStringList {"network speed edge"} << "EDGE"
                                       << "";
        QTest::newRow("network delay") << "delay"
                                       << "" << QStringList {"network delay gprs"} << "GPRS"
                                       << "";
        QTest::newRow("refused by the console")
            << "battery 15"
            << "power: no battery in this device" << none << ""
            << "The phone refused \"power capacity 15\": power: no battery in this device";
    }

    void controls()
    {
        const auto [control, refusal, sent, setting, message]
            = row<QString, QString, QStringList, QString, QString>(
                "control", "refusal", "sent", "setting", "message");
        if (!refusal.isEmpty())
            m_phone->sim.setBehaviour(QStringLiteral("adb.console.fail"), refusal.toUtf8());
        PhoneControls controls;
        controls.setSerial(m_phone->serial);
        const qsizetype before = consoleLog().size();
        const QVariantMap places = controls.places().at(4).toMap();
        if (control == "left" || control == "right")
            controls.rotate(control == "left");
        else if (control == "tokyo")
            controls.setLocation(
                places["latitude"].toDouble(), places["longitude"].toDouble(), places["name"].toString());
        else if (control == "coordinates")
            controls.setLocation(51.508, -0.1281);
        else if (control == "north of the pole")
            controls.setLocation(91, 0);
        else if (control.startsWith("battery"))
            controls.setBatteryLevel(control.mid(8).toInt());
        else if (control == "charger")
            controls.setCharger(true);
        else if (control == "speed")
            controls.setNetworkSpeed("edge");
        else
            controls.setNetworkDelay("gprs");
        QTRY_VERIFY(!controls.busy());
        QCOMPARE(consoleLog().mid(before), sent);
        QCOMPARE(controls.message(), message);
        QCOMPARE(controls.failed(), !message.isEmpty());
        QCOMPARE(controls.lastSet()
                     .value(control.startsWith("battery")               ? "battery"
                             : control == "left" || control == "right"  ? "rotation"
                             : control == "charger"                     ? "charger"
                             : control == "speed" || control == "delay" ? control
                                                                        : "location")
                     .toString(),
            setting);
    }
};

QTEST_GUILESS_MAIN(TestPhoneControls)
#include "tst_phonecontrols.moc"
