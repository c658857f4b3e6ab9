#include "AndroidTools.h"
#include "ApkInstaller.h"
#include "DialogSaveLocationChooser.h"
#include "Host.h"
#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <QCoroTask>

#include <memory>

namespace {

const QString serial = QStringLiteral("emulator-5554");
const QString noAdb
    = QStringLiteral("adb was not found. Install the emulator and platform tools on the Setup tab first.");
const QByteArray png("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);

// A temporary Mac whose HOME is its root; with the platform tools, adb is an sh stand-in that talks to one
// running phone, emulator-5554. Files in the control folder tell it what to print.
class StandInMac
{
public:
    explicit StandInMac(const QString &root)
        : m_root(root)
    {
        Host::setCurrent(Host::underRoot(root, true));
        qunsetenv("ANDROID_HOME");
        qunsetenv("ANDROID_SDK_ROOT");
        qputenv("HOME", root.toUtf8());
    }

    void installPlatformTools()
    {
        QFile adb(QStringLiteral(STAND_INS_DIR "/adb"));
        if (!adb.open(QIODevice::ReadOnly))
            qFatal("cannot read the adb stand-in");
        writeFile(AndroidTools::sdkRoot() + QStringLiteral("/platform-tools/adb"), adb.readAll(), true);
    }
    void installApps(const QStringList &packages)
    {
        writeFile(
            m_root + QStringLiteral("/phone/packages"), packages.join(QLatin1Char('\n')).toUtf8() + '\n');
    }
    void setControl(const QString &name, const QByteArray &content)
    {
        writeFile(m_root + QStringLiteral("/control/") + name, content);
    }

private:
    QString m_root;
};

// Answers every save request at once with a fixed path, or cancels when there is none.
class FixedChooser : public SaveLocationChooser
{
public:
    explicit FixedChooser(std::optional<QString> answer)
        : m_answer(std::move(answer))
    { }

    QCoro::Task<std::optional<QString>> chooseSaveLocation(QString proposedName) override
    {
        proposals.append(proposedName);
        co_return m_answer;
    }

    QStringList proposals;

private:
    std::optional<QString> m_answer;
};

QString noteOf(const ApkInstaller &installer)
{
    return installer.packagesNote().value_or(QStringLiteral("<none>"));
}

} // namespace

class TestApkInstaller : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<StandInMac> m_mac;

    QString path(const QString &name) const { return m_dir->filePath(name); }

