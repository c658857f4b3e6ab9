#include "ChunkQueue.h"

#include <QElapsedTimer>

namespace {

bool isBreak(QChar c)
{
    return c == QLatin1Char('\n') || c == QLatin1Char('\r');
}

} // namespace

ChunkQueue::ChunkQueue(Sink sink, QObject *parent)
    : QObject(parent)
    , m_sink(std::move(sink))
{ }

void ChunkQueue::push(const QString &chunk)
{
    if (chunk.isEmpty())
        return;
    m_items.push_back({chunk});
    schedule();
}

void ChunkQueue::pushLine(const QString &line)
{
    m_items.push_back({line, true});
    schedule();
}

std::optional<QString> ChunkQueue::flush()
{
    if (m_kept >= 0)
        m_splitter.feed(cutNote());
    m_lineLength = 0;
    m_kept = -1;
    return m_splitter.flush();
}

void ChunkQueue::clear()
{
    m_items.clear();
    m_offset = 0;
    m_splitter = {};
    m_pending.clear();
    m_lineLength = 0;
    m_kept = -1;
}

void ChunkQueue::schedule()
{
    if (m_scheduled)
        return;
    m_scheduled = true;
    QMetaObject::invokeMethod(this, &ChunkQueue::drain, Qt::QueuedConnection);
}

QString ChunkQueue::cutNote() const
{
    return QStringLiteral("… (%1 more characters)").arg(m_lineLength - m_kept);
}

void ChunkQueue::feed(QStringView slice)
{
    qsizetype lineEnd = 0;
    while (lineEnd < slice.size() && !isBreak(slice.at(lineEnd)))
        ++lineEnd;
    if (m_lineLength + lineEnd > longestLine) {
        if (m_kept < 0) {
            qsizetype kept = longestLine - m_lineLength;
            if (kept > 0 && slice.at(kept - 1).isHighSurrogate())
                --kept;
            m_splitter.feed(slice.first(kept));
            m_kept = m_lineLength + kept;
        }
        m_lineLength += lineEnd;
        if (lineEnd == slice.size())
            return;
        m_splitter.feed(cutNote());
        m_lineLength = 0;
        m_kept = -1;
        slice = slice.sliced(lineEnd);
    }
    m_pending += m_splitter.feed(slice);
    qsizetype lastBreak = slice.size() - 1;
    while (lastBreak >= 0 && !isBreak(slice.at(lastBreak)))
        --lastBreak;
    m_lineLength = lastBreak < 0 ? m_lineLength + slice.size() : slice.size() - lastBreak - 1;
}

void ChunkQueue::drain()
{
    m_scheduled = false;
    QElapsedTimer clock;
    clock.start();
    QStringList ready;
    // A line of our own costs nothing to hand on, so it never waits for the next turn.
    while (!m_items.empty() && (m_items.front().wholeLine || clock.nsecsElapsed() < turnBudget.count())) {
        Item &item = m_items.front();
        if (item.wholeLine) {
            ready.append(item.text);
            m_items.pop_front();
            continue;
        }
        QStringView slice = QStringView(item.text).mid(m_offset, sliceSize);
        // A character's pair stays in one slice, so that a cut line never ends in half of one.
        if (slice.size() > 1 && slice.back().isHighSurrogate() && m_offset + slice.size() < item.text.size())
            slice.chop(1);
        feed(slice);
        m_offset += slice.size();
        if (m_offset >= item.text.size()) {
            m_items.pop_front();
            m_offset = 0;
            ready += std::exchange(m_pending, {});
        }
    }
    // One delivery a turn: what the log and its view make of the lines grows with what was split
    // within the budget.
    if (!ready.isEmpty())
        m_sink(ready);
    if (!m_items.empty())
        schedule();
}
