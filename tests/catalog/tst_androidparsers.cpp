#include "AndroidParsers.h"
#include "DataTable.h"

#include <QTest>

namespace {

QString crlf(QString text)
{
    return text.replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
}

const QString devicesExample = QStringLiteral(R"txt(Available devices definitions:
id: 0 or "automotive_1024p_landscape"
    Name: Automotive (1024p landscape)
    OEM : Google
    Tag : android-automotive-playstore
---------
id: 27 or "pixel_7"
    Name: Pixel 7
    OEM : Google
---------
id: 40 or "medium_phone")txt");

const QList<DeviceDef> devicesExampleResult {
    {"automotive_1024p_landscape", "Automotive (1024p landscape)", "Google"},
    {"pixel_7", "Pixel 7", "Google"},
    {"medium_phone", "medium_phone", ""},
};

const QString avdsExample = QStringLiteral(R"txt(Available Android Virtual Devices:
    Name: Pixel_7_API_34
  Device: pixel_7 (Google)
    Path: /Users/me/.android/avd/Pixel_7_API_34.avd
  Target: Google Play (Google Inc.)
          Based on: Android 14.0 ("UpsideDownCake") Tag/ABI: google_apis_playstore/arm64-v8a
  Sdcard: 512 MB
---------
The following Android Virtual Devices could not be loaded:
    Name: Old_Phone
    Path: /Users/me/.android/avd/Old_Phone.avd
   Error: Google pixel_3 no longer exists as a device)txt");

const QList<AVDInfo> avdsExampleResult {
    {"Pixel_7_API_34", "/Users/me/.android/avd/Pixel_7_API_34.avd",
        "Android 14.0 (\"UpsideDownCake\") Tag/ABI: google_apis_playstore/arm64-v8a", "", "pixel_7"},
    {"Old_Phone", "/Users/me/.android/avd/Old_Phone.avd", "", "Google pixel_3 no longer exists as a device",
        ""},
};

const QString imagesExample = QStringLiteral(R"txt(Installed packages:
  Path                                                     | Version | Description                         | Location
  -------                                                  | ------- | -------                             | -------
  emulator                                                 | 35.2.10 | Android Emulator                    | emulator
  system-images;android-34;google_apis;arm64-v8a           | 14      | Google APIs ARM 64 v8a System Image | system-images/android-34/google_apis/arm64-v8a

Available Packages:
  Path                                                     | Version | Description
  -------                                                  | ------- | -------
  system-images;android-33;google_apis;arm64-v8a           | 17      | Google APIs ARM 64 v8a System Image
  system-images;android-34;default;arm64-v8a               | 14      | ARM 64 v8a System Image
  system-images;android-34;google_apis;arm64-v8a           | 14      | Google APIs ARM 64 v8a System Image
  system-images;android-34;google_apis;x86_64              | 14      | Google APIs Intel x86_64 Atom System Image
  system-images;android-34;google_apis_playstore;arm64-v8a | 14      | Google Play ARM 64 v8a System Image
  system-images;android-35;google_apis_playstore;arm64-v8a | 9       | Google Play ARM 64 v8a System Image

Available Updates:
  system-images;android-35;google_apis;arm64-v8a           | 9       | 10
)txt");

const QList<SystemImage> imagesExampleResult {
    {"system-images;android-35;google_apis_playstore;arm64-v8a", 35, "google_apis_playstore", false},
    {"system-images;android-34;google_apis;arm64-v8a", 34, "google_apis", true},
    {"system-images;android-34;google_apis_playstore;arm64-v8a", 34, "google_apis_playstore", false},
};

QString availableRows(const QStringList &paths)
{
    QString text = QStringLiteral("Available Packages:\n");
    for (const QString &path : paths)
        text += QStringLiteral("  ") + path + QStringLiteral(" | 1 | System Image\n");
    return text;
}

SystemImage available(const QString &path, qint64 api, const QString &variant)
{
    return {path, api, variant, false};
}

}

