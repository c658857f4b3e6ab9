#include "AndroidTools.h"
#include "Host.h"
#include "TestFiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <QCoro/QCoroTask>

#include <pwd.h>
#include <unistd.h>

class TestAndroidTools : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_root;
    QString path(const QString &relative) const { return m_root->filePath(relative); }
    QString defaultSdk() const { return path(QStringLiteral("Library/Application Support/Tolvane/sdk")); }
    QString brew() const { return path(QStringLiteral("opt/homebrew")); }

private Q_SLOTS:
    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        Host::setCurrent(Host::underRoot(m_root->path(), true));
        qunsetenv("ANDROID_HOME");
        qunsetenv("ANDROID_SDK_ROOT");
        qputenv("HOME", m_root->path().toUtf8());
    }

    void sdkRoot_data()
    {
        QTest::addColumn<QString>("home"); // value of ANDROID_HOME; "-" for unset
        QTest::addColumn<QString>("sdkRootVariable"); // value of ANDROID_SDK_ROOT; "-" for unset
        QTest::addColumn<QStringList>("tools"); // executables to create below the root
        QTest::addColumn<QString>("expected"); // "default" for the app's own folder

        QTest::newRow("neither set") << "-"
                                     << "-" << QStringList {} << "default";
        QTest::newRow("empty home, root with emulator")
            << ""
            << "other" << QStringList {"other/emulator/emulator"} << "other";
        QTest::newRow("home with only sdkmanager")
            << "mine"
            << "-" << QStringList {"mine/cmdline-tools/latest/bin/sdkmanager"} << "mine";
        QTest::newRow("home without tools is ignored") << "empty"
                                                       << "-" << QStringList {} << "default";
        QTest::newRow("home wins over root")
            << "mine"
            << "other" << QStringList {"mine/emulator/emulator", "other/emulator/emulator"} << "mine";
        QTest::newRow("trailing slash dropped") << "mine/"
                                                << "-" << QStringList {"mine/emulator/emulator"} << "mine";
        QTest::newRow("home without tools falls to root")
            << "empty"
            << "other" << QStringList {"other/emulator/emulator"} << "other";
    }

    void sdkRoot()
    {
        QFETCH(QString, home);
        QFETCH(QString, sdkRootVariable);
        QFETCH(QStringList, tools);
        QFETCH(QString, expected);

        for (const QString &tool : tools)
            writeScript(path(tool), "exit 0");
        const auto set = [&](const char *name, const QString &value) {
            if (value != QLatin1String("-"))
                qputenv(name, value.isEmpty() ? QByteArray() : path(value).toUtf8());
        };
        set("ANDROID_HOME", home);
        set("ANDROID_SDK_ROOT", sdkRootVariable);
        QCOMPARE(
            AndroidTools::sdkRoot(), expected == QLatin1String("default") ? defaultSdk() : path(expected));
    }

    void toolSearch_data()
    {
        QTest::addColumn<QStringList>("executables");
        QTest::addColumn<QStringList>("plainFiles");
        QTest::addColumn<QString>("sdkManager");
        QTest::addColumn<QString>("adb");

        const QString sdk = QStringLiteral("Library/Application Support/Tolvane/sdk");
        const QString cask
            = QStringLiteral("opt/homebrew/share/android-commandlinetools/cmdline-tools/latest/bin/");
        QTest::newRow("nothing") << QStringList {} << QStringList {} << ""
                                 << "";
        QTest::newRow("SDK copy first")
            << QStringList {sdk + "/cmdline-tools/latest/bin/sdkmanager", cask + "sdkmanager",
                   sdk + "/platform-tools/adb", "opt/homebrew/bin/adb"}
            << QStringList {} << sdk + "/cmdline-tools/latest/bin/sdkmanager" << sdk + "/platform-tools/adb";
        QTest::newRow("Homebrew cask") << QStringList {cask + "sdkmanager", "opt/homebrew/bin/sdkmanager"}
                                       << QStringList {} << cask + "sdkmanager"
                                       << "";
        QTest::newRow("Homebrew bin") << QStringList {"opt/homebrew/bin/sdkmanager", "opt/homebrew/bin/adb"}
                                      << QStringList {} << "opt/homebrew/bin/sdkmanager"
                                      << "opt/homebrew/bin/adb";
        QTest::newRow("not executable is skipped")
            << QStringList {"opt/homebrew/bin/sdkmanager"}
            << QStringList {sdk + "/cmdline-tools/latest/bin/sdkmanager", sdk + "/platform-tools/adb"}
            << "opt/homebrew/bin/sdkmanager"
            << "";
    }

    void toolSearch()
    {
        QFETCH(QStringList, executables);
        QFETCH(QStringList, plainFiles);
        QFETCH(QString, sdkManager);
        QFETCH(QString, adb);

        for (const QString &file : executables)
            writeScript(path(file), "exit 0");
        for (const QString &file : plainFiles)
            writeFile(path(file), "not a program");
        const auto expect = [&](const QString &relative) {
            return relative.isEmpty() ? std::optional<QString>() : std::optional<QString>(path(relative));
        };
        QCOMPARE(AndroidTools::sdkManager(), expect(sdkManager));
        QCOMPARE(AndroidTools::adbPath(), expect(adb));
        QCOMPARE(AndroidTools::firstExecutable({}), std::nullopt);
    }

    void javaHome_data()
    {
        QTest::addColumn<QStringList>("javas"); // folders below the root that get bin/java
        QTest::addColumn<QString>("expected");

        const QString jvms = QStringLiteral("Library/Java/JavaVirtualMachines/");
        const QString brewJava = QStringLiteral("opt/homebrew/opt/%1/libexec/openjdk.jdk/Contents/Home");
        QTest::newRow("none") << QStringList {} << "";
        QTest::newRow("JVM folders in name order") << QStringList {jvms + "zulu-17.jdk/Contents/Home",
            jvms + "jdk-21.jdk/Contents/Home"} << jvms + "jdk-21.jdk/Contents/Home";
        QTest::newRow("Homebrew 17 before 21") << QStringList {brewJava.arg("openjdk@21"),
            brewJava.arg("openjdk@17")} << brewJava.arg("openjdk@17");
        QTest::newRow("Homebrew before the system") << QStringList {jvms + "jdk-17.jdk/Contents/Home",
            brewJava.arg("openjdk")} << brewJava.arg("openjdk");
    }

    void javaHome()
    {
        QFETCH(QStringList, javas);
        QFETCH(QString, expected);

        for (const QString &home : javas)
            writeScript(path(home + "/bin/java"), "exit 0");
        QCOMPARE(
            AndroidTools::javaHome().value_or(QString()), expected.isEmpty() ? QString() : path(expected));
    }

    void environment_data()
    {
        QTest::addColumn<bool>("withJava");
        QTest::newRow("without Java") << false;
        QTest::newRow("with Java") << true;
    }

    void environment()
    {
        QFETCH(bool, withJava);

        const QString java
            = path(QStringLiteral("opt/homebrew/opt/openjdk@17/libexec/openjdk.jdk/Contents/Home"));
        if (withJava)
            writeScript(java + "/bin/java", "exit 0");
        qputenv("ANDROID_SDK_ROOT", "/elsewhere/without/tools");
        const QProcessEnvironment env = AndroidTools::environment();
        const QString r = defaultSdk();
        QStringList path = {r + "/platform-tools", r + "/emulator", r + "/cmdline-tools/latest/bin",
            brew() + "/bin", brew() + "/sbin", "/usr/bin", "/bin", "/usr/sbin", "/sbin"};
        QStringList keys
            = {"ANDROID_HOME", "ANDROID_SDK_ROOT", "HOME", "HOMEBREW_NO_ENV_HINTS", "PATH", "TMPDIR"};
        if (withJava) {
            path.prepend(java + "/bin");
            keys.insert(4, "JAVA_HOME");
            QCOMPARE(env.value("JAVA_HOME"), java);
        }
        QStringList actualKeys = env.keys();
        actualKeys.sort();
        QCOMPARE(actualKeys, keys);
        QCOMPARE(env.value("PATH"), path.join(':'));
        QCOMPARE(env.value("ANDROID_HOME"), r);
        QCOMPARE(env.value("ANDROID_SDK_ROOT"), r);
        QCOMPARE(env.value("HOME"), m_root->path());
        QCOMPARE(env.value("TMPDIR"), QDir::tempPath());
        QCOMPARE(env.value("HOMEBREW_NO_ENV_HINTS"), QStringLiteral("1"));
    }

    void childHome_data()
    {
        QTest::addColumn<QByteArray>("home"); // "-" for unset
        QTest::addColumn<QString>("expected");

        QTest::newRow("empty is passed on") << QByteArray() << "";
        QTest::newRow("set") << QByteArray("/somewhere") << "/somewhere";
        QTest::newRow("unset is the account's home")
            << QByteArray("-") << QFile::decodeName(getpwuid(getuid())->pw_dir);
    }

    void childHome()
    {
        QFETCH(QByteArray, home);
        QFETCH(QString, expected);

        if (home == "-")
            qunsetenv("HOME");
        else
            qputenv("HOME", home);
        QVERIFY(AndroidTools::environment().contains("HOME"));
        QCOMPARE(AndroidTools::environment().value("HOME"), expected);
    }

    void ensureSdkFolderMakesTheDefaultFolder()
    {
        writeScript(path("custom/emulator/emulator"), "exit 0");
        qputenv("ANDROID_HOME", path("custom").toUtf8());
        QVERIFY(!QFileInfo::exists(defaultSdk()));
        AndroidTools::ensureSDKFolder();
        AndroidTools::ensureSDKFolder();
        QVERIFY(QFileInfo(defaultSdk()).isDir());
        QCOMPARE(AndroidTools::sdkRoot(), path("custom"));
    }

    void runAdbPassesTheSerialFirst()
    {
        writeScript(defaultSdk() + "/platform-tools/adb", "printf '%s|' \"$@\"");
        const ProcessResult result = QCoro::waitFor(AndroidTools::runADB(
            {QStringLiteral("shell"), QStringLiteral("getprop")}, QStringLiteral("emulator-5554"), 5.0));
        QVERIFY(result.isClean());
        QCOMPARE(result.text, QStringLiteral("-s|emulator-5554|shell|getprop|"));

        const ProcessResult withoutSerial = QCoro::waitFor(AndroidTools::runADB({QStringLiteral("devices")}));
        QCOMPARE(withoutSerial.text, QStringLiteral("devices|"));
    }

    void runAdbWithoutAdb()
    {
        const ProcessResult result = QCoro::waitFor(AndroidTools::runADB({QStringLiteral("devices")}));
        QCOMPARE(result.status, -1);
        QCOMPARE(result.failureSummary(),
            QStringLiteral(
                "adb was not found. Install the emulator and platform tools on the Setup tab first."));
    }
};

QTEST_GUILESS_MAIN(TestAndroidTools)
#include "tst_androidtools.moc"
