#pragma once

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

// A fresh simulated Mac below one folder: the host's fixed places, HOME, the SDK, and the state of the
// simulated tools in sim/tools. Installs run those same tools, so a prepared machine holds exactly
// what the app's own installs would leave.
class SimHost
{
public:
    explicit SimHost(const QString &root, bool arm64 = true);
    // Ends every simulated emulator still running, so nothing outlives a test.
    ~SimHost();
    SimHost(const SimHost &) = delete;
    SimHost &operator=(const SimHost &) = delete;

    // Makes this machine the app's: its Host, HOME at the root, no ANDROID_HOME or ANDROID_SDK_ROOT.
    void activate() const;

    QString root() const { return m_root; }
    QString sdkRoot() const;
    QString stateDir() const { return m_root + QStringLiteral("/.sim"); }
    QString brewPath() const;

    // Multiplies every simulated delay; 1.0 takes about as long as the real tools.
    void setTimeScale(double scale);

    void installBrew(bool legacyPrefix = false);
    void installJava();
    // A JDK in the system's folder of JDKs, as its own installer leaves it: "jdk-11.jdk", "11.0.2",
    // "x86_64" for an old Intel one. An empty version leaves out the release file that names both.
    void installSystemJava(const QString &folder, const QString &version, const QString &arch);
    void installCommandLineTools();
    void acceptLicenses();
    void installEmulator();
    void installSystemImage(const QString &id);
    // Homebrew, Java, the command line tools, the licences, the emulator and the platform tools.
    void makeReady();
    void createPhone(const QString &name, const QString &device = QStringLiteral("pixel_7"),
        const QString &image = QStringLiteral("system-images;android-34;google_apis;arm64-v8a"));
    // A phone that avdmanager lists among those that could not be loaded.
    void addBrokenPhone(const QString &name);

    // Starts a created phone's emulator on its own, as if another app had, with the emulator's options
    // (e.g. "-read-only" for a second one of the same phone), and returns its serial once it has booted.
    QString startPhone(const QString &name, int port = 5554, const QStringList &options = {});
    // Replaces the apps the user installed on a phone.
    void setInstalledApps(const QString &name, const QStringList &packages);

    // Tells a tool to misbehave; sim/README.md lists the keys.
    void setBehaviour(const QString &key, const QByteArray &value = QByteArrayLiteral("1"));
    void clearBehaviour(const QString &key);

    // The arguments of every adb call so far, one call per entry.
    QStringList adbCalls() const;
    QStringList runningEmulators() const;
    void killEmulators() const;

private:
    // Runs one simulated tool through its installed stub, with no delays, and insists it succeeds.
    void run(const QString &tool, const QStringList &args, const QByteArray &input = {}) const;
    // What the app gives the tools, and where they find the simulator.
    QProcessEnvironment toolEnvironment() const;
    void installStub(const QString &tool, const QString &path) const;
    void installJdk(const QString &home, const QString &version, const QString &arch) const;

    QString m_root;
    bool m_arm64;
    bool m_legacyBrew = false;
};
