#include "AVDInfo.h"
#include "DeviceDef.h"
#include "SystemImage.h"

#include <QMetaProperty>
#include <QSet>
#include <QTest>

namespace {

QVariant gadgetProperty(const QMetaObject &meta, const void *gadget, const char *name)
{
    const int index = meta.indexOfProperty(name);
    return index < 0 ? QVariant() : meta.property(index).readOnGadget(gadget);
}

}

class TestCatalogRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void androidName_data()
    {
        QTest::addColumn<qint64>("api");
        QTest::addColumn<QString>("name");

        QTest::newRow("32") << qint64(32) << "Android (API 32)";
        QTest::newRow("33") << qint64(33) << "Android 13";
        QTest::newRow("34") << qint64(34) << "Android 14";
        QTest::newRow("35") << qint64(35) << "Android 15";
        QTest::newRow("36") << qint64(36) << "Android 16";
        QTest::newRow("37") << qint64(37) << "Android (API 37)";
        QTest::newRow("no digit grouping") << qint64(1234567) << "Android (API 1234567)";
    }

    void androidName()
    {
        QFETCH(qint64, api);
        QFETCH(QString, name);
        QCOMPARE((SystemImage {"x", api, "google_apis", false}).androidName(), name);
    }

    void label_data()
    {
        QTest::addColumn<qint64>("api");
        QTest::addColumn<QString>("variant");
        QTest::addColumn<QString>("label");

        QTest::newRow("Play") << qint64(34) << "google_apis_playstore"
                              << "Android 14 (API 34), Google Play";
        QTest::newRow("Google APIs") << qint64(35) << "google_apis"
                                     << "Android 15 (API 35), Google APIs";
        QTest::newRow("unnamed level repeats the number") << qint64(30) << "google_apis"
                                                          << "Android (API 30) (API 30), Google APIs";
        QTest::newRow("empty variant") << qint64(33) << ""
                                       << "Android 13 (API 33), Google APIs";
        QTest::newRow("other variant") << qint64(36) << "default"
                                       << "Android 16 (API 36), Google APIs";
        QTest::newRow("Play variant in another case") << qint64(34) << "Google_Apis_Playstore"
                                                      << "Android 14 (API 34), Google APIs";
    }

    void label()
    {
        QFETCH(qint64, api);
        QFETCH(QString, variant);
        QFETCH(QString, label);
        QCOMPARE((SystemImage {"x", api, variant, false}).label(), label);
    }

    // Same identity, different values: lists follow the identity, change detection the value.
    void identityIsNotEquality()
    {
        const DeviceDef pixel {"pixel_7", "Pixel 7", "Google"};
        const DeviceDef other {"pixel_7", "Pixel 7", ""};
        QCOMPARE(pixel.identity(), other.identity());
        QVERIFY(pixel != other);
        QVERIFY(qHash(pixel) != qHash(other));
        QCOMPARE(qHash(pixel), qHash(DeviceDef {"pixel_7", "Pixel 7", "Google"}));
        QCOMPARE((QSet<DeviceDef> {pixel, other, pixel}).size(), 2);

        const SystemImage image {"system-images;android-34;google_apis;arm64-v8a", 34, "google_apis", false};
        SystemImage installed = image;
        installed.installed = true;
        QCOMPARE(image.identity(), installed.identity());
        QVERIFY(image != installed);
        QCOMPARE((QSet<SystemImage> {image, installed, installed}).size(), 2);

        const AVDInfo phone {"Pixel_7", "/avd/Pixel_7.avd", "Android 14.0", ""};
        AVDInfo broken = phone;
        broken.error = QStringLiteral("Missing system image");
        QCOMPARE(phone.identity(), broken.identity());
        QVERIFY(phone != broken);
        QCOMPARE((QSet<AVDInfo> {phone, broken, phone}).size(), 2);
    }

    // QML views read list entries through these properties.
    void propertiesForViews()
    {
        const SystemImage image {
            "system-images;android-35;google_apis_playstore;arm64-v8a", 35, "google_apis_playstore", true};
        const QMetaObject &meta = SystemImage::staticMetaObject;
        QCOMPARE(gadgetProperty(meta, &image, "id"), QVariant(image.id));
        QCOMPARE(gadgetProperty(meta, &image, "api"), QVariant(qint64(35)));
        QCOMPARE(gadgetProperty(meta, &image, "installed"), QVariant(true));
        QCOMPARE(gadgetProperty(meta, &image, "androidName"), QVariant(QStringLiteral("Android 15")));
        QCOMPARE(gadgetProperty(meta, &image, "label"),
            QVariant(QStringLiteral("Android 15 (API 35), Google Play")));

        const DeviceDef device {"pixel_8", "Pixel 8", "Google"};
        QCOMPARE(
            gadgetProperty(DeviceDef::staticMetaObject, &device, "oem"), QVariant(QStringLiteral("Google")));

        const AVDInfo phone {"P", "/p", "Android 15.0", "broken"};
        QCOMPARE(gadgetProperty(AVDInfo::staticMetaObject, &phone, "basedOn"), QVariant(phone.basedOn));
        QCOMPARE(gadgetProperty(AVDInfo::staticMetaObject, &phone, "error"), QVariant(phone.error));
    }
};

QTEST_GUILESS_MAIN(TestCatalogRecords)
#include "tst_catalogrecords.moc"
