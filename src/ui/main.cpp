#include "TolvaneApp.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(TolvanePlugin)

int main(int argc, char *argv[])
{
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
    return QGuiApplication::exec();
}
