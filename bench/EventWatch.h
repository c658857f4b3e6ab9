#pragma once

#include <QElapsedTimer>
#include <QEvent>
#include <QGuiApplication>
#include <QWindow>

// The application for the benchmarks: it times every event the loop hands out (not the events sent
// from inside another one) and keeps the longest, apart for drawing a window and for everything else,
// which is the work of our own code and of the views it updates.
class EventWatch : public QGuiApplication
{
public:
    using QGuiApplication::QGuiApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        if (m_depth > 0)
            return QGuiApplication::notify(receiver, event);
        ++m_depth;
        QElapsedTimer clock;
        clock.start();
        const bool drawing = receiver->isWindowType()
            && (event->type() == QEvent::UpdateRequest || event->type() == QEvent::Expose);
        const bool result = QGuiApplication::notify(receiver, event);
        const qint64 spent = clock.nsecsElapsed();
        qint64 &longest = drawing ? m_longestDrawing : m_longestOwn;
        longest = std::max(longest, spent);
        --m_depth;
        return result;
    }

    void restart() { m_longestOwn = m_longestDrawing = 0; }
    double longestOwnMs() const { return m_longestOwn / 1e6; }
    double longestDrawingMs() const { return m_longestDrawing / 1e6; }

private:
    int m_depth = 0;
    qint64 m_longestOwn = 0;
    qint64 m_longestDrawing = 0;
};
