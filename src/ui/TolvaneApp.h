#pragma once

#include "ApkInstaller.h"
#include "DialogSaveLocationChooser.h"
#include "Logcats.h"
#include "PhoneStore.h"
#include "SetupController.h"

#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

class QQmlEngine;
class QJSEngine;

// The application object: the one SetupController, PhoneStore and ApkInstaller, alive as long as the
// process, and reached by every view through the TolvaneApp singleton.
class TolvaneApp : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(SetupController *setup READ setup CONSTANT)
    Q_PROPERTY(PhoneStore *store READ store CONSTANT)
    Q_PROPERTY(ApkInstaller *installer READ installer CONSTANT)
    Q_PROPERTY(DialogSaveLocationChooser *saveChooser READ saveChooser CONSTANT)
    Q_PROPERTY(Logcats *logcats READ logcats CONSTANT)
    Q_PROPERTY(bool mainWindowDrawn READ mainWindowDrawn NOTIFY mainWindowDrawnChanged)
    Q_PROPERTY(QString version READ version CONSTANT)
    // True where the platform draws the app's menu bar and its items carry their own shortcuts.
    Q_PROPERTY(bool nativeMenuBar READ nativeMenuBar CONSTANT)

public:
    // Ignores SIGPIPE before any model object exists: a tool that exits without reading its input must
    // not take the app with it. There is no default constructor, so QML reaches this one instance
    // through create() instead of making its own.
    explicit TolvaneApp(QObject *parent);
    ~TolvaneApp() override;

    static TolvaneApp *create(QQmlEngine *, QJSEngine *);

    SetupController *setup() const { return m_setup; }
    PhoneStore *store() const { return m_store; }
    ApkInstaller *installer() const { return m_installer; }
    DialogSaveLocationChooser *saveChooser() const { return m_saveChooser; }
    // The version project(VERSION) sets, for the views that show it.
    QString version() const;
    static bool nativeMenuBar();
    Logcats *logcats() const { return m_logcats; }

    // Asked each time a phone row is drawn: the emulator program can vanish or appear at any moment.
    Q_INVOKABLE bool emulatorInstalled() const;
    Q_INVOKABLE void openHomebrewSite() const;
    Q_INVOKABLE void copyToClipboard(const QString &text) const;
    // The Phones tab keeps its start options as plain values and builds one for each start.
    Q_INVOKABLE StartOptions startOptions(
        bool coldBoot, bool noSnapshot, bool wipeData, const QString &scale, const QString &gpu) const;
    // What the new-phone sheet does when it opens: reads the models, then the Android versions, each only
    // if none are known yet; what was read stays for the session, so the sheet opens at once next time.
    Q_INVOKABLE void loadCatalog(PhoneStore *store);

    // Loads the main window into the engine; false when it could not be loaded. The window is closed
    // before the model objects go, so no view ever outlives what it shows.
    // Once loaded, the main window comes back whenever the app is activated while it is closed: a click
    // on the Dock icon reactivates the app.
    bool showMainWindow(QQmlEngine &engine);
    QObject *mainWindow() const { return m_mainWindow; }
    // True once the main window's first frame is on screen: what it shows only then can wait until
    // the window has appeared.
    bool mainWindowDrawn() const { return m_mainWindowDrawn; }

Q_SIGNALS:
    void mainWindowDrawnChanged();

private:
    void reopenMainWindow(Qt::ApplicationState state);
    QCoro::Task<> loadCatalogTask(QPointer<PhoneStore> store);

    SetupController *m_setup;
    PhoneStore *m_store;
    ApkInstaller *m_installer;
    DialogSaveLocationChooser *m_saveChooser;
    Logcats *m_logcats;
    QPointer<QObject> m_mainWindow;
    bool m_mainWindowDrawn = false;
};
