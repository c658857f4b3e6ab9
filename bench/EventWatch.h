#pragma once

#include <QElapsedTimer>
#include <QEvent>
#include <QGuiApplication>
#include <QMetaEnum>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QWindow>

#include <memory>

// The application for the benchmarks: it times every event the loop hands out (not the events sent
// from inside another one) and keeps the longest, apart for drawing a window and for everything else,
// which is the work of our own code and of the views it updates. Drawing is what the window does
// when it is told to update: polishing and laying out the Qt Quick items, then rendering them.
class EventWatch : public QGuiApplication
{
public:
    using QGuiApplication::QGuiApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        const QEvent::Type type = event->type();
        const bool drawing
            = receiver->isWindowType() && (type == QEvent::UpdateRequest || type == QEvent::Expose);
        if (m_depth > 0) {
            // Platforms without their own update signal deliver the window's update request from
            // inside a timer event of the window: that whole turn is drawing.
            if (drawing)
                m_drawing = true;
            return QGuiApplication::notify(receiver, event);
        }
        ++m_depth;
        // Read before the event runs: it may delete its receiver.
        const QByteArray receiverClass = receiver->metaObject()->className();
        m_drawing = drawing;
        m_turn.start();
        const bool result = QGuiApplication::notify(receiver, event);
        const qint64 spent = m_turn.nsecsElapsed();
        const bool drew = m_drawing;
        m_drawing = false;
        if (drew) {
            m_longestDrawing = std::max(m_longestDrawing, spent);
        } else if (spent > m_longestOwn) {
            m_longestOwn = spent;
            m_longestOwnWhat
                = QByteArray(QMetaEnum::fromType<QEvent::Type>().valueToKey(type)) + " to " + receiverClass;
        }
        --m_depth;
        return result;
    }

    // Times, within each drawing of the window, the polish that lays out its items (list views apply
    // the rows added since the last frame and make their delegates there). Needs the window to be
    // drawn on this thread, as the offscreen platform does.
    void watchLayout(QQuickWindow *window)
    {
        QObject::connect(
            window, &QQuickWindow::beforeSynchronizing, window,
            [this] {
                if (m_drawing)
                    m_longestLayout = std::max(m_longestLayout, m_turn.nsecsElapsed());
            },
            Qt::DirectConnection);
    }

    // A window of 760 x 600 showing one of our views, whose layout this watch times.
    std::unique_ptr<QQuickWindow> show(QQmlEngine &engine, const QString &type, const QVariantMap &properties)
    {
        auto window = std::make_unique<QQuickWindow>();
        watchLayout(window.get());
        window->resize(760, 600);
        QQmlComponent component(&engine);
        component.setData(
            QStringLiteral("import Tolvane\n%1 { width: 740; height: 560 }").arg(type).toUtf8(), QUrl());
        QObject *view = component.createWithInitialProperties(properties);
        if (!view)
            qFatal("%s", qPrintable(component.errorString()));
        qobject_cast<QQuickItem *>(view)->setParentItem(window->contentItem());
        window->show();
        QCoreApplication::processEvents();
        return window;
    }

    void restart()
    {
        m_longestOwn = m_longestDrawing = m_longestLayout = 0;
        m_longestOwnWhat.clear();
    }
    double longestOwnMs() const { return m_longestOwn / 1e6; }
    double longestDrawingMs() const { return m_longestDrawing / 1e6; }
    double longestLayoutMs() const { return m_longestLayout / 1e6; }
    // The kind of event and the class of its receiver in the longest turn of our own work.
    const QByteArray &longestOwnWhat() const { return m_longestOwnWhat; }

private:
    int m_depth = 0;
    qint64 m_longestOwn = 0;
    qint64 m_longestDrawing = 0;
    qint64 m_longestLayout = 0;
    QElapsedTimer m_turn;
    bool m_drawing = false;
    QByteArray m_longestOwnWhat;
};
