#include "AndroidTools.h"
#include "ApkArchive.h"
#include "ApkInstaller.h"
#include "DataTable.h"
#include "DialogSaveLocationChooser.h"
#include "SimApk.h"
#include "SimHost.h"
#include "TestFiles.h"

#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <QCoro/QCoroTask>

#include <memory>

namespace {

const QString serial = QStringLiteral("emulator-5554");
const QString noAdb
    = QStringLiteral("adb was not found. Install the emulator and platform tools on the Setup tab first.");
const QString phone = QStringLiteral("Pixel_7");

QString noteOf(const ApkInstaller &installer)
{
    return installer.packagesNote().value_or(QStringLiteral("<none>"));
}

} // namespace

class TestApkInstaller : public QObject
{
    Q_OBJECT

    // One simulated Mac with one running phone serves every test; each test gets a fresh folder of files.
    QTemporaryDir m_machine;
    std::unique_ptr<SimHost> m_sim;
    std::unique_ptr<QTemporaryDir> m_dir;

    QString path(const QString &name) const { return m_dir->filePath(name); }

    // Each named file exists: an app with native code for `abis` where the name says .apk, else text. abis
    // {"text"} makes every file text, {"empty"} empty; "padded" makes an app longer than is read.
    QList<QUrl> files(const QStringList &names, QStringList abis = {}) const
    {
        QList<QUrl> urls;
        const int padding = abis.removeAll(QStringLiteral("padded")) ? int(ApkArchive::maxEntries) : 0;
        for (const QString &name : names) {
            if (abis == QStringList {"empty"})
                writeFile(path(name), "");
            else if (abis == QStringList {"no entries"}) // a zip archive's end record alone
                writeFile(path(name), QByteArray("PK\x05\x06").append(18, '\0'));
            else if (name.endsWith(QLatin1String(".apk"), Qt::CaseInsensitive)
                && abis != QStringList {"text"})
                SimApk::write(path(name), abis, padding);
            else
                writeFile(path(name), "PK\x03\x04 but no archive");
            urls.append(QUrl::fromLocalFile(path(name)));
        }
        return urls;
    }
    int installsRun() const { return int(m_sim->adbCalls().filter(QStringLiteral(" install ")).size()); }

private Q_SLOTS:
    void initTestCase()
    {
        m_sim = std::make_unique<SimHost>(m_machine.path());
        m_sim->activate();
        m_sim->makeReady();
        m_sim->createPhone(phone);
        QCOMPARE(m_sim->startPhone(phone), serial);
    }

    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_sim->setInstalledApps(phone, {});
    }

    void cleanup()
    {
        for (const char *key : {"adb.silent", "adb.pm.output", "adb.pm.fail", "adb.screencap.output",
                 "adb.abilist", "known-failure", "adb.script"})
            m_sim->clearBehaviour(QLatin1String(key));
    }

    void cleanupTestCase() { m_sim.reset(); }

    // Refused without a word to adb: files that are no .apk, and anything once adb is gone.
    void refusals()
    {
        ApkInstaller installer;
        QSignalSpy busy(&installer, &ApkInstaller::busyChanged);
        QSignalSpy packages(&installer, &ApkInstaller::packagesChanged);
        QSignalSpy notes(&installer, &ApkInstaller::packagesNoteChanged);
        QCoro::waitFor(installer.installTask(files({"notes.txt", "apk", "app.apk.zip"}), serial));
        QCoro::waitFor(installer.installTask({}, serial));
        QCOMPARE(busy.count(), 0);
        QCOMPARE(packages.count(), 0);
        QCOMPARE(notes.count(), 0);

        const QString adb = *AndroidTools::adbPath();
        QVERIFY(QFile::rename(adb, adb + QStringLiteral(".away")));
        const auto restore = qScopeGuard([&] { QFile::rename(adb + QStringLiteral(".away"), adb); });
        QCoro::waitFor(installer.installTask(files({"app.apk"}), serial));
        QCOMPARE(noteOf(installer), QStringLiteral("Could not list apps: ") + noAdb);
        QCoro::waitFor(installer.uninstallTask(QStringLiteral("com.example.app"), serial));
        QCoro::waitFor(installer.screenshotTask(serial));
        // The first message has no leading line break; each next one is on a line of its own.
        QCOMPARE(installer.output(),
            QStringLiteral("Only .apk files can be installed.\nOnly .apk files can be installed.\nInstalling "
                           "app.apk...\n%1\nUninstalling com.example.app...\n%1\nScreenshot failed: %1")
                .arg(noAdb));
        QVERIFY(!installer.busy());
    }

    void install_data()
    {
        // abis: of every .apk; "text" for a file that is no archive
        columns<QStringList, QStringList, QString, QString, QStringList, int>(
            "names", "abis", "behaviour", "output", "packages", "installsRun");

        // The second zeta.apk replaces the first.
        QTest::newRow("one is not an apk, one comes again")
            << QStringList {"zeta.apk", "notes.txt", "Alpha.APK", "zeta.apk"} << QStringList() << QString()
            << QStringLiteral("Installing zeta.apk...\nPerforming Streamed Install\nSuccess\n"
                              "Installing Alpha.APK...\nPerforming Streamed Install\nSuccess\n"
                              "Installing zeta.apk...\nPerforming Streamed Install\nSuccess")
            << QStringList {"com.example.alpha", "com.example.zeta"} << 3;
        QTest::newRow("a failed install does not stop the batch")
            << QStringList {"broken.apk", "good.Apk"} << QStringList() << QString()
            << QStringLiteral("Installing broken.apk...\nPerforming Streamed Install\nadb: failed to install "
                              "<folder>/broken.apk: Failure [INSTALL_PARSE_FAILED_NOT_APK: Failed parse "
                              "during installPackageLI: Failed to parse <folder>/broken.apk]\n"
                              "Installing good.Apk...\nPerforming Streamed Install\nSuccess")
            << QStringList {"com.example.good"} << 2;
        QTest::newRow("install that prints nothing")
            << QStringList {"quiet.apk"} << QStringList() << QStringLiteral("adb.silent")
            << QStringLiteral("Installing quiet.apk...\n(adb printed nothing; exit status 1)")
            << QStringList {} << 1;
        QTest::newRow("native code only for x86_64 never reaches adb install")
            << QStringList {"game.apk"} << QStringList {"x86", "x86_64"} << QString()
            << QStringLiteral(
                   "Installing game.apk...\nNot installed: game.apk has native code only for x86, x86_64, "
                   "and this phone runs arm64-v8a.")
            << QStringList {} << 0;
        QTest::newRow("native code for arm64 installs")
            << QStringList {"com.example.arm.apk"} << QStringList {"arm64-v8a", "x86_64"} << QString()
            << QStringLiteral("Installing com.example.arm.apk...\nPerforming Streamed Install\nSuccess")
            << QStringList {"com.example.arm"} << 1;
        QTest::newRow("a handful of its ABIs are named")
            << QStringList {"wide.apk"} << QStringList {"a1", "a2", "a3", "a4", "a5", "a6", "a7"} << QString()
            << QStringLiteral("Installing wide.apk...\nNot installed: wide.apk has native code only for a1, "
                              "a2, a3, a4, a5 and 2 more, and this phone runs arm64-v8a.")
            << QStringList {} << 0;
        // Too long to read: Android's own check at install judges it.
        QTest::newRow("an app longer than is read goes to adb")
            << QStringList {"com.example.long.apk"} << QStringList {"x86", "padded"} << QString()
            << QStringLiteral("Installing com.example.long.apk...\nPerforming Streamed Install\nSuccess")
            << QStringList {"com.example.long"} << 1;
        QTest::newRow("an empty file never reaches adb install")
            << QStringList {"empty.apk"} << QStringList {"empty"} << QString()
            << QStringLiteral("Installing empty.apk...\nNot installed: empty.apk is not a zip archive (The "
                              "archive is empty), so it cannot be an Android app. Download it again, or ask "
                              "its maker for the .apk file itself.")
            << QStringList {} << 0;
        QTest::newRow("an archive without entries never reaches adb install")
            << QStringList {"hollow.apk"} << QStringList {"no entries"} << QString()
            << QStringLiteral("Installing hollow.apk...\nNot installed: hollow.apk is not a zip archive (The "
                              "archive is empty), so it cannot be an Android app. Download it again, or ask "
                              "its maker for the .apk file itself.")
            << QStringList {} << 0;
        QTest::newRow("a file that is no zip archive never reaches adb install")
            << QStringList {"fake.apk"} << QStringList {"text"} << QString()
            << QStringLiteral(
                   "Installing fake.apk...\nNot installed: fake.apk is not a zip archive (Not a zip "
                   "archive), so it cannot be an Android app. Download it again, or ask its maker for "
                   "the .apk file itself.")
            << QStringList {} << 0;
    }

    void install()
    {
        auto [names, behaviour, output, packages, abis, installsRun]
            = row<QStringList, QString, QString, QStringList, QStringList, int>(
                "names", "behaviour", "output", "packages", "abis", "installsRun");

        if (!behaviour.isEmpty())
            m_sim->setBehaviour(behaviour);
        const QList<QUrl> urls = files(names, abis);
        const int installsBefore = this->installsRun();
        ApkInstaller installer;
        QSignalSpy busy(&installer, &ApkInstaller::busyChanged);
        QList<bool> busyWhileListed;
        connect(&installer, &ApkInstaller::packagesChanged, this,
            [&] { busyWhileListed.append(installer.busy()); });

        installer.install(urls, serial);
        QTRY_COMPARE(busyWhileListed.size(), 1);
        // libzip words its own reason differently from one release to the next; the sentence around it is
        // ours.
        static const QRegularExpression zipReason(QStringLiteral("(is not a zip archive \\()[^)]*\\)"));
        QCOMPARE(installer.output().replace(zipReason, QStringLiteral("\\1...)")),
            output.replace(QStringLiteral("<folder>"), m_dir->path())
                .replace(zipReason, QStringLiteral("\\1...)")));
        QCOMPARE(installer.packages(), packages);
        // busy covers the installs only; the listing that follows runs with it clear.
        QCOMPARE(busy.count(), 2);
        QCOMPARE(busyWhileListed, QList<bool> {false});
        QCOMPARE(this->installsRun() - installsBefore, installsRun);
    }

    // The phone is asked for its ABIs once while it runs, and again once it may be another phone.
    void phoneAbisAskedOncePerRun()
    {
        const auto asked
            = [&] { return m_sim->adbCalls().filter(QStringLiteral("ro.product.cpu.abilist")).size(); };
        const qsizetype before = asked();
        m_sim->setBehaviour(QStringLiteral("adb.abilist"), "x86_64,x86\n");
        ApkInstaller installer;
        QCoro::waitFor(
            installer.installTask(files({"com.example.a.apk", "com.example.b.apk"}, {"x86_64"}), serial));
        QCOMPARE(asked() - before, 1);
        QCOMPARE(installer.packages(), QStringList({"com.example.a", "com.example.b"}));
        installer.keepPhonesOnly({serial});
        QCoro::waitFor(installer.installTask(files({"com.example.a.apk"}, {"x86_64"}), serial));
        QCOMPARE(asked() - before, 1);
        installer.keepPhonesOnly({});
        m_sim->clearBehaviour(QStringLiteral("adb.abilist"));
        QCoro::waitFor(installer.installTask(files({"com.example.c.apk"}, {"x86_64"}), serial));
        QCOMPARE(asked() - before, 2);
        QVERIFY(installer.latestOutput().startsWith(
            QStringLiteral("Installing com.example.c.apk...\nNot installed:")));
    }

    void listing_data()
    {
        // listing: what the behaviour makes adb print
        columns<QString, QString, QByteArray, QStringList, QString>(
            "serial", "behaviour", "listing", "packages", "note");

        const QString output = QStringLiteral("adb.pm.output");
        const QStringList earlier {"com.example.kept"};
        QTest::newRow("sorted") << serial << output << QByteArray("package:com.b\npackage:com.a")
                                << QStringList {"com.a", "com.b"} << "<none>";
        QTest::newRow("white space around lines")
            << serial << output << QByteArray("  package:com.c \r\n\tpackage:com.a\r")
            << QStringList {"com.a", "com.c"} << "<none>";
        QTest::newRow("no packages") << serial << output << QByteArray("\n") << QStringList {}
                                     << "No apps installed by you yet.";
        QTest::newRow("other text") << serial << output
                                    << QByteArray("\nError: could not access the Package Manager.")
                                    << QStringList {}
                                    << "adb said: Error: could not access the Package Manager.";
        QTest::newRow("listing fails") << serial << QStringLiteral("adb.pm.fail") << QByteArray("1")
                                       << earlier << "Could not list apps: cmd: Can't find service: package";
        // A phone that never had an app installed: adb prints nothing and succeeds.
        QTest::newRow("phone never given an app") << serial << QStringLiteral("no apps") << QByteArray()
                                                  << QStringList {} << "No apps installed by you yet.";
        QTest::newRow("fails without a word")
            << serial << QStringLiteral("adb.pm.fail") << QByteArray("silent") << earlier
            << "Could not list apps: The command exited with status 1.";
        // The listing's time-out, shortened: the earlier list still describes the phone.
        QTest::newRow("times out") << serial << QStringLiteral("adb.script")
                                   << QByteArray("case \"$*\" in *\"pm list\"*) exec sleep 600 ;; esac")
                                   << earlier << "Could not list apps: The command did not finish in time.";
        QTest::newRow("unknown phone")
            << QStringLiteral("emulator-5556") << QString() << QByteArray() << earlier
            << "Could not list apps: error: device 'emulator-5556' not found";
    }

    void listing()
    {
        auto [serial, behaviour, listing, packages, note]
            = row<QString, QString, QByteArray, QStringList, QString>(
                "serial", "behaviour", "listing", "packages", "note");

        m_sim->setInstalledApps(phone, {QStringLiteral("com.example.kept")});
        ApkInstaller installer;
        QCoro::waitFor(installer.refreshPackagesTask(::serial));
        QCOMPARE(installer.packages(), QStringList {QStringLiteral("com.example.kept")});

        if (behaviour == QLatin1String("no apps"))
            QFile::remove(m_sim->stateDir() + QStringLiteral("/packages/") + phone);
        else if (!behaviour.isEmpty())
            m_sim->setBehaviour(behaviour, listing);
        const auto restore = qScopeGuard([] { ApkInstaller::setTimeouts({}); });
        if (behaviour == QLatin1String("adb.script"))
            ApkInstaller::setTimeouts({1.0, 30.0, 30.0});
        QSignalSpy busy(&installer, &ApkInstaller::busyChanged);
        QCoro::waitFor(installer.refreshPackagesTask(serial));
        QCOMPARE(installer.packages(), packages);
        QCOMPARE(noteOf(installer), note);
        // A list kept from before is marked as such until a listing succeeds again.
        const bool failed = note.startsWith(QLatin1String("Could not list apps: "));
        QCOMPARE(installer.packagesOutOfDate(), failed);
        QCOMPARE(busy.count(), 0);
        QVERIFY(installer.output().isEmpty());
        if (failed) {
            cleanup();
            QCoro::waitFor(installer.refreshPackagesTask(::serial));
            QVERIFY(!installer.packagesOutOfDate());
        }
    }

    void uninstall_data()
    {
        columns<QString, QString, QString, QStringList>("package", "behaviour", "output", "packages");

        QTest::newRow("installed") << QStringLiteral("com.example.a") << QString()
                                   << "Uninstalling com.example.a...\nSuccess"
                                   << QStringList {"com.example.b"};
        QTest::newRow("not installed")
            << QStringLiteral("com.example.gone") << QString()
            << "Uninstalling com.example.gone...\nFailure [DELETE_FAILED_INTERNAL_ERROR]"
            << QStringList {"com.example.a", "com.example.b"};
        QTest::newRow("prints nothing")
            << QStringLiteral("com.example.a") << QStringLiteral("adb.silent")
            << "Uninstalling com.example.a...\n(no output)" << QStringList {"com.example.a", "com.example.b"};
    }

    void uninstall()
    {
        auto [package, behaviour, output, packages]
            = row<QString, QString, QString, QStringList>("package", "behaviour", "output", "packages");

        m_sim->setInstalledApps(phone, {QStringLiteral("com.example.b"), QStringLiteral("com.example.a")});
        if (!behaviour.isEmpty())
            m_sim->setBehaviour(behaviour);
        ApkInstaller installer;
        QSignalSpy busy(&installer, &ApkInstaller::busyChanged);
        QSignalSpy listed(&installer, &ApkInstaller::packagesChanged);
        installer.uninstall(package, serial);
        QVERIFY(installer.busy());
        QTRY_COMPARE(listed.count(), 1);
        QCOMPARE(installer.packages(), packages);
        QCOMPARE(installer.output(), output);
        QCOMPARE(busy.count(), 2);
        QVERIFY(!installer.busy());
    }

    void screenshot_data()
    {
        // screen: what screencap writes instead of the phone's PNG; answer: the chosen file's name; empty for
        // cancel
        columns<QByteArray, QString, QString, bool>("screen", "answer", "output", "asked");

        const QByteArray signature("\x89PNG\r\n\x1a\n", 8);
        QTest::newRow("saved over an older file") << QByteArray() << "shot.png"
                                                  << "Saved screenshot to shot.png." << true;
        QTest::newRow("not a PNG") << QByteArray("error: no display\n") << "shot.png"
                                   << "Screenshot failed: error: no display" << false;
        QTest::newRow("too short to be a PNG")
            << signature << "shot.png"
            << "Screenshot failed: " + QString::fromUtf8(signature).trimmed() << false;
        QTest::newRow("cancelled save") << QByteArray() << ""
                                        << "" << true;
        QTest::newRow("failed write") << QByteArray() << "missing/shot.png"
                                      << "Could not save the screenshot: No such file or directory" << true;
    }

    // The window's dialog answers through the chooser; here it answers as soon as it is asked.
    void screenshot()
    {
        auto [screen, answer, output, asked]
            = row<QByteArray, QString, QString, bool>("screen", "answer", "output", "asked");

        if (!screen.isEmpty())
            m_sim->setBehaviour(QStringLiteral("adb.screencap.output"), screen);
        const QString target = path(QStringLiteral("shot.png"));
        writeFile(target, "an older picture");
        DialogSaveLocationChooser chooser;
        QStringList proposals;
        connect(&chooser, &DialogSaveLocationChooser::saveRequested, this,
            [&, answer = answer](const QString &proposedName) {
                proposals.append(proposedName);
                if (answer.isEmpty())
                    chooser.reject();
                else
                    chooser.accept(QUrl::fromLocalFile(path(answer)));
            });
        ApkInstaller installer;
        installer.setSaveLocationChooser(&chooser);
        QSignalSpy busy(&installer, &ApkInstaller::busyChanged);

        QCoro::waitFor(installer.screenshotTask(serial));
        QCOMPARE(installer.output(), output);
        QCOMPARE(proposals, asked ? QStringList {QStringLiteral("Android Screenshot.png")} : QStringList {});
        QCOMPARE(busy.count(), 2);
        QFile saved(target);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QFile phoneScreen(QStringLiteral(TOLVANE_SIM_TOOLS_DIR "/screen.png"));
        QVERIFY(phoneScreen.open(QIODevice::ReadOnly));
        QCOMPARE(saved.readAll(),
            output.startsWith(QLatin1String("Saved")) ? phoneScreen.readAll()
                                                      : QByteArray("an older picture"));
    }
};

QTEST_GUILESS_MAIN(TestApkInstaller)
#include "tst_apkinstaller.moc"
