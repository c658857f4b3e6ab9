#include "TolvaneApp.h"
#include "TolvaneVersion.h"

#include <QDirIterator>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QTimer>
#include <QtQml/qqmlextensionplugin.h>

#include <chrono>
#include <cstdio>
#include <cstring>

Q_IMPORT_QML_PLUGIN(TolvanePlugin)

namespace {

// --self-test, the package's last check: every view compiles against the QML modules this app finds,
// and the main window draws its first frame; then the app quits on its own. Failures name the file.
void selfTest(TolvaneApp &tolvane, QQmlEngine &engine)
{
    QObject::connect(&tolvane, &TolvaneApp::mainWindowDrawnChanged, &engine, [&engine] {
        int status = 0;
        QDirIterator views(QStringLiteral(":/qt/qml/Tolvane"), {QStringLiteral("*.qml")});
        while (views.hasNext()) {
            QQmlComponent view(&engine, QUrl(QLatin1String("qrc") + views.next()));
            if (view.isError()) {
                std::fprintf(stderr, "%s\n", qPrintable(view.errorString()));
                status = 1;
            }
        }
        QCoreApplication::exit(status);
    });
    QTimer::singleShot(std::chrono::minutes(1), &engine, [] {
        std::fputs("The main window drew no frame within a minute.\n", stderr);
        QCoreApplication::exit(2);
    });
}

} // namespace

int main(int argc, char *argv[])
{
    // Answered before the window system is reached, so it works without a display.
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--version") == 0) {
            std::puts("Tolvane " TOLVANE_VERSION);
            return 0;
        }
    }

    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("Tolvane"));
#ifdef Q_OS_MACOS
    // As Mac apps do, closing the window leaves the app running; the Dock icon brings the window back.
    QGuiApplication::setQuitOnLastWindowClosed(false);
#endif

    QQmlEngine engine;
    TolvaneApp tolvane(nullptr);
    if (!tolvane.showMainWindow(engine))
        return 1;
    if (QGuiApplication::arguments().contains(QStringLiteral("--self-test")))
        selfTest(tolvane, engine);
    return QGuiApplication::exec();
}
