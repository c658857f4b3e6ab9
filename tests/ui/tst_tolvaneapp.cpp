#include "DataTable.h"
#include "SimApk.h"
#include "SimHost.h"
#include "TolvaneApp.h"
#include "TolvaneVersion.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QtQml/qqmlextensionplugin.h>

#include <QCoro/QCoroTask>

#include <csignal>
#include <memory>

using QCoro::waitFor;

Q_IMPORT_QML_PLUGIN(TolvanePlugin)

class TestTolvaneApp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startUp()
    {
        std::signal(SIGPIPE, SIG_DFL);
        QTemporaryDir root;
        // Not arm64: no tab is shown, so only the window itself can check the machine.
        SimHost sim(root.path(), false);
        sim.installBrew();
        sim.activate();

        QQmlEngine engine;
        TolvaneApp app(nullptr);
        void (*disposition)(int) = std::signal(SIGPIPE, SIG_IGN);
        QVERIFY2(disposition == SIG_IGN, "SIGPIPE is ignored once the app exists");
        QVERIFY(!app.setup()->brewReady());

        QVERIFY(app.showMainWindow(engine));
        auto *main = qobject_cast<QQuickWindow *>(app.mainWindow());
        QVERIFY(main);
        // Showing the window checks the machine.
        QTRY_VERIFY(app.setup()->brewReady());
        QCOMPARE(main->minimumSize(), QSize(780, 640));

        // The views read the version project(VERSION) sets.
        QQmlComponent about(&engine);
        about.setData("import QtQml\nimport Tolvane\nQtObject { property string v: TolvaneApp.version }", {});
        const std::unique_ptr<QObject> shown(about.create());
        QCOMPARE(shown->property("v").toString(), QStringLiteral(TOLVANE_VERSION));

        // About Tolvane names the version.
        QMetaObject::invokeMethod(main, "showAbout");
        QObject *version = main->findChild<QObject *>(QStringLiteral("aboutVersion"));
        QVERIFY(version);
        QCOMPARE(version->property("text").toString(), QStringLiteral("Version " TOLVANE_VERSION));

        QVERIFY(!main->property("logsWindow").value<QQuickWindow *>());
        QMetaObject::invokeMethod(main, "openLogs");
        auto *logs = main->property("logsWindow").value<QQuickWindow *>();
        QVERIFY(logs);
        QCOMPARE(logs->title(), QStringLiteral("Emulator Logs"));
        QCOMPARE(logs->objectName(), QStringLiteral("logs"));
        QCOMPARE(logs->minimumSize(), QSize(640, 420));
        QVERIFY(logs->isVisible());

        // Pressing "Logs" again brings the same window forward.
        logs->hide();
        QMetaObject::invokeMethod(main, "openLogs");
        QCOMPARE(main->property("logsWindow").value<QQuickWindow *>(), logs);
        QVERIFY(logs->isVisible());

        // Closing the window leaves the app running; activating the app again, as a click on the Dock icon
        // does, brings the window back and checks the machine again.
        main->close();
        QVERIFY(QFile::remove(sim.brewPath()));
        Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
        QVERIFY(!main->isVisible());
        Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationActive);
        QVERIFY(main->isVisible());
        QTRY_VERIFY(!app.setup()->brewReady());
    }

    // The app's commands answer their shortcuts in the window in front; Ctrl is the Command key on the Mac.
    void commands_data()
    {
        columns<QString, QString>("keys", "effect");

        QTest::newRow("New Phone") << "Ctrl+N"
                                   << "sheet";
        QTest::newRow("Refresh") << "Ctrl+R"
                                 << "checked";
        QTest::newRow("Close Window") << "Ctrl+W"
                                      << "logs closed";
        QTest::newRow("Minimize") << "Ctrl+M"
                                  << "minimized";
        QTest::newRow("Quit") << "Ctrl+Q"
                              << "quit";
        // The app menu's item, which has no shortcut of its own.
        QTest::newRow("About Tolvane") << ""
                                       << "about";
    }

    void commands()
    {
        auto [keys, effect] = row<QString, QString>("keys", "effect");
        if (TolvaneApp::nativeMenuBar())
            QSKIP("The menu bar's items carry the shortcuts here.");

        QTemporaryDir root;
        SimHost sim(root.path());
        sim.activate();
        sim.makeReady();
        QQmlEngine engine;
        TolvaneApp app(nullptr);
        QVERIFY(app.showMainWindow(engine));
        auto *main = qobject_cast<QQuickWindow *>(app.mainWindow());
        QTRY_VERIFY(main->findChild<QObject *>(QStringLiteral("setupView")));
        QTRY_VERIFY(app.setup()->licensesAccepted());
        QQuickWindow *front = main;
        if (effect == QLatin1String("logs closed")) {
            QMetaObject::invokeMethod(main, "openLogs");
            front = main->property("logsWindow").value<QQuickWindow *>();
            QTRY_VERIFY(front->isActive());
        }
        if (effect == QLatin1String("checked"))
            QVERIFY(QFile::remove(sim.brewPath()));

        if (effect == QLatin1String("quit")) {
            // Quitting ends the application's own event loop, as in the app.
            const QKeySequence sequence(keys); // clang before 16 captures no structured binding
            QTimer::singleShot(0, front, [&] { QTest::keySequence(front, sequence); });
            QTimer::singleShot(10000, front, [] { QCoreApplication::exit(1); });
            QCOMPARE(QCoreApplication::exec(), 0);
            return;
        }
        if (effect == QLatin1String("about")) {
            QMetaObject::invokeMethod(main, "showAbout");
            QObject *box = main->findChild<QObject *>(QStringLiteral("aboutBox"));
            QVERIFY(box);
            QTRY_VERIFY(box->property("opened").toBool());
            QCOMPARE(box->findChild<QObject *>(QStringLiteral("aboutVersion"))->property("text").toString(),
                QStringLiteral("Version " TOLVANE_VERSION));
            // Return presses OK, which closes the box.
            QTest::keyClick(main, Qt::Key_Return);
            QTRY_VERIFY(!box->property("visible").toBool());
            return;
        }
        QTest::keySequence(front, QKeySequence(keys));
        if (effect == QLatin1String("sheet")) {
            QTRY_VERIFY(main->findChild<QObject *>(QStringLiteral("newPhoneSheet")));
            QCOMPARE(main->findChild<QObject *>(QStringLiteral("tabs"))->property("currentIndex"), 1);
        } else if (effect == QLatin1String("checked")) {
            QTRY_VERIFY(!app.setup()->brewReady());
        } else if (effect == QLatin1String("logs closed")) {
            QTRY_VERIFY(!front->isVisible());
            QVERIFY(main->isVisible());
        } else {
            QTRY_VERIFY(main->windowStates() & Qt::WindowMinimized);
        }
    }

    // What the installer learnt about a phone lasts while that phone runs, ours or one started elsewhere,
    // and no longer: a serial can come back as another phone.
    void installerKnowsRunningPhonesOnly()
    {
        QTemporaryDir root;
        SimHost sim(root.path());
        sim.activate();
        sim.makeReady();
        sim.createPhone(QStringLiteral("A"));
        const QString serial = sim.startPhone(QStringLiteral("A"));
        const QString apk = root.filePath(QStringLiteral("com.example.native.apk"));
        SimApk::write(apk, {QStringLiteral("arm64-v8a")});
        TolvaneApp app(nullptr);
        PhoneStore *store = app.store();
        const auto install = [&] {
            waitFor(app.installer()->installTask({QUrl::fromLocalFile(apk)}, serial));
            return sim.adbCalls().filter(QStringLiteral("abilist")).size();
        };
        waitFor(store->refreshTask());
        QCOMPARE(install(), 1);
        waitFor(store->refreshTask());
        QCOMPARE(install(), 1);

        waitFor(store->elsewhere()->stopTask(QStringLiteral("A")));
        sim.startPhone(QStringLiteral("A"));
        waitFor(store->refreshTask());
        QCOMPARE(install(), 2);
    }

    // The file dialogs cost nothing at start; the save dialog proposes a folder the user can write to.
    void saveDialog_data()
    {
        columns<QStringList, QString>("folders", "proposed");

        QTest::newRow("pictures") << QStringList {"Pictures", "Desktop"} << "Pictures";
        QTest::newRow("desktop only") << QStringList {"Desktop"} << "Desktop";
        QTest::newRow("neither") << QStringList {} << "";
    }

    void saveDialog()
    {
        auto [folders, proposed] = row<QStringList, QString>("folders", "proposed");

        QTemporaryDir root;
        SimHost sim(root.path());
        sim.activate();
        for (const QString &folder : std::as_const(folders))
            QVERIFY(QDir(root.path()).mkpath(folder));
        QQmlEngine engine;
        TolvaneApp app(nullptr);
        QVERIFY(app.showMainWindow(engine));
        QObject *main = app.mainWindow();
        // The shown tab's content comes once the window has been drawn.
        QTRY_VERIFY(main->findChild<QObject *>(QStringLiteral("setupView")));
        QVERIFY(!main->findChild<QObject *>(QStringLiteral("saveDialog")));
        QVERIFY(!main->findChild<QObject *>(QStringLiteral("openDialog")));

        Q_EMIT app.saveChooser()->saveRequested(QStringLiteral("Android Screenshot.png"));
        QObject *dialog = main->findChild<QObject *>(QStringLiteral("saveDialog"));
        QVERIFY(dialog);
        const QString folder = QDir(root.path()).filePath(proposed);
        QCOMPARE(dialog->property("currentFolder").toUrl(), QUrl::fromLocalFile(QDir::cleanPath(folder)));
        QCOMPARE(dialog->property("selectedFile").toUrl(),
            QUrl::fromLocalFile(QDir(folder).filePath(QStringLiteral("Android Screenshot.png"))));
        QCOMPARE(dialog->property("acceptLabel").toString(), QStringLiteral("Save"));
        QMetaObject::invokeMethod(dialog, "reject");
    }
};

QTEST_MAIN(TestTolvaneApp)
#include "tst_tolvaneapp.moc"
