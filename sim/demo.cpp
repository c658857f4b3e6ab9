// Tolvane against the simulated toolchain in a fresh temporary Mac that has only Homebrew, so anyone can
// click through Setup from nothing to ready, create phones, start them and install apps.
// Not part of the shipped app.
#include "SimHost.h"
#include "TolvaneApp.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QTemporaryDir>
#include <QtQml/qqmlextensionplugin.h>

#include <cstdio>

Q_IMPORT_QML_PLUGIN(TolvanePlugin)

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("Tolvane"));

    QTemporaryDir root;
    SimHost sim(root.path());
    sim.setTimeScale(1.0);
    sim.installBrew();
    sim.activate();
    std::printf("Simulated Mac in %s\n", qPrintable(root.path()));

    QQmlEngine engine;
    TolvaneApp tolvane(nullptr);
    if (!tolvane.showMainWindow(engine))
        return 1;
    return QGuiApplication::exec();
}
