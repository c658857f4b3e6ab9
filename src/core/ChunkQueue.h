#pragma once

#include "LineSplitter.h"

#include <QObject>
#include <QStringList>

#include <chrono>
#include <deque>
#include <functional>
#include <optional>

// Turns output chunks into lines for a log, a slice of the event loop at a time: a drain splits as much
// as fits in a few milliseconds and leaves the rest, in order, for the next turn, so a flood of output
// never holds up the window for more than a frame. The lines of one chunk reach the sink together, with
// everything else finished in the same turn, so a log that trims once per delivery trims once per read
// however the chunk is sliced.
class ChunkQueue : public QObject
{
    Q_OBJECT

public:
    using Sink = std::function<void(const QStringList &lines)>;

    // Our share of one event-loop turn; with the view's share it stays within a 120 Hz frame.
    static constexpr std::chrono::nanoseconds turnBudget = std::chrono::milliseconds(3);
    // Chunks are split so that no single step can overrun the budget by much.
    static constexpr qsizetype sliceSize = 8 * 1024;
    // A longer line is cut here and ends with "… (N more characters)": laying out megabytes of one line
    // would hold the window, and nobody reads that much of it in a log.
    static constexpr qsizetype longestLine = 16 * 1024;
    static_assert(sliceSize < longestLine, "only a slice's first piece can carry a line past the bound");

    explicit ChunkQueue(Sink sink, QObject *parent = nullptr);

    // Queues a chunk; the lines it finishes reach the sink in a later turn.
    void push(const QString &chunk);
    // Queues a line of our own: it reaches the sink after every line of what was pushed before it.
    void pushLine(const QString &line);
    // Nothing waits to be split into lines or handed on.
    bool isEmpty() const { return m_items.empty(); }
    // The unfinished rest of the stream once everything queued has been drained (see LineSplitter).
    std::optional<QString> flush();
    // Forgets what waits and what is carried, for a new stream.
    void clear();

private:
    struct Item
    {
        QString text;
        bool wholeLine = false;
    };

    void schedule();
    void drain();
    // Feeds the splitter, keeping no more than the longest line's worth of any one line.
    void feed(QStringView slice);
    QString cutNote() const;

    Sink m_sink;
    std::deque<Item> m_items;
    qsizetype m_offset = 0; // how much of the first chunk has been split already
    LineSplitter m_splitter;
    QStringList m_pending; // lines of the chunk being split, handed on once all of it is
    qsizetype m_lineLength = 0; // of the unfinished line, counting what was cut from it
    qsizetype m_kept = -1; // how much of it is kept once it has been cut; -1 while it is whole
    bool m_scheduled = false;
};
