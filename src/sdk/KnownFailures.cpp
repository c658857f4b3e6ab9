#include "KnownFailures.h"

#include <QList>
#include <QRegularExpression>

namespace {

enum class Fix { None, InstallImage, Reinstall, RemoveLock };

struct Entry
{
    const char *name;
    const char *pattern; // a regular expression on the tool's output, case-insensitive
    const char *what;
    const char *todo;
    Fix fix;
};

// Most specific first: the first match wins. The installer's own refusals before adb install count
// as the failures adb would have reported.
constexpr Entry table[] = {
    {"no-matching-abis", "INSTALL_FAILED_NO_MATCHING_ABIS|Not installed: .* has native code only for",
        "The app has native code only for processors this phone does not have, usually x86 or x86_64 for "
        "Intel PCs.",
        "Ask the app's maker for a build that includes arm64-v8a, or for a universal APK.", Fix::None},
    {"update-incompatible", "INSTALL_FAILED_UPDATE_INCOMPATIBLE",
        "The phone already has this app signed by someone else, so Android refuses to update it.",
        "Uninstall the installed version and install this one again. That deletes the app's data on this "
        "phone.",
        Fix::Reinstall},
    {"version-downgrade", "INSTALL_FAILED_VERSION_DOWNGRADE",
        "The phone already has a newer version of this app, and Android does not put an older one over it.",
        "Uninstall the app in the list above (that deletes its data on this phone) and install this file "
        "again, or get the newer version.",
        Fix::None},
    {"insufficient-storage", "INSTALL_FAILED_INSUFFICIENT_STORAGE",
        "The phone has no room left for this app.",
        "Uninstall apps you do not need, or wipe the phone's data on the Phones tab, and install again.",
        Fix::None},
    {"unsigned-apk",
        "INSTALL_PARSE_FAILED_(NO|INCONSISTENT)_CERTIFICATES|INSTALL_PARSE_FAILED_CERTIFICATE_ENCODING",
        "The app is not signed, or its signature is broken, and Android installs only signed apps.",
        "Ask the app's maker for a signed build of the .apk; downloading the same file again does not help.",
        Fix::None},
    {"not-an-apk", "INSTALL_PARSE_FAILED_|Not installed: .* is not a zip archive",
        "Android could not read this file as an app: it is damaged or not an APK.",
        "Download the .apk again. App bundles (.aab, .apks, .xapk) cannot be installed this way: ask for a "
        "plain .apk.",
        Fix::None},
    {"java-too-old", "UnsupportedClassVersionError",
        "The Android command line tools need Java 17, and the Java they found is older.",
        "Install Java (OpenJDK 17) on the Setup tab; Tolvane then hands it to the tools.", Fix::None},
    {"java-missing", "Unable to locate a Java Runtime|JAVA_HOME is not set and no 'java' command",
        "The Android command line tools found no Java to run on.",
        "Install Java (OpenJDK 17) on the Setup tab, then try again.", Fix::None},
    {"licences-not-accepted",
        "License for package .* not accepted|licen[cs]es (or those of the packages they depend on "
        ")?(were|have) "
        "not (been )?accepted",
        "Google's SDK licences have not been accepted, so sdkmanager installs nothing.",
        "Read and accept the SDK licences on the Setup tab, then try again.", Fix::None},
    {"system-image-missing", "Broken AVD system path|Cannot find AVD system path",
        "The Android system image this phone was made from is not installed.",
        "Install the system image again; the phone and its data are kept.", Fix::InstallImage},
    {"x86-phone", "CPU Architecture '(x86_64|x86)' is not supported",
        "This phone was made with an Intel (x86_64) system image, which cannot run on Apple silicon.",
        "Create a new phone with an arm64 Android version; Tolvane offers only those.", Fix::None},
    {"intel-emulator", "CPU Architecture 'arm64' is not supported by the QEMU2 emulator on x86_64 host",
        "The emulator installed is the one for Intel Macs: it runs under Rosetta and cannot start arm64 "
        "phones. sdkmanager fetches it when it runs on a Java for Intel.",
        "Install Java (OpenJDK 17) for Apple silicon on the Setup tab. Then delete the folder \"emulator\" "
        "in the SDK folder named at the bottom of the Setup tab, and install the emulator there again.",
        Fix::None},
    {"hypervisor", "HV_UNSUPPORTED|HVF error",
        "macOS did not let the emulator use the Mac's hypervisor, which it needs to run Android.",
        "Quit other virtual machines (Docker, UTM, Parallels) and start the phone again. Inside a virtual "
        "Mac the emulator cannot run.",
        Fix::None},
    {"stale-lock",
        "Running multiple emulators with the same AVD|another emulator instance running with the current "
        "AVD|multiinstance\\.lock|hardware-qemu\\.ini\\.lock",
        "The phone is still marked as in use by an emulator that did not shut down cleanly.",
        "If no emulator window of this phone is open, remove the lock and start it again.", Fix::RemoveLock},
    {"adb-version", "adb server version \\(\\d+\\) doesn't match this client",
        "Another program runs its own adb of a different version, and the two keep replacing each other's "
        "server.",
        "Quit Android Studio or other Android tools that bring their own adb, then try again.", Fix::None},
    {"device-offline", "error: device offline",
        "adb can see the phone, but the phone does not answer it yet.",
        "Wait until the phone has finished starting and try again. If it stays offline, stop the phone on "
        "the Phones tab and start it again.",
        Fix::None},
    {"disk-full", "No space left on device|Not enough space to create userdata partition",
        "The Mac's disk is too full.", "Free some space on the Mac and try again.", Fix::None},
};

struct DiskNeed
{
    const char *pattern; // on the failure's text, which names the job by its command line or its own words
    const char *needs;
};

// What the job that ran out of space was writing, and about how much that takes. A system image
// install can fetch the emulator as well: the image is named first.
constexpr DiskNeed diskNeeds[] = {
    {"save snapshot", "A snapshot takes about as much space as the phone's memory, often 2 GB or more."},
    {"system-images;", "A system image needs a few GB while it downloads and unpacks."},
    {"install openjdk", "Java (OpenJDK 17) needs about 350 MB."},
    {"install --cask android-commandlinetools", "The Android command line tools need about 200 MB."},
    {" emulator platform-tools", "The emulator and platform tools need about 1 GB."},
    {"userdata|The emulator exited", "A phone needs several GB for its data when it starts."},
};

// The full disk's advice, led by what the failed job needed when its text says which job it was.
QString diskTodo(const QString &text, const char *todo)
{
    static const QList<QRegularExpression> patterns = [] {
        QList<QRegularExpression> compiled;
        for (const DiskNeed &need : diskNeeds)
            compiled.append(QRegularExpression(QString::fromUtf8(need.pattern)));
        return compiled;
    }();
    for (qsizetype i = 0; i < patterns.size(); ++i) {
        if (patterns[i].match(text).hasMatch())
            return QString::fromUtf8(diskNeeds[i].needs) + QLatin1Char(' ') + QString::fromUtf8(todo);
    }
    return QString::fromUtf8(todo);
}

QString fixName(Fix fix)
{
    switch (fix) {
    case Fix::InstallImage:
        return QStringLiteral("installImage");
    case Fix::Reinstall:
        return QStringLiteral("reinstall");
    case Fix::RemoveLock:
        return QStringLiteral("removeLock");
    case Fix::None:
        break;
    }
    return QString();
}

QString fixLabel(Fix fix)
{
    switch (fix) {
    case Fix::InstallImage:
        return QStringLiteral("Install the system image");
    case Fix::Reinstall:
        return QStringLiteral("Uninstall and install again");
    case Fix::RemoveLock:
        return QStringLiteral("Remove lock and start");
    case Fix::None:
        break;
    }
    return QString();
}

QVariantMap hint(const QString &name, const QString &what, const QString &todo, Fix fix)
{
    return {{QStringLiteral("name"), name}, {QStringLiteral("what"), what}, {QStringLiteral("todo"), todo},
        {QStringLiteral("fix"), fixName(fix)}, {QStringLiteral("fixLabel"), fixLabel(fix)}};
}

} // namespace

