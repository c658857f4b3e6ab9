#include "SimHost.h"

#include "Host.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QThread>

#include <csignal>

namespace {

const QString toolsDir = QStringLiteral(TOLVANE_SIM_TOOLS_DIR);

void writeText(const QString &path, const QByteArray &text)
{
    QDir().mkpath(path.section(QLatin1Char('/'), 0, -2));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        qFatal("cannot write %s", qPrintable(path));
    file.write(text);
}

// sh's single quotes keep every character but the quote itself.
QByteArray shellQuoted(const QString &text)
{
    return "'" + text.toUtf8().replace("'", "'\\''") + "'";
}

} // namespace

SimHost::SimHost(const QString &root, bool arm64)
    : m_root(QDir(root).absolutePath())
    , m_arm64(arm64)
{
    for (const char *folder : {"/.sim/behaviour", "/.sim/emulators", "/.sim/packages",
             "/Library/Application Support", "/opt/homebrew", "/usr/local"})
        QDir().mkpath(m_root + QLatin1String(folder));
    setTimeScale(0.02);
}

SimHost::~SimHost()
{
    killEmulators();
}

void SimHost::activate() const
{
    Host::setCurrent(Host::underRoot(m_root, m_arm64));
    qputenv("HOME", m_root.toUtf8());
    qunsetenv("ANDROID_HOME");
    qunsetenv("ANDROID_SDK_ROOT");
}

QString SimHost::sdkRoot() const
{
    return m_root + QStringLiteral("/Library/Application Support/Tolvane/sdk");
}

QString SimHost::brewPath() const
{
    return m_root + (m_legacyBrew ? QStringLiteral("/usr/local") : QStringLiteral("/opt/homebrew"))
        + QStringLiteral("/bin/brew");
}

void SimHost::setTimeScale(double scale)
{
    writeText(stateDir() + QStringLiteral("/scale"), QByteArray::number(scale));
}

void SimHost::installStub(const QString &tool, const QString &path) const
{
    writeText(path,
        "#!/bin/sh\nSIM_TOOLS=" + shellQuoted(toolsDir) + "; SIM_STATE=" + shellQuoted(stateDir())
            + "; SIM_SELF=\"$0\"\nexport SIM_TOOLS SIM_STATE SIM_SELF\nexec /bin/sh \"$SIM_TOOLS/"
            + tool.toUtf8() + "\" \"$@\"\n");
    QFile::setPermissions(path, QFile::permissions(path) | QFileDevice::ExeOwner | QFileDevice::ExeUser);
}

void SimHost::installBrew(bool legacyPrefix)
{
    m_legacyBrew = legacyPrefix;
    installStub(QStringLiteral("brew"), brewPath());
}

QProcessEnvironment SimHost::toolEnvironment() const
{
    QProcessEnvironment env;
    env.insert(QStringLiteral("HOME"), m_root);
    env.insert(QStringLiteral("TMPDIR"), QDir::tempPath());
    env.insert(QStringLiteral("PATH"), QStringLiteral("/usr/bin:/bin:/usr/sbin:/sbin"));
    env.insert(QStringLiteral("ANDROID_SDK_ROOT"), sdkRoot());
    env.insert(QStringLiteral("JAVA_HOME"),
        m_root + QStringLiteral("/opt/homebrew/opt/openjdk@17/libexec/openjdk.jdk/Contents/Home"));
    env.insert(QStringLiteral("SIM_TOOLS"), toolsDir);
    env.insert(QStringLiteral("SIM_STATE"), stateDir());
    return env;
}

void SimHost::run(const QString &tool, const QStringList &args, const QByteArray &input) const
{
    const QString scaleFile = stateDir() + QStringLiteral("/scale");
    QFile scale(scaleFile);
    scale.open(QIODevice::ReadOnly);
    const QByteArray previous = scale.readAll();
    scale.close();
    writeText(scaleFile, "0");

    QProcess process;
    process.setProcessEnvironment(toolEnvironment());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("/bin/sh"), QStringList {toolsDir + QLatin1Char('/') + tool} + args);
    process.write(input);
    process.closeWriteChannel();
    const bool finished = process.waitForFinished(30000);
    writeText(scaleFile, previous);
    if (!finished || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        qFatal("simulated %s %s failed:\n%s", qPrintable(tool), qPrintable(args.join(QLatin1Char(' '))),
            process.readAll().constData());
}

void SimHost::installJava()
{
    if (!QFile::exists(brewPath()))
        installBrew();
    installJdk(m_root + QStringLiteral("/opt/homebrew/opt/openjdk@17/libexec/openjdk.jdk/Contents/Home"),
        QStringLiteral("17.0.13"), QStringLiteral("aarch64"));
}

void SimHost::installSystemJava(const QString &folder, const QString &version, const QString &arch)
{
    installJdk(m_root + QStringLiteral("/Library/Java/JavaVirtualMachines/") + folder
            + QStringLiteral("/Contents/Home"),
        version, arch);
}

void SimHost::installJdk(const QString &home, const QString &version, const QString &arch) const
{
    installStub(QStringLiteral("java"), home + QStringLiteral("/bin/java"));
    if (!version.isEmpty()) {
        writeText(home + QStringLiteral("/release"),
            "IMPLEMENTOR=\"Homebrew\"\nJAVA_VERSION=\"" + version.toUtf8() + "\"\nOS_ARCH=\"" + arch.toUtf8()
                + "\"\nOS_NAME=\"Darwin\"\n");
    }
}

