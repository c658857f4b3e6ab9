// Runs the QML test cases in tests/ui/qml against the real views and the real model objects, over the
// simulated toolchain in a fresh temporary Mac.
#include "EmulatorProcess.h"
#include "SimControl.h"
#include "TolvaneApp.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QtQml/qqmlextensionplugin.h>
#include <QtQuickTest/quicktest.h>

Q_IMPORT_QML_PLUGIN(TolvanePlugin)

class UiTestSetup : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void applicationAvailable()
    {
        // The real waits are pinned by the emulator's own tests; here they would only slow every boot down.
        EmulatorProcess::Timing timing;
        timing.bootPollInterval = std::chrono::milliseconds(100);
        timing.endDelay = std::chrono::milliseconds(50);
        EmulatorProcess::setTiming(timing);
        m_sim = std::make_unique<SimControl>();
        m_app = std::make_unique<TolvaneApp>(nullptr);
    }

    void qmlEngineAvailable(QQmlEngine *engine)
    {
        engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
        engine->rootContext()->setContextProperty(QStringLiteral("sim"), m_sim.get());
    }

    void cleanupTestCase()
    {
        m_app.reset();
        m_sim.reset();
    }

private:
    std::unique_ptr<SimControl> m_sim;
    std::unique_ptr<TolvaneApp> m_app;
};

QUICK_TEST_MAIN_WITH_SETUP(ui, UiTestSetup)
#include "tst_ui.moc"
