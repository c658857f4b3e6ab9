// Pushes 100,000 lines through a JobRunner shown in a JobLogView and through an EmulatorProcess shown
// in an EmulatorLogBody, and reports lines per second and the longest stall of the event loop.
// Targets: at least 50,000 lines per second, no stall over 50 ms.
#include "EmulatorProcess.h"
#include "Host.h"
#include "JobRunner.h"

#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTimer>
#include <QtQml/qqmlextensionplugin.h>

#include <QCoro/QCoroTask>

#include <cstdio>

Q_IMPORT_QML_PLUGIN(TolvanePlugin)

namespace {

constexpr int lineCount = 100000;

// Watches the event loop: a 1 ms timer that notes the longest gap between two of its ticks.
class StallWatch : public QObject
{
public:
    StallWatch()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(1);
        connect(
            &m_timer, &QTimer::timeout, this, [this] { m_longest = std::max(m_longest, m_clock.restart()); });
        m_clock.start();
        m_timer.start();
    }
    qint64 longest() const { return m_longest; }

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_longest = 0;
};

QString floodScript(const QString &trailer)
{
    return QStringLiteral(
        "awk 'BEGIN { for (i = 1; i <= %1; i++) print \"INFO    | emulator: line \" i \" of "
        "the flood, long enough to look like real output\" }'; %2")
        .arg(lineCount)
        .arg(trailer);
}

std::unique_ptr<QQuickWindow> show(QQmlEngine &engine, const QString &type, const QVariantMap &properties)
{
    auto window = std::make_unique<QQuickWindow>();
    window->resize(760, 600);
    QQmlComponent component(&engine);
    component.setData(
        QStringLiteral("import Tolvane\n%1 { width: 740; height: 560 }").arg(type).toUtf8(), QUrl());
    QObject *view = component.createWithInitialProperties(properties);
    if (!view)
        qFatal("%s", qPrintable(component.errorString()));
    auto *item = qobject_cast<QQuickItem *>(view);
    item->setParentItem(window->contentItem());
    window->show();
    return window;
}

void report(const char *what, double ms, qint64 stall)
{
    std::printf("%s: %d lines in %.0f ms = %.0f lines/s, longest event-loop stall %lld ms\n", what, lineCount,
        ms, lineCount / (ms / 1000.0), static_cast<long long>(stall));
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    QTemporaryDir root;
    Host::setCurrent(Host::underRoot(root.path(), true));
    QQmlEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));

    {
        JobRunner runner;
        auto window = show(
            engine, QStringLiteral("JobLogView"), {{QStringLiteral("job"), QVariant::fromValue(&runner)}});
        StallWatch watch;
        QElapsedTimer clock;
        clock.start();
        QCoro::waitFor(runner.run(QStringLiteral("Flood"), QStringLiteral("/bin/sh"),
            {QStringLiteral("-c"), floodScript(QStringLiteral("exit 0"))}));
        QCoreApplication::processEvents();
        report("JobRunner + JobLogView", clock.nsecsElapsed() / 1e6, watch.longest());
    }

    {
        const QString emulator = root.filePath(QStringLiteral("emulator"));
        QFile script(emulator);
        script.open(QIODevice::WriteOnly);
        script.write(("#!/bin/sh\n" + floodScript(QStringLiteral("exec sleep 30"))).toUtf8());
        script.close();
        script.setPermissions(script.permissions() | QFileDevice::ExeOwner);

        EmulatorProcess runner(QStringLiteral("Flood_Phone"));
        auto window = show(engine, QStringLiteral("EmulatorLogBody"),
            {{QStringLiteral("runner"), QVariant::fromValue(&runner)}});
        StallWatch watch;
        QElapsedTimer clock;
        clock.start();
        runner.start(emulator, 5554, StartOptions());
        const QString last = QStringLiteral("INFO    | emulator: line %1 of").arg(lineCount);
        while (runner.lines().isEmpty() || !runner.lines().constLast().startsWith(last))
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        QCoreApplication::processEvents();
        report("EmulatorProcess + EmulatorLogBody", clock.nsecsElapsed() / 1e6, watch.longest());
        if (auto *process = runner.findChild<QProcess *>())
            process->kill();
    }
    return 0;
}