class TestAndroidParsers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parseDevices_data()
    {
        columns<QString, QList<DeviceDef>>("text", "devices");

        QTest::newRow("example") << devicesExample << devicesExampleResult;
        QTest::newRow("example, CR LF") << crlf(devicesExample) << devicesExampleResult;
        QTest::newRow("progress lines, spaces and quotes")
            << "[====  ] 25% Loading local repository...\rid: 41 or \"2.7in QVGA\"\nName: 2.7\" QVGA\nOEM : "
               "Generic"
            << QList<DeviceDef> {{"2.7in QVGA", "2.7\" QVGA", "Generic"}};
        QTest::newRow("empty") << QString() << QList<DeviceDef> {};
        QTest::newRow("id without quotes drops its lines")
            << "id: 3 or pixel_2\nName: Pixel 2\nOEM : Google\nid: 4 or \"pixel_3\""
            << QList<DeviceDef> {{"pixel_3", "pixel_3", ""}};
        QTest::newRow("id with only an opening quote")
            << "id: 3 or \"pixel_2\nName: Pixel 2\n---------" << QList<DeviceDef> {};
        QTest::newRow("OEM without colon keeps the manufacturer")
            << "id: 1 or \"a\"\nOEM : Acme\nOEM Acme Two" << QList<DeviceDef> {{"a", "a", "Acme"}};
        QTest::newRow("name and OEM before the first id are lost")
            << "Name: Stray\nOEM : Stray\nid: 1 or \"a\"" << QList<DeviceDef> {{"a", "a", ""}};
        QTest::newRow("duplicates kept in order")
            << "id: 1 or \"a\"\nName: First\nid: 2 or \"a\"\nName: Second"
            << QList<DeviceDef> {{"a", "First", ""}, {"a", "Second", ""}};
        QTest::newRow("prefixes are case-sensitive")
            << "id: 1 or \"a\"\nname: Lower\nOem : Lower\nID: 2 or \"b\""
            << QList<DeviceDef> {{"a", "a", ""}};
        QTest::newRow("every line break ends a line")
            << QStringLiteral("id: 1 or \"a\"\vName: A\fid: 2 or \"b\"\u0085Name: B\u2028id: 3 or "
                              "\"c\"\u2029Name: C\rOEM : X")
            << QList<DeviceDef> {{"a", "A", ""}, {"b", "B", ""}, {"c", "C", "X"}};
        QTest::newRow("tabs and space separators trimmed")
            << QStringLiteral("\tid: 1 or \"a\"\u00a0\n\u3000Name:\u2003Wide\t\n\u202fOEM :\u00a0Acme\u00a0")
            << QList<DeviceDef> {{"a", "Wide", "Acme"}};
    }

    void parseDevices()
    {
        auto [text, devices] = row<QString, QList<DeviceDef>>("text", "devices");
        QCOMPARE(AndroidParsers::parseDevices(text), devices);
    }

    void parseAVDs_data()
    {
        columns<QString, QList<AVDInfo>>("text", "phones");

        QTest::newRow("example") << avdsExample << avdsExampleResult;
        QTest::newRow("example, CR LF") << crlf(avdsExample) << avdsExampleResult;
        QTest::newRow("empty") << QString() << QList<AVDInfo> {};
        QTest::newRow("header only") << "Available Android Virtual Devices:\n" << QList<AVDInfo> {};
        QTest::newRow("two names in a row")
            << "Name: A\nName: B\nPath: /b"
            << QList<AVDInfo> {{"A", "", "", "", ""}, {"B", "/b", "", "", ""}};
        QTest::newRow("bare Name: is a phone with an empty name")
            << "Name:\nPath: /x\n---" << QList<AVDInfo> {{"", "/x", "", "", ""}};
        QTest::newRow("lines before Name: are discarded")
            << "Path: /stray\nError: stray\nName: A\n---------\nPath: /after"
            << QList<AVDInfo> {{"A", "", "", "", ""}};
        QTest::newRow("later lines overwrite earlier ones")
            << "Name: A\nPath: /one\nPath: /two\nError: x\nError: y"
            << QList<AVDInfo> {{"A", "/two", "", "y", ""}};
    }

    void parseAVDs()
    {
        auto [text, phones] = row<QString, QList<AVDInfo>>("text", "phones");
        QCOMPARE(AndroidParsers::parseAVDs(text), phones);
    }

    void parseImages_data()
    {
        columns<QString, QList<SystemImage>>("text", "images");

        const QString api33 = QStringLiteral("system-images;android-33;google_apis;arm64-v8a");
        const QString api34 = QStringLiteral("system-images;android-34;google_apis;arm64-v8a");
        const SystemImage installed34 {api34, 34, "google_apis", true};

        QTest::newRow("example") << imagesExample << imagesExampleResult;
        QTest::newRow("example, CR LF") << crlf(imagesExample) << imagesExampleResult;
        QTest::newRow("progress, warnings and other packages")
            << "[=   ] 3% Fetch remote repository...\rWarning: Observed package id 'platforms;android-35'\n"
               "Installed packages:\n  build-tools;34.0.0 | 34.0.0 | Build-Tools | build-tools/34.0.0\n"
               "  add-ons;addon-google_apis-google-24 | 1 | Google APIs\n  "
                + api34 + " | 14 | x | y\ndone"
            << QList<SystemImage> {installed34};
        QTest::newRow("variants and levels by their exact names")
            << availableRows({"system-images;android-35;google_apis_playstore_ps16k;arm64-v8a",
                   "system-images;android-34;android-automotive-playstore;arm64-v8a",
                   "system-images;android-VanillaIceCream;google_apis_playstore;arm64-v8a",
                   "system-images;android-34-ext10;google_apis;arm64-v8a"})
            << QList<SystemImage> {
                   available("system-images;android-34-ext10;google_apis;arm64-v8a", 34, "google_apis")};
        QTest::newRow("empty") << QString() << QList<SystemImage> {};
        QTest::newRow("rows before any heading") << api34 + " | 14 | x\n" << QList<SystemImage> {};
        QTest::newRow("heading inside a line")
            << "Note: Available Packages:\n" + api34 + " | 14 | x" << QList<SystemImage> {};
        QTest::newRow("headings are case-sensitive")
            << "Available packages:\n" + api34 + " | 14 | x" << QList<SystemImage> {};
        QTest::newRow("five parts, other ABI case, no bar")
            << availableRows({"system-images;android-34;google_apis;arm64-v8a;extra",
                   "system-images;android-34;google_apis;ARM64-V8A"})
                + api34
            << QList<SystemImage> {};
        QTest::newRow("only API 33: all kept")
            << availableRows({api33, "system-images;android-33;google_apis_playstore;arm64-v8a"})
            << QList<SystemImage> {available(api33, 33, "google_apis"),
                   available("system-images;android-33;google_apis_playstore;arm64-v8a", 33,
                       "google_apis_playstore")};
        QTest::newRow("API 33 and 34: only 34")
            << availableRows({api33, api34}) << QList<SystemImage> {available(api34, 34, "google_apis")};
        QTest::newRow("available, then installed") << availableRows({api34}) + "Installed packages:\n" + api34
                + " | 14 | x | y" << QList<SystemImage> {installed34};
        QTest::newRow("installed, then available") << "Installed packages:\n" + api34 + " | 14 | x | y\n"
                + availableRows({api34}) << QList<SystemImage> {installed34};
        QTest::newRow("update rows are not read")
            << "Available Updates:\n" + api34 + " | 13 | 14" << QList<SystemImage> {};
        QTest::newRow("same API and variant ordered by id")
            << availableRows({"system-images;android-34-ext9;google_apis;arm64-v8a",
                   "system-images;android-34-ext10;google_apis;arm64-v8a", api34})
            << QList<SystemImage> {
                   available("system-images;android-34-ext10;google_apis;arm64-v8a", 34, "google_apis"),
                   available("system-images;android-34-ext9;google_apis;arm64-v8a", 34, "google_apis"),
                   available(api34, 34, "google_apis")};
        QTest::newRow("API level must be decimal digits that fit")
            << availableRows({"system-images;android-;google_apis;arm64-v8a",
                   "system-images;android-99999999999999999999;google_apis;arm64-v8a",
                   QStringLiteral("system-images;android-3\u0664;google_apis;arm64-v8a"),
                   QStringLiteral("system-images;android-\u00b2;google_apis;arm64-v8a"),
                   "system-images;android-9223372036854775807;google_apis;arm64-v8a"})
            << QList<SystemImage> {
                   available("system-images;android-9223372036854775807;google_apis;arm64-v8a",
                       9223372036854775807, "google_apis")};
        QTest::newRow("columns trimmed of tabs and space separators")
            << QStringLiteral("\u3000Installed packages:\n\t") + api34 + QStringLiteral("\u00a0\t| 14 | x")
            << QList<SystemImage> {installed34};
    }

    void parseImages()
    {
        auto [text, images] = row<QString, QList<SystemImage>>("text", "images");
        QCOMPARE(AndroidParsers::parseImages(text), images);
    }
};

QTEST_GUILESS_MAIN(TestAndroidParsers)
#include "tst_androidparsers.moc"
