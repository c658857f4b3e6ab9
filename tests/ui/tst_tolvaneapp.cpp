#include "SimHost.h"
#include "TolvaneApp.h"

#include <QQmlEngine>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

#include <csignal>

Q_IMPORT_QML_PLUGIN(TolvanePlugin)

class TestTolvaneApp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startUp()
    {
        std::signal(SIGPIPE, SIG_DFL);
        QTemporaryDir root;
        SimHost sim(root.path());
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
    }
};

QTEST_MAIN(TestTolvaneApp)
#include "tst_tolvaneapp.moc"
