#include "LineSplitter.h"

#include <QStringView>

bool isBlank(QStringView text)
{
    for (const char32_t c : text.toUcs4()) {
        if (c != U'\t' && QChar::category(c) != QChar::Separator_Space)
            return false;
    }
    return true;
}

QStringList LineSplitter::feed(const QString &chunk)
{
    QStringList lines;
    const QString s = m_carry + chunk;
    qsizetype start = 0;
    qsizetype i = 0;
    while (i < s.size()) {
        const QChar c = s.at(i);
        if (c != QLatin1Char('\n') && c != QLatin1Char('\r')) {
            ++i;
            continue;
        }
        const QStringView piece = QStringView(s).mid(start, i - start);
        if (!isBlank(piece))
            lines.append(piece.toString());
        if (c == QLatin1Char('\r') && i + 1 < s.size() && s.at(i + 1) == QLatin1Char('\n'))
            ++i;
        start = ++i;
    }
    m_carry = s.mid(start);
    return lines;
}

std::optional<QString> LineSplitter::flush()
{
    QString rest;
    rest.swap(m_carry);
    if (isBlank(rest))
        return std::nullopt;
    return rest;
}

std::optional<int> percentValue(QStringView line)
{
    const qsizetype percent = line.lastIndexOf(QLatin1Char('%'));
    if (percent < 0)
        return std::nullopt;
    // Walk back over numeric characters of any script, a code point at a time.
    qsizetype begin = percent;
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
    const QStringView run = line.mid(begin, percent - begin);
    if (run.isEmpty())
        return std::nullopt;
    qint64 value = 0;
    for (const QChar c : run) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return std::nullopt;
        value = value * 10 + (c.unicode() - '0');
        if (value > 100)
            return std::nullopt; // also keeps the value from ever overflowing
    }
    return int(value);
}
