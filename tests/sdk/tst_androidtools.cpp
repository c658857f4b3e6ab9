#include "AndroidTools.h"
#include "DataTable.h"
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
        // variables: ANDROID_HOME and ANDROID_SDK_ROOT below the root, "-" unset; tools: executables to
        // create below the root; expected: "default" for the app's own folder
        columns<QStringList, QStringList, QString>("variables", "tools", "expected");

        QTest::newRow("neither set") << QStringList {"-", "-"} << QStringList {} << "default";
        QTest::newRow("empty home, root with emulator")
            << QStringList {"", "other"} << QStringList {"other/emulator/emulator"} << "other";
        QTest::newRow("home with only sdkmanager")
            << QStringList {"mine", "-"} << QStringList {"mine/cmdline-tools/latest/bin/sdkmanager"}
            << "mine";
        QTest::newRow("home without tools is ignored")
            << QStringList {"empty", "-"} << QStringList {} << "default";
        QTest::newRow("existing home without tools is ignored")
            << QStringList {"stale", "-"} << QStringList {"stale/platform-tools/adb"} << "default";
        QTest::newRow("home wins over root")
            << QStringList {"mine", "other"}
            << QStringList {"mine/emulator/emulator", "other/emulator/emulator"} << "mine";
        QTest::newRow("trailing slash dropped")
            << QStringList {"mine/", "-"} << QStringList {"mine/emulator/emulator"} << "mine";
        QTest::newRow("home without tools falls to root")
            << QStringList {"empty", "other"} << QStringList {"other/emulator/emulator"} << "other";
    }

    void sdkRoot()
    {
        auto [variables, tools, expected]
            = row<QStringList, QStringList, QString>("variables", "tools", "expected");

        for (const QString &tool : tools)
            writeScript(path(tool), "exit 0");
        for (const char *name : {"ANDROID_HOME", "ANDROID_SDK_ROOT"}) {
            const QString value = variables.takeFirst();
            if (value != QLatin1String("-"))
                qputenv(name, value.isEmpty() ? QByteArray() : path(value).toUtf8());
        }
        QCOMPARE(
            AndroidTools::sdkRoot(), expected == QLatin1String("default") ? defaultSdk() : path(expected));
    }

    void toolSearch_data()
    {
        columns<QStringList, QStringList, QString, QString>("executables", "plainFiles", "sdkManager", "adb");

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
        auto [executables, plainFiles, sdkManager, adb] = row<QStringList, QStringList, QString, QString>(
            "executables", "plainFiles", "sdkManager", "adb");

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
        // javas: folders below the root that get bin/java
        columns<QStringList, QString>("javas", "expected");

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
        auto [javas, expected] = row<QStringList, QString>("javas", "expected");

        for (const QString &home : javas)
            writeScript(path(home + "/bin/java"), "exit 0");
        QCOMPARE(
            AndroidTools::javaHome().value_or(QString()), expected.isEmpty() ? QString() : path(expected));
    }

    void environment_data()
    {
        // home: the app's HOME; "-" for unset
        columns<bool, QByteArray, QString>("withJava", "home", "childHome");

        QTest::newRow("without Java") << false << QByteArray("/somewhere") << "/somewhere";
        QTest::newRow("with Java") << true << QByteArray("/somewhere") << "/somewhere";
        QTest::newRow("empty HOME is passed on") << false << QByteArray() << "";
        QTest::newRow("unset HOME is the account's home")
            << false << QByteArray("-") << QFile::decodeName(getpwuid(getuid())->pw_dir);
    }

    void environment()
    {
        auto [withJava, home, childHome] = row<bool, QByteArray, QString>("withJava", "home", "childHome");

        const QString java
            = path(QStringLiteral("opt/homebrew/opt/openjdk@17/libexec/openjdk.jdk/Contents/Home"));
        if (withJava)
            writeScript(java + "/bin/java", "exit 0");
        qputenv("ANDROID_SDK_ROOT", "/elsewhere/without/tools");
        if (home == "-")
            qunsetenv("HOME");
        else
            qputenv("HOME", home);
        const QString r = defaultSdk();
        QStringList search = {r + "/platform-tools", r + "/emulator", r + "/cmdline-tools/latest/bin",
            brew() + "/bin", brew() + "/sbin", "/usr/bin", "/bin", "/usr/sbin", "/sbin"};
        if (withJava)
            search.prepend(java + "/bin");
        QProcessEnvironment expected;
        for (const auto &[name, value] : {std::pair {"ANDROID_HOME", r}, {"ANDROID_SDK_ROOT", r},
                 {"HOME", childHome}, {"HOMEBREW_NO_ENV_HINTS", QStringLiteral("1")},
                 {"PATH", search.join(':')}, {"TMPDIR", QDir::tempPath()}})
            expected.insert(QLatin1String(name), value);
        if (withJava)
            expected.insert(QStringLiteral("JAVA_HOME"), java);
        QCOMPARE(AndroidTools::environment().toStringList(), expected.toStringList());
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
};

QTEST_GUILESS_MAIN(TestAndroidTools)
#include "tst_androidtools.moc"
