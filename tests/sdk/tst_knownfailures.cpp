#include "DataTable.h"
#include "KnownFailures.h"

#include <QTest>

namespace {

// Every wording each known failure is recognised by, as the tools print it; "" for a text none explains.
const std::pair<const char *, const char *> wordings[] = {
    {"no-matching-abis", "Failure [INSTALL_FAILED_NO_MATCHING_ABIS: Failed to extract native libraries]"},
    {"no-matching-abis", "Not installed: game.apk has native code only for x86, and this phone runs arm64"},
    {"update-incompatible",
        "failed to install /a/b c.apk: Failure [INSTALL_FAILED_UPDATE_INCOMPATIBLE: "
        "Existing package com.example.app signatures do not match newer version"},
    {"update-incompatible",
        "failed to install /a/b c.apk: Failure [INSTALL_FAILED_UPDATE_INCOMPATIBLE: "
        "Package com.example.app signatures do not match previously installed version"},
    {"version-downgrade", "Failure [INSTALL_FAILED_VERSION_DOWNGRADE: Downgrade detected]"},
    {"insufficient-storage", "Failure [INSTALL_FAILED_INSUFFICIENT_STORAGE: Failed to override installation"},
    {"unsigned-apk", "Failure [INSTALL_PARSE_FAILED_NO_CERTIFICATES: Scanning Failed.: No signature found"},
    {"unsigned-apk", "Failure [INSTALL_PARSE_FAILED_INCONSISTENT_CERTIFICATES: Package has mismatched"},
    {"unsigned-apk", "Failure [INSTALL_PARSE_FAILED_CERTIFICATE_ENCODING: Failed to collect certificates"},
    {"not-an-apk", "Failure [INSTALL_PARSE_FAILED_NOT_APK: Failed parse during installPackageLI"},
    {"not-an-apk", "Not installed: a.apk is not a zip archive (Not a zip archive), so it cannot be"},
    {"java-too-old", "Exception in thread \"main\" java.lang.UnsupportedClassVersionError: com/android"},
    {"java-missing", "The operation couldn’t be completed. Unable to locate a Java Runtime."},
    {"java-missing", "ERROR: JAVA_HOME is not set and no 'java' command could be found in your PATH."},
    {"licences-not-accepted", "Warning: License for package Android Emulator not accepted."},
    {"licences-not-accepted",
        "since their licenses or those of the packages they depend on were not accepted:"},
    {"licences-not-accepted",
        "Failed to install the following SDK packages as some licences have not been accepted."},
    {"system-image-missing", "PANIC: Broken AVD system path. Check your ANDROID_SDK_ROOT value [/sdk]!"},
    {"system-image-missing", "PANIC: Cannot find AVD system path. Please define ANDROID_SDK_ROOT"},
    {"x86-phone", "PANIC: Avd's CPU Architecture 'x86_64' is not supported by the QEMU2 emulator on aarch64"},
    {"x86-phone", "PANIC: Avd's CPU Architecture 'x86' is not supported by the QEMU2 emulator on aarch64"},
    {"intel-emulator",
        "Avd's CPU Architecture 'arm64' is not supported by the QEMU2 emulator on x86_64 host"},
    {"hypervisor", "HVF error: HV_UNSUPPORTED"},
    {"hypervisor", "qemu-system-aarch64: HVF error: HV_ERROR"},
    {"stale-lock", "ERROR   | Running multiple emulators with the same AVD is an experimental feature."},
    {"stale-lock", "ERROR: There's another emulator instance running with the current AVD 'Pixel_8'."},
    {"stale-lock", "Failed to lock /Users/me/.android/avd/Pixel_8.avd/multiinstance.lock"},
    {"stale-lock", "Failed to lock /Users/me/.android/avd/Pixel_8.avd/hardware-qemu.ini.lock"},
    {"adb-version", "adb server version (41) doesn't match this client (39); killing..."},
    {"device-offline", "error: device offline"},
    {"disk-full", "java.io.IOException: No space left on device"},
    {"disk-full", "ERROR   | Not enough space to create userdata partition. Available: 1024.00 MB at"},
    {"", "Performing Streamed Install\nSuccess"},
};

// A full disk's advice names what the failed job needed, known from its log's command or its own words.
const std::pair<const char *, const char *> diskNeeds[] = {
    {"$ /opt/homebrew/bin/brew install openjdk@17\nError: No space left on device @ rb_sysopen",
        "Java (OpenJDK 17) needs about 350 MB."},
    {"$ /opt/homebrew/bin/brew install --cask android-commandlinetools\nNo space left on device",
        "The Android command line tools need about 200 MB."},
    {"$ /sdk/sdkmanager --sdk_root=/emulator emulator platform-tools\njava.io.IOException: No space left on "
     "device",
        "The emulator and platform tools need about 1 GB."},
    {"$ /sdk/sdkmanager --sdk_root=/sdk system-images;android-34;google_apis;arm64-v8a\nAndroid Emulator: No "
     "space left on device",
        "A system image needs a few GB while it downloads and unpacks."},
    {"The emulator exited with status 1.\n\nERROR   | Not enough space to create userdata partition.",
        "A phone needs several GB for its data when it starts."},
    {"KO: Failed to save snapshot 'big': No space left on device",
        "A snapshot takes about as much space as the phone's memory, often 2 GB or more."},
    {"java.io.IOException: No space left on device", ""},
};

} // namespace

class TestKnownFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void explain_data()
    {
        columns<QString, QString>("text", "name");

        QStringList covered;
        for (const auto &[name, text] : wordings) {
            QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(name);
            covered.append(QString::fromUtf8(name));
        }
        // An entry without a wording above fails here.
        for (const QString &name : KnownFailures::names()) {
            if (!covered.contains(name))
                QTest::newRow(qPrintable(name)) << QString() << name;
        }
    }

    void explain()
    {
        auto [text, name] = row<QString, QString>("text", "name");

        const QVariantMap hint = KnownFailures::explain(text);
        QCOMPARE(hint.value(QStringLiteral("name")).toString(), name);
        QCOMPARE(hint.value(QStringLiteral("what")).toString().isEmpty(), name.isEmpty());
        // A reinstall acts on the file and the package adb named.
        if (name == QLatin1String("update-incompatible")) {
            QCOMPARE(hint.value(QStringLiteral("path")).toString(), QStringLiteral("/a/b c.apk"));
            QCOMPARE(hint.value(QStringLiteral("package")).toString(), QStringLiteral("com.example.app"));
        }
    }

    void diskFullNamesTheNeed_data()
    {
        columns<QString, QString>("text", "needs");
        for (const auto &[text, needs] : diskNeeds)
            QTest::newRow(needs[0] ? needs : "unknown job")
                << QString::fromUtf8(text) << QString::fromUtf8(needs);
    }

    void diskFullNamesTheNeed()
    {
        auto [text, needs] = row<QString, QString>("text", "needs");

        const QString todo = KnownFailures::explain(text).value(QStringLiteral("todo")).toString();
        QCOMPARE(todo,
            (needs.isEmpty() ? needs : needs + QLatin1Char(' '))
                + QStringLiteral("Free some space on the Mac and try again."));
    }
};

QTEST_GUILESS_MAIN(TestKnownFailures)
#include "tst_knownfailures.moc"
