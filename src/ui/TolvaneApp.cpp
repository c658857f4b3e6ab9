#include "TolvaneApp.h"

#include "AndroidTools.h"
#include "TolvaneVersion.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QJSEngine>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QUrl>

#include <csignal>

namespace {

TolvaneApp *theApp = nullptr;

// Runs before the members are built, so SIGPIPE is ignored before any model object exists.
QObject *ignoringSigpipe(QObject *parent)
{
    std::signal(SIGPIPE, SIG_IGN);
    return parent;
}

} // namespace

TolvaneApp::TolvaneApp(QObject *parent)
    : QObject(ignoringSigpipe(parent))
    , m_setup(new SetupController(this))
    , m_store(new PhoneStore(this))
    , m_installer(new ApkInstaller(this))
    , m_saveChooser(new DialogSaveLocationChooser(this))
    , m_logcats(new Logcats(this))
{
    m_installer->setSaveLocationChooser(m_saveChooser);
    // What the installer learnt about a phone lasts while that phone runs, ours or one started elsewhere.
    connect(m_store, &PhoneStore::runnersChanged, m_installer, [this] {
        QStringList serials;
        for (const QVariant &target : m_store->runningTargets())
            serials.append(target.toMap().value(QStringLiteral("serial")).toString());
        m_installer->keepPhonesOnly(serials);
    });
    theApp = this;
}

TolvaneApp::~TolvaneApp()
{
    delete m_mainWindow;
    if (theApp == this)
        theApp = nullptr;
}

TolvaneApp *TolvaneApp::create(QQmlEngine *, QJSEngine *)
{
    Q_ASSERT_X(theApp, "TolvaneApp", "the application object is made before QML needs it");
    QJSEngine::setObjectOwnership(theApp, QJSEngine::CppOwnership);
    return theApp;
}

QString TolvaneApp::version() const
{
    return QStringLiteral(TOLVANE_VERSION);
}

bool TolvaneApp::nativeMenuBar()
{
#ifdef Q_OS_MACOS
    return true;
#else
    return false;
#endif
}

bool TolvaneApp::emulatorInstalled() const
{
    return AndroidTools::emulatorPath().has_value();
}

void TolvaneApp::copyToClipboard(const QString &text) const
{
    QGuiApplication::clipboard()->setText(text);
}

void TolvaneApp::openHomebrewSite() const
{
    QDesktopServices::openUrl(QUrl(QStringLiteral("https://brew.sh")));
}

StartOptions TolvaneApp::startOptions(
    bool coldBoot, bool noSnapshot, bool wipeData, const QString &scale, const QString &gpu) const
{
    StartOptions options;
    options.coldBoot = coldBoot;
    options.noSnapshot = noSnapshot;
    options.wipeData = wipeData;
    options.scale = scale;
    options.gpu = gpu;
    return options;
}

void TolvaneApp::loadCatalog(PhoneStore *store)
{
    loadCatalogTask(store);
}

QCoro::Task<> TolvaneApp::loadCatalogTask(QPointer<PhoneStore> store)
{
    if (store && store->devices().isEmpty()) {
        auto devices = store->loadDevicesTask();
        co_await std::move(devices);
    }
    if (!store || !store->images().isEmpty())
        co_return;
    auto images = store->loadImagesTask();
    co_await std::move(images);
}

bool TolvaneApp::showMainWindow(QQmlEngine &engine)
{
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    // Quit in the app's menu, or its shortcut, ends the app.
    connect(&engine, &QQmlEngine::quit, qGuiApp, &QCoreApplication::quit);
    QQmlComponent component(&engine, QUrl(QStringLiteral("qrc:/qt/qml/Tolvane/Main.qml")));
    QObject *window = component.create();
    if (!window) {
        qWarning().noquote() << component.errorString();
        return false;
    }
    m_mainWindow = window;
    if (auto *quickWindow = qobject_cast<QQuickWindow *>(window)) {
        // Swapped on the render thread; the flag changes on ours, once, and later frames cost nothing.
        connect(
            quickWindow, &QQuickWindow::frameSwapped, this,
            [this] {
                m_mainWindowDrawn = true;
                Q_EMIT mainWindowDrawnChanged();
            },
            Qt::ConnectionType(Qt::QueuedConnection | Qt::SingleShotConnection));
    }
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, &TolvaneApp::reopenMainWindow,
        Qt::UniqueConnection);
    return true;
}

void TolvaneApp::reopenMainWindow(Qt::ApplicationState state)
{
    auto *window = qobject_cast<QQuickWindow *>(m_mainWindow.data());
    if (state != Qt::ApplicationActive || !window || window->isVisible())
        return;
    window->show();
    window->raise();
    window->requestActivate();
}
