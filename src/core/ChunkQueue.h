#pragma once

#include "LineSplitter.h"

#include <QObject>
#include <QStringList>

#include <chrono>
#include <deque>
#include <functional>
#include <optional>

// Turns output chunks into lines for a log, a slice of the event loop at a time: a drain hands on as
// many lines as fit in a few milliseconds and leaves the rest, in order, for the next turn, so a flood
// of output never holds up the window for more than a frame.
class ChunkQueue : public QObject
{
    Q_OBJECT

public:
    using Sink = std::function<void(const QStringList &lines)>;

    // Our share of one event-loop turn; with the view's share it stays within a 120 Hz frame.
    static constexpr std::chrono::nanoseconds turnBudget = std::chrono::milliseconds(3);
    // Chunks are split so that no single step can overrun the budget by much.
    static constexpr qsizetype sliceSize = 8 * 1024;

    explicit ChunkQueue(Sink sink, QObject *parent = nullptr);

    // Queues a chunk; the lines it finishes reach the sink in a later turn.
    void push(const QString &chunk);
    // Nothing waits to be split into lines.
    bool isEmpty() const { return m_chunks.empty(); }
    // The unfinished rest of the stream once everything queued has been drained (see LineSplitter).
    std::optional<QString> flush();
    // Forgets what waits and what is carried, for a new stream.
    void clear();

private:
    void schedule();
    void drain();

    Sink m_sink;
    std::deque<QString> m_chunks;
    qsizetype m_offset = 0; // how much of the first chunk has been split already
    LineSplitter m_splitter;
    bool m_scheduled = false;
};
