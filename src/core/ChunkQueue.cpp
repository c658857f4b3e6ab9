#include "ChunkQueue.h"

#include <QElapsedTimer>

ChunkQueue::ChunkQueue(Sink sink, QObject *parent)
    : QObject(parent)
    , m_sink(std::move(sink))
{ }

void ChunkQueue::push(const QString &chunk)
{
    if (chunk.isEmpty())
        return;
    m_chunks.push_back(chunk);
    schedule();
}

std::optional<QString> ChunkQueue::flush()
{
    return m_splitter.flush();
}

void ChunkQueue::clear()
{
    m_chunks.clear();
    m_offset = 0;
    m_splitter = {};
}

void ChunkQueue::schedule()
{
    if (m_scheduled)
        return;
    m_scheduled = true;
    QMetaObject::invokeMethod(this, &ChunkQueue::drain, Qt::QueuedConnection);
}

void ChunkQueue::drain()
{
    m_scheduled = false;
    QElapsedTimer clock;
    clock.start();
    // The sink's time counts too: what the log and its view make of the lines is part of the turn.
    while (!m_chunks.empty() && clock.nsecsElapsed() < turnBudget.count()) {
        const QString &chunk = m_chunks.front();
        const QStringView slice = QStringView(chunk).mid(m_offset, sliceSize);
        const QStringList lines = m_splitter.feed(slice);
        m_offset += slice.size();
        if (m_offset >= chunk.size()) {
            m_chunks.pop_front();
            m_offset = 0;
        }
        if (!lines.isEmpty())
            m_sink(lines);
    }
    if (!m_chunks.empty())
        schedule();
}
