#include "Host.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <pwd.h>
#include <unistd.h>

#ifdef Q_OS_MACOS
#include <sys/sysctl.h>
#include <sys/types.h>
#else
#include <sys/utsname.h>
#endif

namespace {

bool detectArm64()
{
#ifdef Q_OS_MACOS
    int value = 0;
    size_t size = sizeof(value);
    return sysctlbyname("hw.optional.arm64", &value, &size, nullptr, 0) == 0 && value == 1;
#else
    utsname name {};
    return uname(&name) == 0 && QByteArray(name.machine) == "aarch64";
#endif
}

Host &currentHost()
{
    static Host host = Host::detect();
    return host;
}

} // namespace

Host Host::detect()
{
    Host host;
#ifdef Q_OS_MACOS
    host.homebrewPrefix = QStringLiteral("/opt/homebrew");
    host.legacyHomebrewPrefix = QStringLiteral("/usr/local");
    host.javaVirtualMachinesDir = QStringLiteral("/Library/Java/JavaVirtualMachines");
    host.javaHomeSuffix = QStringLiteral("/Contents/Home");
    host.homebrewJavaHomeSuffix = QStringLiteral("/libexec/openjdk.jdk/Contents/Home");
    const QString fallback = accountHome() + QStringLiteral("/Library/Application Support");
#else
    host.homebrewPrefix = QStringLiteral("/home/linuxbrew/.linuxbrew");
    host.legacyHomebrewPrefix = QStringLiteral("/usr/local");
    host.javaVirtualMachinesDir = QStringLiteral("/usr/lib/jvm");
    host.homebrewJavaHomeSuffix = QStringLiteral("/libexec");
    const QString fallback = accountHome() + QStringLiteral("/.local/share");
#endif
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    host.userDataDir = data.isEmpty() ? fallback : data;
    host.arm64 = detectArm64();
    return host;
}

Host Host::underRoot(const QString &root, bool arm64)
{
    Host host;
    host.homebrewPrefix = root + QStringLiteral("/opt/homebrew");
    host.legacyHomebrewPrefix = root + QStringLiteral("/usr/local");
    host.javaVirtualMachinesDir = root + QStringLiteral("/Library/Java/JavaVirtualMachines");
    host.javaHomeSuffix = QStringLiteral("/Contents/Home");
    host.homebrewJavaHomeSuffix = QStringLiteral("/libexec/openjdk.jdk/Contents/Home");
    host.userDataDir = root + QStringLiteral("/Library/Application Support");
    host.arm64 = arm64;
    return host;
}

QString Host::accountHome()
{
    const passwd *account = getpwuid(getuid());
    return account && account->pw_dir ? QFile::decodeName(account->pw_dir) : QDir::homePath();
}

const Host &Host::current()
{
    return currentHost();
}

void Host::setCurrent(const Host &host)
{
    currentHost() = host;
}