void SimHost::installCommandLineTools()
{
    const QString bin
        = m_root + QStringLiteral("/opt/homebrew/share/android-commandlinetools/cmdline-tools/latest/bin/");
    for (const QString &tool : {QStringLiteral("sdkmanager"), QStringLiteral("avdmanager")}) {
        installStub(tool, bin + tool);
        QFile::remove(m_root + QStringLiteral("/opt/homebrew/bin/") + tool);
        QFile::link(bin + tool, m_root + QStringLiteral("/opt/homebrew/bin/") + tool);
    }
}

void SimHost::acceptLicenses()
{
    QByteArray yes;
    for (int i = 0; i < 40; ++i)
        yes += "y\n";
    run(QStringLiteral("sdkmanager"),
        {QStringLiteral("--sdk_root=") + sdkRoot(), QStringLiteral("--licenses")}, yes);
}

void SimHost::installEmulator()
{
    run(QStringLiteral("sdkmanager"),
        {QStringLiteral("--sdk_root=") + sdkRoot(), QStringLiteral("emulator"),
            QStringLiteral("platform-tools")});
}

void SimHost::installSystemImage(const QString &id)
{
    // An image needs sdkmanager, which needs the rest of a ready machine.
    if (!QFile::exists(m_root + QStringLiteral("/opt/homebrew/bin/sdkmanager")))
        makeReady();
    run(QStringLiteral("sdkmanager"), {QStringLiteral("--sdk_root=") + sdkRoot(), id});
}

void SimHost::makeReady()
{
    installBrew();
    installJava();
    installCommandLineTools();
    acceptLicenses();
    installEmulator();
}

void SimHost::createPhone(const QString &name, const QString &device, const QString &image)
{
    installSystemImage(image);
    run(QStringLiteral("avdmanager"),
        {QStringLiteral("create"), QStringLiteral("avd"), QStringLiteral("-n"), name, QStringLiteral("-k"),
            image, QStringLiteral("-d"), device},
        "no\n");
}

void SimHost::addBrokenPhone(const QString &name)
{
    // Made from a model avdmanager knows; the mark makes it list the phone as one it cannot load.
    createPhone(name);
    QFile config(m_root + QStringLiteral("/.android/avd/") + name + QStringLiteral(".avd/config.ini"));
    config.open(QIODevice::Append);
    config.write("broken=1\n");
}

QString SimHost::startPhone(const QString &name, int port, const QStringList &options)
{
    QProcess emulator;
    emulator.setProcessEnvironment(toolEnvironment());
    emulator.setStandardOutputFile(QProcess::nullDevice());
    emulator.setStandardErrorFile(QProcess::nullDevice());
    emulator.setProgram(QStringLiteral("/bin/sh"));
    emulator.setArguments(QStringList {toolsDir + QStringLiteral("/emulator"), QStringLiteral("-avd"), name,
                              QStringLiteral("-port"), QString::number(port)}
        + options);
    if (!emulator.startDetached())
        qFatal("cannot start the simulated emulator");
    const QString booted = stateDir() + QStringLiteral("/emulators/%1/booted").arg(port);
    QElapsedTimer waited;
    waited.start();
    while (!QFile::exists(booted)) {
        if (waited.elapsed() > 30000)
            qFatal("the simulated %s did not boot", qPrintable(name));
        QThread::msleep(10);
    }
    return QStringLiteral("emulator-%1").arg(port);
}

void SimHost::setInstalledApps(const QString &name, const QStringList &packages)
{
    QByteArray lines;
    for (const QString &package : packages)
        lines += package.toUtf8() + '\n';
    writeText(stateDir() + QStringLiteral("/packages/") + name, lines);
}

void SimHost::setBehaviour(const QString &key, const QByteArray &value)
{
    writeText(stateDir() + QStringLiteral("/behaviour/") + key, value);
}

void SimHost::clearBehaviour(const QString &key)
{
    QFile::remove(stateDir() + QStringLiteral("/behaviour/") + key);
}

QStringList SimHost::adbCalls() const
{
    QFile log(stateDir() + QStringLiteral("/adb.log"));
    if (!log.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(log.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QStringList SimHost::runningEmulators() const
{
    QStringList serials;
    const QDir emulators(stateDir() + QStringLiteral("/emulators"));
    for (const QString &port : emulators.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile pid(emulators.filePath(port) + QStringLiteral("/pid"));
        if (pid.open(QIODevice::ReadOnly) && ::kill(pid.readAll().trimmed().toInt(), 0) == 0)
            serials << QStringLiteral("emulator-") + port;
    }
    return serials;
}

void SimHost::killEmulators() const
{
    const QDir emulators(stateDir() + QStringLiteral("/emulators"));
    for (const QString &port : emulators.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile pid(emulators.filePath(port) + QStringLiteral("/pid"));
        if (pid.open(QIODevice::ReadOnly)) {
            const int number = pid.readAll().trimmed().toInt();
            if (number > 0)
                ::kill(number, SIGKILL);
        }
    }
}
