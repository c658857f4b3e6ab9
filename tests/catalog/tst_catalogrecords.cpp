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

    // A phone in words: its model and the kind of its image, not avdmanager's tag.
    void phoneSummary_data()
    {
        columns<QString, QString, QString>("device", "basedOn", "summary");

        QTest::newRow("Google Play")
            << "pixel_8_pro"
            << "Android 14.0 (\"UpsideDownCake\") Tag/ABI: google_apis_playstore/arm64-v8a"
            << "Pixel 8 Pro, Android 14.0, Google Play";
        QTest::newRow("Google APIs") << "pixel_7"
                                     << "Android 15.0 Tag/ABI: google_apis/arm64-v8a"
                                     << "Pixel 7, Android 15.0, Google APIs";
        QTest::newRow("another tag, no model") << ""
                                               << "Android 13.0 (\"Tiramisu\") Tag/ABI: default/arm64-v8a"
                                               << "Android 13.0, default";
        QTest::newRow("other wording") << "pixel_7"
                                       << "Android API 36"
                                       << "Android API 36";
    }

    void phoneSummary()
    {
        auto [device, basedOn, summary] = row<QString, QString, QString>("device", "basedOn", "summary");
        AVDInfo phone {"P", "/p", basedOn, "", ""};
        phone.device = device;
        QCOMPARE(phone.summary(), summary);
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

        const AVDInfo phone {"Pixel_7", "/avd/Pixel_7.avd", "Android 14.0", "", ""};
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
        const AVDInfo phone {"P", "/p", "Android 15.0", "broken", ""};
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
