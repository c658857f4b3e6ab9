#include "AndroidTools.h"

#include "Host.h"
#include "ToolRunner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace AndroidTools {

namespace {

bool isExecutableFile(const QString &path)
{
    const QFileInfo info(path);
    return info.isFile() && info.isExecutable();
}

// A folder counts as an SDK only when it holds the emulator or sdkmanager.
bool holdsSdkTools(const QString &dir)
{
    return isExecutableFile(dir + QStringLiteral("/emulator/emulator"))
        || isExecutableFile(dir + QStringLiteral("/cmdline-tools/latest/bin/sdkmanager"));
}

std::optional<QString> commandLineTool(const QString &name)
{
    const QString brew = Host::current().homebrewPrefix;
    return firstExecutable({
        sdkRoot() + QStringLiteral("/cmdline-tools/latest/bin/") + name,
        brew + QStringLiteral("/share/android-commandlinetools/cmdline-tools/latest/bin/") + name,
        brew + QStringLiteral("/bin/") + name,
    });
}

} // namespace

QString appSupportDir()
{
    return Host::current().userDataDir + QStringLiteral("/Tolvane");
}

QString sdkRoot()
{
    for (const char *variable : {"ANDROID_HOME", "ANDROID_SDK_ROOT"}) {
        const QString value = qEnvironmentVariable(variable);
        // Callers append to the root, so it never ends in "/".
        if (!value.isEmpty() && holdsSdkTools(value))
            return QDir::cleanPath(value);
    }
    return appSupportDir() + QStringLiteral("/sdk");
}

std::optional<QString> firstExecutable(const QStringList &paths)
{
    for (const QString &path : paths) {
        if (isExecutableFile(path))
            return path;
    }
    return std::nullopt;
}

std::optional<QString> sdkManager()
{
    return commandLineTool(QStringLiteral("sdkmanager"));
}

std::optional<QString> avdManager()
{
    return commandLineTool(QStringLiteral("avdmanager"));
}

std::optional<QString> adbPath()
{
    return firstExecutable({
        sdkRoot() + QStringLiteral("/platform-tools/adb"),
        Host::current().homebrewPrefix + QStringLiteral("/bin/adb"),
    });
}

std::optional<QString> emulatorPath()
{
    return firstExecutable({sdkRoot() + QStringLiteral("/emulator/emulator")});
}

std::optional<QString> brewPath()
{
    const Host &host = Host::current();
    return firstExecutable({
        host.homebrewPrefix + QStringLiteral("/bin/brew"),
        host.legacyHomebrewPrefix + QStringLiteral("/bin/brew"),
    });
}

std::optional<QString> javaHome()
{
    const Host &host = Host::current();
    QStringList candidates;
    for (const char *formula : {"openjdk@17", "openjdk@21", "openjdk"}) {
        candidates.append(host.homebrewPrefix + QStringLiteral("/opt/") + QLatin1String(formula)
            + host.homebrewJavaHomeSuffix);
    }
    const QDir machines(host.javaVirtualMachinesDir);
    if (machines.exists()) {
        for (const QString &name :
            machines.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name))
            candidates.append(machines.filePath(name) + host.javaHomeSuffix);
    }
    for (const QString &candidate : std::as_const(candidates)) {
        if (isExecutableFile(candidate + QStringLiteral("/bin/java")))
            return candidate;
    }
    return std::nullopt;
}

JavaRelease javaRelease(const QString &home)
{
    JavaRelease release;
    QFile file(home + QStringLiteral("/release"));
    if (!file.open(QIODevice::ReadOnly))
        return release;
    // Lines of NAME="value"; the file is a few hundred bytes.
    static const QRegularExpression entry(
        QStringLiteral("^(JAVA_VERSION|OS_ARCH)=\"([^\"]*)\""), QRegularExpression::MultilineOption);
    for (const QRegularExpressionMatch &match : entry.globalMatch(QString::fromUtf8(file.read(64 * 1024)))) {
        const QString value = match.captured(2);
        if (match.captured(1) == QLatin1String("OS_ARCH")) {
            release.arch = value;
            continue;
        }
        // Before Java 9 the feature release came second: "1.8.0_392"; early access builds say "21-ea".
        static const QRegularExpression feature(QStringLiteral("^(?:1\\.)?(\\d+)"));
        release.version = feature.match(value).captured(1).toInt();
    }
    return release;
}

QString licenseFile()
{
    return sdkRoot() + QStringLiteral("/licenses/android-sdk-license");
}

QProcessEnvironment environment()
{
    const QString root = sdkRoot();
    const QString brew = Host::current().homebrewPrefix;
    QStringList path = {
        root + QStringLiteral("/platform-tools"),
        root + QStringLiteral("/emulator"),
        root + QStringLiteral("/cmdline-tools/latest/bin"),
        brew + QStringLiteral("/bin"),
        brew + QStringLiteral("/sbin"),
        QStringLiteral("/usr/bin"),
        QStringLiteral("/bin"),
        QStringLiteral("/usr/sbin"),
        QStringLiteral("/sbin"),
    };

    QProcessEnvironment env;
    env.insert(QStringLiteral("HOME"),
        qEnvironmentVariableIsSet("HOME") ? qEnvironmentVariable("HOME") : Host::accountHome());
    env.insert(QStringLiteral("TMPDIR"), QDir::tempPath());
    if (const auto java = javaHome()) {
        env.insert(QStringLiteral("JAVA_HOME"), *java);
        path.prepend(*java + QStringLiteral("/bin"));
    }
    env.insert(QStringLiteral("PATH"), path.join(QLatin1Char(':')));
    env.insert(QStringLiteral("ANDROID_HOME"), root);
    env.insert(QStringLiteral("ANDROID_SDK_ROOT"), root);
    env.insert(QStringLiteral("HOMEBREW_NO_ENV_HINTS"), QStringLiteral("1"));
    return env;
}

void ensureSDKFolder()
{
    QDir().mkpath(appSupportDir() + QStringLiteral("/sdk"));
}

QCoro::Task<ProcessResult> runADB(
    QStringList args, std::optional<QString> serial, std::optional<double> timeout)
{
    const auto adb = adbPath();
    if (!adb) {
        co_return ProcessResult::refused(QStringLiteral(
            "adb was not found. Install the emulator and platform tools on the Setup tab first."));
    }
    if (serial)
        args = QStringList {QStringLiteral("-s"), *serial} + args;
    auto running = ToolRunner::run(*adb, args, environment(), timeout);
    co_return co_await std::move(running);
}

} // namespace AndroidTools
