#include "ChunkQueue.h"
#include "DataTable.h"

#include <QTest>

class TestChunkQueue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void delivery_data()
    {
        // pushed: chunks, or after "line:" a line of our own; lines: delivered, then the flushed rest
        columns<QStringList, QStringList, int>("pushed", "lines", "deliveries");

        const QString numbers = [] {
            QString text;
            for (int i = 10000; i < 13000; ++i)
                text += QString::number(i) + QLatin1Char('\n');
            return text;
        }();
        const qsizetype longest = ChunkQueue::longestLine;
        const QString aLongest(longest, QLatin1Char('a'));
        const auto more = [](qsizetype n) { return QStringLiteral("… (%1 more characters)").arg(n); };
        QTest::newRow("a chunk of many slices is one delivery")
            << QStringList {numbers} << numbers.trimmed().split(QLatin1Char('\n')) << 1;
        QTest::newRow("our line follows what came before it")
            << QStringList {numbers.right(12) + "unfinished", "line:Booted in 9 s."}
            << QStringList {"12998", "12999", "Booted in 9 s.", "unfinished"} << 1;
        QTest::newRow("a long line is cut")
            << QStringList {aLongest + QString(4464, 'b') + "\nnext\n"}
            << QStringList {aLongest + "… (4464 more characters)", "next"} << 1;
        QTest::newRow("cut across chunks, and at the end")
            << QStringList {aLongest.left(longest * 5 / 8), aLongest.left(longest * 5 / 8) + "\n",
                   aLongest + "c"}
            << QStringList {aLongest + more(longest / 4), aLongest + more(1)} << 1;
        QTest::newRow("no pair of a character is cut")
            << QStringList {aLongest.left(ChunkQueue::longestLine - 1) + QStringLiteral("\U0001F600\n")}
            << QStringList {aLongest.left(ChunkQueue::longestLine - 1) + "… (2 more characters)"} << 1;
    }

    void delivery()
    {
        auto [pushed, lines, deliveries]
            = row<QStringList, QStringList, int>("pushed", "lines", "deliveries");

        QStringList delivered;
        int calls = 0;
        ChunkQueue queue([&](const QStringList &some) {
            delivered += some;
            ++calls;
        });
        for (const QString &item : std::as_const(pushed)) {
            if (item.startsWith(QLatin1String("line:")))
                queue.pushLine(item.mid(5));
            else
                queue.push(item);
        }
        QTRY_VERIFY(queue.isEmpty());
        if (const auto rest = queue.flush())
            delivered.append(*rest);
        QCOMPARE(delivered, lines);
        QCOMPARE(calls, deliveries);
    }
};

QTEST_GUILESS_MAIN(TestChunkQueue)
#include "tst_chunkqueue.moc"
