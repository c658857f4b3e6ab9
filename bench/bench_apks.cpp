// Installs hostile .apk files, made by the simulated toolchain's APK maker, on a simulated running phone
// and prints the longest event-loop turn while each is checked and handed on (target: at most 50 ms),
// and the longest message the installer wrote.
#include "ApkInstaller.h"
#include "EventWatch.h"
#include "SimApk.h"
#include "SimHost.h"

#include <QElapsedTimer>
#include <QStringList>
#include <QTemporaryDir>
#include <QUrl>

#include <QCoro/QCoroTask>

#include <cstdio>

namespace {

struct Hostile
{
    const char *name;
    int abis; // distinct lib/<abi>/ folders
    int padding; // other entries
};

constexpr Hostile hostile[] = {
    {"200,000 entries", 0, 200'000},
    {"60,000 lib/ folders", 60'000, 0},
    {"40,000 lib/ folders, all read", 40'000, 0},
};

} // namespace

int main(int argc, char *argv[])
{
    EventWatch app(argc, argv);
    QTemporaryDir machine;
    SimHost sim(machine.path());
    sim.activate();
    sim.makeReady();
    sim.createPhone(QStringLiteral("Bench_Phone"));
    const QString serial = sim.startPhone(QStringLiteral("Bench_Phone"));

    ApkInstaller installer;
    // The first install starts the tool runner's and the pool's threads: that is not the check's cost.
    const QString plain = machine.filePath(QStringLiteral("com.example.plain.apk"));
    SimApk::write(plain);
    QCoro::waitFor(installer.installTask({QUrl::fromLocalFile(plain)}, serial));
    std::printf("APK checks on a running phone (target: every turn at most 50 ms)\n");
    for (const Hostile &apk : hostile) {
        QStringList abis;
        for (int i = 0; i < apk.abis; ++i)
            abis.append(QStringLiteral("abi%1").arg(i));
        const QString path = machine.filePath(QStringLiteral("hostile.apk"));
        SimApk::write(path, abis, apk.padding);

        app.restart();
        QElapsedTimer clock;
        clock.start();
        QCoro::waitFor(installer.installTask({QUrl::fromLocalFile(path)}, serial));
        const double ms = clock.nsecsElapsed() / 1e6;
        qsizetype longestLine = 0;
        for (const QString &line : installer.latestOutput().split(QLatin1Char('\n')))
            longestLine = std::max(longestLine, line.size());
        std::printf("  %-30s %6.0f ms in all; longest event-loop turn %5.1f ms (%s); longest message %lld "
                    "characters\n",
            apk.name, ms, app.longestOwnMs(), app.longestOwnWhat().constData(),
            static_cast<long long>(longestLine));
    }
    return 0;
}
