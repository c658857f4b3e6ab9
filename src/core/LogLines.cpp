#include "LogLines.h"

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
