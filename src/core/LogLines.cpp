#include "LogLines.h"

#include <algorithm>

LogLines::LogLines(QObject *parent)
    : QAbstractListModel(parent)
{ }

void LogLines::reset(const QStringList &lines)
{
    beginResetModel();
    m_lines = lines;
    m_dropped = 0;
    endResetModel();
    Q_EMIT countChanged();
}

void LogLines::append(const QStringList &lines)
{
    if (lines.isEmpty())
        return;
    beginInsertRows({}, count(), count() + int(lines.size()) - 1);
    m_lines.append(lines);
    endInsertRows();
    Q_EMIT countChanged();
}

void LogLines::replaceLast(const QString &line)
{
    if (m_lines.isEmpty())
        return;
    m_lines.last() = line;
    const QModelIndex last = index(count() - 1);
    Q_EMIT dataChanged(last, last);
}

void LogLines::dropFirst(int n)
{
    n = std::min(n, count());
    if (n <= 0)
        return;
    beginRemoveRows({}, 0, n - 1);
    m_lines.remove(0, n);
    m_dropped += n;
    endRemoveRows();
    Q_EMIT countChanged();
}

QString LogLines::textBetween(qint64 fromLine, int fromChar, qint64 toLine, int toChar) const
{
    const qint64 first = m_dropped;
    const qint64 last = m_dropped + count() - 1;
    if (fromLine > last || toLine < first || fromLine > toLine)
        return {};
    if (fromLine < first) {
        fromLine = first;
        fromChar = 0;
    }
    if (toLine > last) {
        toLine = last;
        toChar = int(m_lines.constLast().size());
    }
    QString text;
    for (qint64 number = fromLine; number <= toLine; ++number) {
        const QString &line = m_lines.at(qsizetype(number - first));
        const qsizetype from = number == fromLine ? std::clamp<qsizetype>(fromChar, 0, line.size()) : 0;
        const qsizetype to
            = number == toLine ? std::clamp<qsizetype>(toChar, from, line.size()) : line.size();
        if (number > fromLine)
            text += QLatin1Char('\n');
        text += QStringView(line).mid(from, to - from);
    }
    return text;
}

int LogLines::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant LogLines::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= count() || role != Qt::DisplayRole)
        return {};
    return m_lines.at(index.row());
}

QHash<int, QByteArray> LogLines::roleNames() const
{
    return {{Qt::DisplayRole, "line"}};
}
