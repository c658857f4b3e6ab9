#include "AVDInfo.h"
#include "DataTable.h"
#include "DeviceDef.h"
#include "SystemImage.h"

#include <QMetaProperty>
#include <QSet>
#include <QTest>

class TestCatalogRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The label starts with the Android name, which the API level follows.
    void names_data()
    {
        columns<qint64, QString, QString>("api", "variant", "label");

        QTest::newRow("32") << qint64(32) << "google_apis"
                            << "Android (API 32) (API 32), Google APIs";
        QTest::newRow("33, empty variant") << qint64(33) << ""
                                           << "Android 13 (API 33), Google APIs";
        QTest::newRow("34, Play") << qint64(34) << "google_apis_playstore"
                                  << "Android 14 (API 34), Google Play";
        QTest::newRow("35") << qint64(35) << "google_apis"
                            << "Android 15 (API 35), Google APIs";
        QTest::newRow("36, other variant") << qint64(36) << "default"
                                           << "Android 16 (API 36), Google APIs";
        QTest::newRow("37, Play in another case") << qint64(37) << "Google_Apis_Playstore"
                                                  << "Android (API 37) (API 37), Google APIs";
        QTest::newRow("no digit grouping") << qint64(1234567) << "google_apis"
                                           << "Android (API 1234567) (API 1234567), Google APIs";
    }

    void names()
    {
        auto [api, variant, label] = row<qint64, QString, QString>("api", "variant", "label");
        const SystemImage image {"x", api, variant, false};
        QCOMPARE(image.label(), label);
        QCOMPARE(image.androidName(), label.left(label.lastIndexOf(QLatin1String(" (API "))));
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
        QCOMPARE((QSet<SystemImage> {image, installed, installed}).size(), 2);

        const AVDInfo phone {"Pixel_7", "/avd/Pixel_7.avd", "Android 14.0", ""};
        AVDInfo broken = phone;
        broken.error = QStringLiteral("Missing system image");
        QCOMPARE(phone.identity(), broken.identity());
        QCOMPARE((QSet<AVDInfo> {phone, broken, phone}).size(), 2);
    }

    // QML views read list entries through these properties.
    void propertiesForViews()
    {
        const SystemImage image {
            "system-images;android-35;google_apis_playstore;arm64-v8a", 35, "google_apis_playstore", true};
        const DeviceDef device {"pixel_8", "Pixel 8", "Google"};
        const AVDInfo phone {"P", "/p", "Android 15.0", "broken"};
        const auto read = [](const QMetaObject &meta, const void *gadget, const char *name) {
            const int index = meta.indexOfProperty(name);
            return index < 0 ? QVariant() : meta.property(index).readOnGadget(gadget);
        };
        const QMetaObject &images = SystemImage::staticMetaObject;
        QCOMPARE((QVariantList {read(images, &image, "id"), read(images, &image, "api"),
                     read(images, &image, "installed"), read(images, &image, "androidName"),
                     read(images, &image, "label"), read(DeviceDef::staticMetaObject, &device, "oem"),
                     read(AVDInfo::staticMetaObject, &phone, "basedOn"),
                     read(AVDInfo::staticMetaObject, &phone, "error")}),
            (QVariantList {image.id, qint64(35), true, QStringLiteral("Android 15"),
                QStringLiteral("Android 15 (API 35), Google Play"), QStringLiteral("Google"), phone.basedOn,
                phone.error}));
    }
};

QTEST_GUILESS_MAIN(TestCatalogRecords)
#include "tst_catalogrecords.moc"
