#pragma once

#include <QAbstractListModel>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

// The bounded output log of a job or an emulator. Views follow it through the fine-grained model
// signals, so a new line costs the view one row, never a re-read of the whole log.
class LogLines : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by a job runner or an emulator process")
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    // Lines are numbered from the first one of the log: the line shown in row r is number dropped + r,
    // so a number keeps naming the same text when older lines are dropped.
    Q_PROPERTY(qint64 dropped READ droppedCount NOTIFY countChanged)

public:
    explicit LogLines(QObject *parent = nullptr);

    const QStringList &lines() const { return m_lines; }
    int count() const { return int(m_lines.size()); }
    // How many lines have been dropped from the front since the last reset; lets a view that mirrors
    // the log tell a trim from a reset.
    qint64 droppedCount() const { return m_dropped; }

    // The text from character fromChar of line number fromLine up to character toChar of line number
    // toLine, lines joined with line breaks; positions outside what the log still holds are clamped.
    Q_INVOKABLE QString textBetween(qint64 fromLine, int fromChar, qint64 toLine, int toChar) const;

    void reset(const QStringList &lines);
    void append(const QStringList &lines);
    void replaceLast(const QString &line);
    void dropFirst(int n);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();

private:
    QStringList m_lines;
    qint64 m_dropped = 0;
};
