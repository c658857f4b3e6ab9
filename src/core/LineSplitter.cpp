#include "LineSplitter.h"

#include <QStringView>

#include <algorithm>

bool isBlank(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char(' ') || c == QLatin1Char('\t'))
            continue;
        char32_t code = c.unicode();
        if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            code = QChar::surrogateToUcs4(c, text.at(++i));
        if (QChar::category(code) != QChar::Separator_Space)
            return false;
    }
    return true;
}

QStringList LineSplitter::feed(QStringView chunk)
{
    QStringList lines;
    qsizetype start = 0;
    for (qsizetype i = 0; i < chunk.size(); ++i) {
        const QChar c = chunk.at(i);
        if (c != QLatin1Char('\n') && c != QLatin1Char('\r'))
            continue;
        const QStringView piece = chunk.mid(start, i - start);
        if (start == 0 && !m_carry.isEmpty()) {
            // The first piece finishes the carried line.
            if (!m_carryBlank || !isBlank(piece))
                lines.append(m_carry.append(piece));
            m_carry.clear();
            m_carryBlank = true;
        } else if (!isBlank(piece)) {
            lines.append(piece.toString());
        }
        if (c == QLatin1Char('\r') && i + 1 < chunk.size() && chunk.at(i + 1) == QLatin1Char('\n'))
            ++i;
        start = i + 1;
    }
    const QStringView rest = chunk.mid(start);
    m_carry.append(rest);
    m_carryBlank = m_carryBlank && isBlank(rest);
    return lines;
}

std::optional<QString> LineSplitter::flush()
{
    QString rest;
    rest.swap(m_carry);
    const bool blank = m_carryBlank;
    m_carryBlank = true;
    if (blank)
        return std::nullopt;
    return rest;
}

namespace {

// Where the run of numeric characters (of any script) that ends at `end` begins, a code point at a time.
qsizetype numericRunStart(QStringView line, qsizetype end)
{
    qsizetype begin = end;
    while (begin > 0) {
        qsizetype previous = begin - 1;
        char32_t c = line.at(previous).unicode();
        if (line.at(previous).isLowSurrogate() && previous > 0 && line.at(previous - 1).isHighSurrogate()) {
            c = QChar::surrogateToUcs4(line.at(previous - 1), line.at(previous));
            --previous;
        }
        if (!QChar::isNumber(c))
            break;
        begin = previous;
    }
    return begin;
}

// The run's value when it is only ASCII digits and at most 101; 101 stands for anything above 100.
std::optional<int> asciiValue(QStringView run)
{
    if (run.isEmpty())
        return std::nullopt;
    int value = 0;
    for (const QChar c : run) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return std::nullopt;
        // Capped, so the value never overflows however long the run.
        value = std::min(value * 10 + (c.unicode() - '0'), 101);
    }
    return value;
}

} // namespace

std::optional<int> percentValue(QStringView line)
{
    const qsizetype percent = line.lastIndexOf(QLatin1Char('%'));
    if (percent < 0)
        return std::nullopt;
    qsizetype begin = numericRunStart(line, percent);
    std::optional<int> value = asciiValue(line.mid(begin, percent - begin));
    if (!value)
        return std::nullopt;
    // A decimal percentage, as Homebrew's download bar prints ("12.5%"), counts by its whole part. The
    // part before the point must be a number of its own: ".5%" and "1.2.5%" are none.
    if (begin > 0 && line.at(begin - 1) == QLatin1Char('.')) {
        const bool fractionZero = *value == 0;
        const qsizetype point = begin - 1;
        begin = numericRunStart(line, point);
        if (begin > 0 && line.at(begin - 1) == QLatin1Char('.'))
            return std::nullopt;
        value = asciiValue(line.mid(begin, point - begin));
        if (value && *value == 100 && !fractionZero)
            return std::nullopt;
    }
    if (!value || *value > 100)
        return std::nullopt;
    return value;
}