QStringList KnownFailures::names()
{
    QStringList names;
    for (const Entry &entry : table)
        names.append(QString::fromUtf8(entry.name));
    return names;
}

QVariantMap KnownFailures::explain(const QString &text)
{
    // Every view asks about its empty failure at once: that alone must not compile the patterns.
    if (text.isEmpty())
        return {};
    // Views ask again whenever a failure's text changes: the patterns are compiled once.
    static const QList<QRegularExpression> patterns = [] {
        QList<QRegularExpression> compiled;
        for (const Entry &entry : table)
            compiled.append(QRegularExpression(
                QString::fromUtf8(entry.pattern), QRegularExpression::CaseInsensitiveOption));
        return compiled;
    }();
    for (qsizetype i = 0; i < patterns.size(); ++i) {
        const Entry &entry = table[i];
        if (!patterns[i].match(text).hasMatch())
            continue;
        const QString todo = qstrcmp(entry.name, "disk-full") == 0 ? diskTodo(text, entry.todo)
                                                                   : QString::fromUtf8(entry.todo);
        QVariantMap found
            = hint(QString::fromUtf8(entry.name), QString::fromUtf8(entry.what), todo, entry.fix);
        if (entry.fix == Fix::Reinstall) {
            // adb names the file, and Android the package whose signature differs.
            static const QRegularExpression named(
                QStringLiteral("failed to install (.+?): Failure \\[INSTALL_FAILED_UPDATE_INCOMPATIBLE: "
                               "(?:Existing package|Package) "
                               "([\\w.]+) signatures"));
            const QRegularExpressionMatch match = named.match(text);
            if (!match.hasMatch())
                return hint(found.value(QStringLiteral("name")).toString(), QString::fromUtf8(entry.what),
                    QString::fromUtf8(entry.todo), Fix::None);
            found.insert(QStringLiteral("path"), match.captured(1));
            found.insert(QStringLiteral("package"), match.captured(2));
        }
        return found;
    }
    return {};
}

QVariantMap KnownFailures::staleLock(const QString &phone)
{
    return hint(QStringLiteral("stale-lock"),
        phone
            + QStringLiteral(
                " was not shut down cleanly: its emulator left lock files in the phone's folder."),
        QStringLiteral("Nothing is running this phone now, so the lock can go."), Fix::RemoveLock);
}
