// Tolvane against the simulated toolchain in a fresh temporary Mac that has only Homebrew, so anyone can
// click through Setup from nothing to ready, create phones, start them and install apps.
// Not part of the shipped app.
//   tolvane-demo [known failure]   (a value of the known-failure switch in sim/README.md)
#include "SimApk.h"
#include "SimHost.h"
#include "TolvaneApp.h"

#include <QDir>
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
    if (argc > 1)
        sim.setBehaviour(QStringLiteral("known-failure"), QByteArray(argv[1]));
    // Apps to drop on a phone: one without native code, one for arm64, one for Intel PCs only.
    const QString apps = root.path() + QStringLiteral("/Apps");
    QDir().mkpath(apps);
    SimApk::write(apps + QStringLiteral("/com.example.notes.apk"));
    SimApk::write(apps + QStringLiteral("/com.example.armgame.apk"), {QStringLiteral("arm64-v8a")});
    SimApk::write(apps + QStringLiteral("/com.example.pcgame.apk"), {QStringLiteral("x86_64")});
    std::printf("Simulated Mac in %s, apps to install in %s\n", qPrintable(root.path()), qPrintable(apps));

    QQmlEngine engine;
    TolvaneApp tolvane(nullptr);
    if (!tolvane.showMainWindow(engine))
        return 1;
    return QGuiApplication::exec();
}
