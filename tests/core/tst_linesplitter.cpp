#include "DataTable.h"
#include "LineSplitter.h"

#include <QTest>
#include <QVariant>

class TestLineSplitter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void feed_data()
    {
        // rest: what flush() gives at the end; null for none
        columns<QStringList, QStringList, QString, QVariant>("chunks", "lines", "carry", "rest");

        const QVariant none;
        QTest::newRow("unfinished line is held")
            << QStringList {"abc"} << QStringList {} << "abc" << QVariant("abc");
        QTest::newRow("finished by the next chunk")
            << QStringList {"abc", "def\n"} << QStringList {"abcdef"} << "" << none;
        QTest::newRow("three separators")
            << QStringList {"a\r\nb\rc\n"} << QStringList {"a", "b", "c"} << "" << none;
        QTest::newRow("blank pieces dropped, tab kept")
            << QStringList {"a\n\n   \n\tb\n"} << QStringList {"a", "\tb"} << "" << none;
        QTest::newRow("CR LF split across chunks")
            << QStringList {"one\r", "\ntwo\n"} << QStringList {"one", "two"} << "" << none;
        QTest::newRow("progress redraw")
            << QStringList {"10%\r20%\r30%\n"} << QStringList {"10%", "20%", "30%"} << "" << none;
        QTest::newRow("lines keep their spaces")
            << QStringList {"  padded  \n"} << QStringList {"  padded  "} << "" << none;
        QTest::newRow("no-break space is blank")
            << QStringList {QStringLiteral("\u00a0\u3000\nx\n")} << QStringList {"x"} << "" << none;
        QTest::newRow("other breaks are not separators")
            << QStringList {QStringLiteral("a\u2028b\u0085c\fd\ve\n")}
            << QStringList {QStringLiteral("a\u2028b\u0085c\fd\ve")} << "" << none;
        QTest::newRow("line across many chunks")
            << QStringList {"a", "b", "c\nd", "e"} << QStringList {"abc"} << "de" << QVariant("de");
        QTest::newRow("blank carry finished by text")
            << QStringList {"  ", "\t", "x\n"} << QStringList {"  \tx"} << "" << none;
        QTest::newRow("blank carry finished by blank")
            << QStringList {"  ", " \n"} << QStringList {} << "" << none;
        QTest::newRow("blank rest is no line")
            << QStringList {"done\n   "} << QStringList {"done"} << "   " << none;
        QTest::newRow("rest is not trimmed")
            << QStringList {" ", "y", "\t"} << QStringList {} << " y\t" << QVariant(" y\t");
    }

    void feed()
    {
        auto [chunks, lines, carry, rest]
            = row<QStringList, QStringList, QString, QVariant>("chunks", "lines", "carry", "rest");

        LineSplitter splitter;
        QStringList got;
        for (const QString &chunk : chunks)
            got += splitter.feed(chunk);
        QCOMPARE(got, lines);
        QCOMPARE(splitter.carry(), carry);
        QCOMPARE(splitter.flush(), rest.isNull() ? std::nullopt : std::optional(rest.toString()));
        QCOMPARE(splitter.carry(), QString());
        QCOMPARE(splitter.flush(), std::nullopt);
    }

    void percent_data()
    {
        // expected: -1 for none
        columns<QString, int>("line", "expected");

        QTest::newRow("plain") << "Downloading 45%" << 45;
        QTest::newRow("bar") << "[=====    ] 100% Done" << 100;
        QTest::newRow("last percent counts") << "12% then 34%" << 34;
        QTest::newRow("space before percent") << "50 %" << -1;
        QTest::newRow("lone percent") << "%" << -1;
        QTest::newRow("letters") << "abc%" << -1;
        QTest::newRow("over 100") << "150%" << -1;
        QTest::newRow("decimal by its whole part") << "3.5%" << 3;
        QTest::newRow("Homebrew's bar") << "######################                          12.5%" << 12;
        QTest::newRow("decimal just below 100") << "99.9%" << 99;
        QTest::newRow("decimal 100") << "100.0%" << 100;
        QTest::newRow("decimal above 100") << "100.5%" << -1;
        QTest::newRow("no whole part") << "v.5%" << -1;
        QTest::newRow("two points") << "1.2.5%" << -1;
        QTest::newRow("no percent") << "Unzipping" << -1;
        QTest::newRow("last percent has no number") << "50% then %" << -1;
        QTest::newRow("zero") << "0%" << 0;
        QTest::newRow("Arabic-Indic digits") << QStringLiteral("\u0664\u0665%") << -1;
        QTest::newRow("fraction in the run") << QStringLiteral("1\u00bd%") << -1;
        QTest::newRow("supplementary digit") << QStringLiteral("4\U0001D7DC%") << -1;
        QTest::newRow("huge number") << "99999999999999999999999%" << -1;
        QTest::newRow("many leading zeros") << "000000000000000000000000042%" << 42;
    }

    void percent()
    {
        auto [line, expected] = row<QString, int>("line", "expected");

        const auto value = percentValue(line);
        QCOMPARE(value.value_or(-1), expected);
    }
};

QTEST_GUILESS_MAIN(TestLineSplitter)
#include "tst_linesplitter.moc"
