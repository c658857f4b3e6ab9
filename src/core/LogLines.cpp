#include "LogLines.h"

LogLines::LogLines(QObject *parent)
    : QObject(parent)
{ }

void LogLines::reset(const QStringList &lines)
{
    m_lines = lines;
    Q_EMIT wasReset();
    Q_EMIT countChanged();
}

void LogLines::append(const QStringList &lines)
{
    if (lines.isEmpty())
        return;
    QString text = lines.join(QLatin1Char('\n'));
    if (!m_lines.isEmpty())
        text.prepend(QLatin1Char('\n'));
    m_lines.append(lines);
    Q_EMIT appended(text);
    Q_EMIT countChanged();
}

void LogLines::replaceLast(const QString &line)
{
    if (m_lines.isEmpty())
        return;
    const qsizetype oldLength = m_lines.last().size();
    m_lines.last() = line;
    Q_EMIT lastReplaced(line, oldLength);
}

void LogLines::dropFirst(qsizetype n)
{
    n = std::min(n, m_lines.size());
    if (n <= 0)
        return;
    // Each dropped line takes its line break along, except a last line that has none.
    qsizetype characters = n < m_lines.size() ? n : n - 1;
    for (qsizetype i = 0; i < n; ++i)
        characters += m_lines.at(i).size();
    m_lines.remove(0, n);
    Q_EMIT droppedFront(characters);
    Q_EMIT countChanged();
}
