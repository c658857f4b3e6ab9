#include "LogDocument.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

LogDocument::LogDocument(QObject *parent)
    : QObject(parent)
{ }

void LogDocument::setDocument(QQuickTextDocument *document)
{
    m_document = document;
    m_rebuild = true;
    schedule();
    Q_EMIT documentChanged();
}

void LogDocument::setLines(LogLines *lines)
{
    if (m_lines)
        disconnect(m_lines, nullptr, this, nullptr);
    m_lines = lines;
    if (m_lines) {
        const auto rebuild = [this] {
            m_rebuild = true;
            schedule();
        };
        connect(m_lines, &QAbstractItemModel::modelReset, this, rebuild);
        connect(m_lines, &QAbstractItemModel::rowsInserted, this, &LogDocument::schedule);
        connect(m_lines, &QAbstractItemModel::rowsRemoved, this, &LogDocument::schedule);
        connect(m_lines, &QAbstractItemModel::dataChanged, this, [this] {
            m_lastChanged = true;
            schedule();
        });
    }
    m_rebuild = true;
    schedule();
    Q_EMIT linesChanged();
}

void LogDocument::schedule()
{
    if (m_scheduled)
        return;
    m_scheduled = true;
    QMetaObject::invokeMethod(this, &LogDocument::sync, Qt::QueuedConnection);
}

void LogDocument::sync()
{
    m_scheduled = false;
    if (!m_document || !m_lines)
        return;
    QTextDocument *text = m_document->textDocument();
    const QStringList &lines = m_lines->lines();

    if (m_rebuild) {
        text->setPlainText(lines.join(QLatin1Char('\n')));
        m_firstDropped = m_lines->droppedCount();
        m_mirrored = int(lines.size());
        m_rebuild = false;
        m_lastChanged = false;
        Q_EMIT synced();
        return;
    }

    QTextCursor cursor(text);
    cursor.beginEditBlock();
    const int dropped = int(std::min<qint64>(m_lines->droppedCount() - m_firstDropped, m_mirrored));
    if (dropped == m_mirrored && dropped > 0) {
        text->clear();
        cursor = QTextCursor(text);
    } else if (dropped > 0) {
        cursor.movePosition(QTextCursor::Start);
        cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor, dropped);
        cursor.removeSelectedText();
    }
    m_firstDropped = m_lines->droppedCount();
    m_mirrored -= dropped;

    if (m_lastChanged && m_mirrored > 0 && m_mirrored <= lines.size()) {
        const QTextBlock block = text->findBlockByNumber(m_mirrored - 1);
        cursor.setPosition(block.position());
        cursor.setPosition(block.position() + block.length() - 1, QTextCursor::KeepAnchor);
        cursor.insertText(lines.at(m_mirrored - 1));
    }
    m_lastChanged = false;

    if (m_mirrored < lines.size()) {
        cursor.movePosition(QTextCursor::End);
        QString added = lines.mid(m_mirrored).join(QLatin1Char('\n'));
        if (m_mirrored > 0)
            added.prepend(QLatin1Char('\n'));
        cursor.insertText(added);
        m_mirrored = int(lines.size());
    }
    cursor.endEditBlock();
    Q_EMIT synced();
}