    QList<QUrl> files(const QStringList &names) const
    {
        QList<QUrl> urls;
        for (const QString &name : names)
            urls.append(QUrl::fromLocalFile(path(name)));
        return urls;
    }

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_mac = std::make_unique<StandInMac>(m_dir->path());
    }

    void onlyApkFiles()
    {
        m_mac->installPlatformTools();
        ApkInstaller installer;
        QSignalSpy busy(&installer, &ApkInstaller::busyChanged);
        QSignalSpy packages(&installer, &ApkInstaller::packagesChanged);
        QSignalSpy notes(&installer, &ApkInstaller::packagesNoteChanged);

        QCoro::waitFor(installer.installTask(files({"notes.txt", "apk", "app.apk.zip"}), serial));
        // The first message has no leading line break; the next one is on a line of its own.
        QCOMPARE(installer.output(), QStringLiteral("Only .apk files can be installed."));
        QCoro::waitFor(installer.installTask({}, serial));
        QCOMPARE(installer.output(),
            QStringLiteral("Only .apk files can be installed.\nOnly .apk files can be installed."));
        QCOMPARE(busy.count(), 0);
        QCOMPARE(packages.count(), 0);
        QCOMPARE(notes.count(), 0);
    }

    void withoutAdb()
    {
        ApkInstaller installer;
        QCoro::waitFor(installer.installTask(files({"app.apk"}), serial));
        QCOMPARE(installer.output(), QStringLiteral("Installing app.apk...\n") + noAdb);
        QCOMPARE(noteOf(installer), QStringLiteral("Could not list apps: ") + noAdb);
        QCoro::waitFor(installer.uninstallTask(QStringLiteral("com.example.app"), serial));
        QCoro::waitFor(installer.screenshotTask(serial));
        QCOMPARE(installer.output(),
            QStringLiteral(
                "Installing app.apk...\n%1\nUninstalling com.example.app...\n%1\nScreenshot failed: %1")
                .arg(noAdb));
        QVERIFY(!installer.busy());
    }

    void install_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QString>("output");
        QTest::addColumn<QStringList>("packages");

        QTest::newRow("one of three is not an apk")
            << QStringList {"zeta.apk", "notes.txt", "Alpha.APK"}
            << QStringLiteral("Installing zeta.apk...\nPerforming Streamed Install\nSuccess\n"
                              "Installing Alpha.APK...\nPerforming Streamed Install\nSuccess")
            << QStringList {"com.example.alpha", "com.example.zeta"};
        QTest::newRow("a failed install does not stop the batch")
            << QStringList {"broken.apk", "good.Apk"}
            << QStringLiteral("Installing broken.apk...\nPerforming Streamed Install\nadb: failed to install "
                              "<folder>/broken.apk: "
                              "Failure [INSTALL_PARSE_FAILED_NOT_APK]\n"
                              "Installing good.Apk...\nPerforming Streamed Install\nSuccess")
            << QStringList {"com.example.good"};
        QTest::newRow("install that prints nothing")
            << QStringList {"silent.apk"}
            << QStringLiteral("Installing silent.apk...\n(adb printed nothing; exit status 4)")
            << QStringList {};
    }

    void install()
    {
        QFETCH(QStringList, names);
        QFETCH(QString, output);
        QFETCH(QStringList, packages);

        m_mac->installPlatformTools();
        ApkInstaller installer;
        QSignalSpy busy(&installer, &ApkInstaller::busyChanged);
        QList<bool> busyWhileListed;
        connect(&installer, &ApkInstaller::packagesChanged, this,
            [&] { busyWhileListed.append(installer.busy()); });

        installer.install(files(names), serial);
        QVERIFY(installer.busy());
        QTRY_COMPARE(busyWhileListed.size(), 1);
        QCOMPARE(installer.output(), output.replace(QStringLiteral("<folder>"), m_dir->path()));
        QCOMPARE(installer.packages(), packages);
        // busy covers the installs only; the listing that follows runs with it clear.
        QCOMPARE(busy.count(), 2);
        QCOMPARE(busyWhileListed, QList<bool> {false});
    }

    void listing_data()
    {
        QTest::addColumn<QString>("serial");
        QTest::addColumn<QByteArray>("listing"); // what adb prints; empty for the phone's own apps
        QTest::addColumn<QByteArray>("status");
        QTest::addColumn<QStringList>("packages");
        QTest::addColumn<QString>("note");

        const QStringList earlier {"com.example.kept"};
        QTest::newRow("sorted") << serial << QByteArray("package:com.b\npackage:com.a\n") << QByteArray("0")
                                << QStringList {"com.a", "com.b"} << "<none>";
        QTest::newRow("white space around lines")
            << serial << QByteArray("  package:com.c \r\n\tpackage:com.a\r\n") << QByteArray("0")
            << QStringList {"com.a", "com.c"} << "<none>";
        QTest::newRow("no packages") << serial << QByteArray("\n") << QByteArray("0") << QStringList {}
                                     << "No apps installed by you yet.";
        QTest::newRow("other text") << serial
                                    << QByteArray("\nError: could not access the Package Manager.\n")
                                    << QByteArray("0") << QStringList {}
                                    << "adb said: Error: could not access the Package Manager.";
        QTest::newRow("listing fails")
            << serial << QByteArray("cmd: Failure calling service package\n") << QByteArray("1") << earlier
            << "Could not list apps: cmd: Failure calling service package";
        QTest::newRow("unknown phone")
            << QStringLiteral("emulator-5556") << QByteArray() << QByteArray("0") << earlier
            << "Could not list apps: adb: device 'emulator-5556' not found";
    }

    void listing()
    {
        QFETCH(QString, serial);
        QFETCH(QByteArray, listing);
        QFETCH(QByteArray, status);
        QFETCH(QStringList, packages);
        QFETCH(QString, note);

        m_mac->installPlatformTools();
        m_mac->installApps({QStringLiteral("com.example.kept")});
        ApkInstaller installer;
        QCoro::waitFor(installer.refreshPackagesTask(::serial));
        QCOMPARE(installer.packages(), QStringList {QStringLiteral("com.example.kept")});

        if (!listing.isEmpty()) {
            m_mac->setControl(QStringLiteral("list.out"), listing);
            m_mac->setControl(QStringLiteral("list.status"), status);
        }
        QSignalSpy busy(&installer, &ApkInstaller::busyChanged);
        QCoro::waitFor(installer.refreshPackagesTask(serial));
        QCOMPARE(installer.packages(), packages);
        QCOMPARE(noteOf(installer), note);
        QCOMPARE(busy.count(), 0);
        QVERIFY(installer.output().isEmpty());
    }

    void uninstall_data()
    {
        QTest::addColumn<QString>("package");
        QTest::addColumn<QString>("output");
        QTest::addColumn<QStringList>("packages");

        QTest::newRow("installed") << QStringLiteral("com.example.a")
                                   << "Uninstalling com.example.a...\nSuccess"
                                   << QStringList {"com.example.b"};
        QTest::newRow("prints nothing")
            << QStringLiteral("com.example.gone") << "Uninstalling com.example.gone...\n(no output)"
            << QStringList {"com.example.a", "com.example.b"};
    }

    void uninstall()
    {
        QFETCH(QString, package);
        QFETCH(QString, output);
        QFETCH(QStringList, packages);

        m_mac->installPlatformTools();
        m_mac->installApps({QStringLiteral("com.example.b"), QStringLiteral("com.example.a")});
        ApkInstaller installer;
        QSignalSpy busy(&installer, &ApkInstaller::busyChanged);
        installer.uninstall(package, serial);
        QVERIFY(installer.busy());
        QTRY_COMPARE(installer.packages(), packages);
        QCOMPARE(installer.output(), output);
        QCOMPARE(busy.count(), 2);
        QVERIFY(!installer.busy());
    }

    void screenshot_data()
    {
        QTest::addColumn<QByteArray>("screen"); // empty for the phone's own PNG
        QTest::addColumn<QString>("answer"); // the chosen file's name; empty for cancel
        QTest::addColumn<QString>("output");
        QTest::addColumn<bool>("asked");

        QTest::newRow("saved over an older file") << QByteArray() << "shot.png"
                                                  << "Saved screenshot to shot.png." << true;
        QTest::newRow("not a PNG") << QByteArray("error: no display\n") << "shot.png"
                                   << "Screenshot failed: error: no display" << false;
        QTest::newRow("too short to be a PNG")
            << png.left(8) << "shot.png"
            << "Screenshot failed: " + QString::fromUtf8(png.left(8)).trimmed() << false;
        QTest::newRow("cancelled save") << QByteArray() << ""
                                        << "" << true;
        QTest::newRow("failed write") << QByteArray() << "missing/shot.png"
                                      << "Could not save the screenshot: No such file or directory" << true;
    }

    void screenshot()
    {
        QFETCH(QByteArray, screen);
        QFETCH(QString, answer);
        QFETCH(QString, output);
        QFETCH(bool, asked);

        m_mac->installPlatformTools();
        if (!screen.isEmpty())
            m_mac->setControl(QStringLiteral("screen"), screen);
        const QString target = path(QStringLiteral("shot.png"));
        writeFile(target, "an older picture");
        FixedChooser chooser(answer.isEmpty() ? std::nullopt : std::optional<QString>(path(answer)));
        ApkInstaller installer(&chooser);
        QSignalSpy busy(&installer, &ApkInstaller::busyChanged);

        QCoro::waitFor(installer.screenshotTask(serial));
        QCOMPARE(installer.output(), output);
        QCOMPARE(chooser.proposals,
            asked ? QStringList {QStringLiteral("Android Screenshot.png")} : QStringList {});
        QCOMPARE(busy.count(), 2);
        QFile saved(target);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QCOMPARE(saved.readAll(),
            output.startsWith(QLatin1String("Saved")) ? png : QByteArray("an older picture"));
    }

    void saveDialog_data()
    {
        QTest::addColumn<bool>("accept");
        QTest::addColumn<QString>("output");

        QTest::newRow("accepted") << true << "Saved screenshot to from dialog.png.";
        QTest::newRow("rejected") << false << "";
    }

    // The window's dialog answers through the chooser it was handed; even an answer given at once counts.
    void saveDialog()
    {
        QFETCH(bool, accept);
        QFETCH(QString, output);

        m_mac->installPlatformTools();
        DialogSaveLocationChooser chooser;
        QStringList proposals;
        const QString target = path(QStringLiteral("from dialog.png"));
        connect(&chooser, &DialogSaveLocationChooser::saveRequested, this, [&](const QString &proposedName) {
            proposals.append(proposedName);
            if (accept)
                chooser.accept(QUrl::fromLocalFile(target));
            else
                chooser.reject();
        });
        ApkInstaller installer;
        installer.setSaveLocationChooser(&chooser);

        QCoro::waitFor(installer.screenshotTask(serial));
        QCOMPARE(proposals, QStringList {QStringLiteral("Android Screenshot.png")});
        QCOMPARE(installer.output(), output);
        QCOMPARE(QFile::exists(target), accept);
    }
};

QTEST_GUILESS_MAIN(TestApkInstaller)
#include "tst_apkinstaller.moc"
