// Start to first frame, and idle resident memory, of Tolvane against a bare Qt Quick window with one
// label, measured side by side in one run: each is started as a fresh process, in turns, several times,
// and the medians are compared (targets: first frame at most 1.3 times the bare window's, idle memory
// at most 1.2 times). The time until the Setup tab's content is drawn as well is printed beside them. Tolvane
// runs on a freshly simulated Apple silicon Mac, so it shows its tabs.
#include "Host.h"
#include "SimHost.h"
#include "TolvaneApp.h"

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTimer>
#include <QtQml/qqmlextensionplugin.h>

#include <algorithm>
#include <cstdio>

Q_IMPORT_QML_PLUGIN(TolvanePlugin)

namespace {

constexpr int rounds = 7;
constexpr int idleMs = 1500;

qint64 residentBytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong() * 1024;
    }
    return 0;
}

// The child: shows its window, says "frame" at the first frame, idles, says its resident size, ends.
int child(int argc, char *argv[], bool tolvane)
{
    QGuiApplication app(argc, argv);
    QQmlEngine engine;
    QTemporaryDir root;
    std::unique_ptr<SimHost> sim;
    std::unique_ptr<TolvaneApp> tolvaneApp;
    QQuickWindow *window = nullptr;
    if (tolvane) {
        sim = std::make_unique<SimHost>(root.path());
        sim->activate();
        tolvaneApp = std::make_unique<TolvaneApp>(nullptr);
        if (!tolvaneApp->showMainWindow(engine))
            return 1;
        window = qobject_cast<QQuickWindow *>(tolvaneApp->mainWindow());
    } else {
        QQmlComponent component(&engine);
        component.setData("import QtQuick\nimport QtQuick.Controls\n"
                          "Window { width: 780; height: 640; visible: true; Label { text: \"Tolvane\" } }",
            QUrl());
        window = qobject_cast<QQuickWindow *>(component.create());
    }
    if (!window)
        return 1;
    // "frame" at the first frame; "content" once the Setup tab's content, which waits for the first
    // frame, has been drawn too (the bare window has all it shows in its first frame).
    enum { Nothing, Frame, ContentMade, Content } stage = Nothing;
    QObject::connect(window, &QQuickWindow::frameSwapped, &app, [&app, &stage, window, tolvane] {
        if (stage == Nothing) {
            stage = Frame;
            std::printf("frame\n");
        }
        if (stage == ContentMade || (stage == Frame && !tolvane)) {
            stage = Content;
            std::printf("content\n");
            QTimer::singleShot(idleMs, &app, [] {
                std::printf("%lld\n", static_cast<long long>(residentBytes()));
                std::fflush(stdout);
                QCoreApplication::exit(0);
            });
        }
        // The content made now shows in the next frame.
        if (stage == Frame && window->findChild<QObject *>(QStringLiteral("setupView")))
            stage = ContentMade;
        std::fflush(stdout);
    });
    const int status = QGuiApplication::exec();
    if (!tolvane)
        delete window;
    return status;
}

struct Sample
{
    double firstFrameMs = 0;
    double contentMs = 0;
    double residentMb = 0;
};

Sample measure(const QString &program, const QString &mode)
{
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    if (!env.contains(QStringLiteral("QT_QUICK_BACKEND")))
        env.insert(QStringLiteral("QT_QUICK_BACKEND"), QStringLiteral("software"));
    process.setProcessEnvironment(env);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QElapsedTimer clock;
    clock.start();
    process.start(program, {mode});
    Sample sample;
    while (process.waitForReadyRead(30000)) {
        while (process.canReadLine()) {
            const QByteArray line = process.readLine().trimmed();
            if (line == "frame")
                sample.firstFrameMs = clock.nsecsElapsed() / 1e6;
            else if (line == "content")
                sample.contentMs = clock.nsecsElapsed() / 1e6;
            else
                sample.residentMb = line.toLongLong() / 1e6;
        }
        if (sample.residentMb > 0)
            break;
    }
    process.waitForFinished(30000);
    return sample;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc > 1 && (qstrcmp(argv[1], "--bare") == 0 || qstrcmp(argv[1], "--tolvane") == 0))
        return child(argc, argv, qstrcmp(argv[1], "--tolvane") == 0);

    const QString program = QString::fromLocal8Bit(argv[0]);
    measure(program, QStringLiteral("--bare")); // warm the file cache
    measure(program, QStringLiteral("--tolvane"));
    std::vector<double> bareFrame, tolvaneFrame, tolvaneContent, bareMemory, tolvaneMemory;
    for (int i = 0; i < rounds; ++i) {
        const Sample bare = measure(program, QStringLiteral("--bare"));
        const Sample tolvane = measure(program, QStringLiteral("--tolvane"));
        bareFrame.push_back(bare.firstFrameMs);
        tolvaneFrame.push_back(tolvane.firstFrameMs);
        tolvaneContent.push_back(tolvane.contentMs);
        bareMemory.push_back(bare.residentMb);
        tolvaneMemory.push_back(tolvane.residentMb);
    }
    std::printf("start-up, median of %d runs each, in turns:\n", rounds);
    std::printf(
        "  start to first frame: bare window %.0f ms, Tolvane %.0f ms, ratio %.2f (target: at most 1.3)\n",
        median(bareFrame), median(tolvaneFrame), median(tolvaneFrame) / median(bareFrame));
    std::printf("  start to the Setup tab drawn: Tolvane %.0f ms, %.2f times the bare window's first frame\n",
        median(tolvaneContent), median(tolvaneContent) / median(bareFrame));
    std::printf(
        "  idle resident memory: bare window %.1f MB, Tolvane %.1f MB, ratio %.2f (target: at most 1.2)\n",
        median(bareMemory), median(tolvaneMemory), median(tolvaneMemory) / median(bareMemory));
    return 0;
}
