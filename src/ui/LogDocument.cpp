#include "LogDocument.h"

#include <QTextCursor>
#include <QTextDocument>

LogDocument::LogDocument(QObject *parent)
    : QObject(parent)
{ }

void LogDocument::setLines(LogLines *lines)
{
    if (m_lines == lines)
        return;
    if (m_lines)
        m_lines->disconnect(this);
    m_lines = lines;
    if (m_lines) {
        connect(m_lines, &LogLines::wasReset, this, &LogDocument::reload);
        connect(m_lines, &LogLines::appended, this, &LogDocument::append);
        connect(m_lines, &LogLines::droppedFront, this, &LogDocument::dropFront);
        connect(m_lines, &LogLines::lastReplaced, this, &LogDocument::replaceLast);
    }
    reload();
    Q_EMIT linesChanged();
}

void LogDocument::setDocument(QQuickTextDocument *document)
{
    if (m_document == document)
        return;
    m_document = document;
    if (QTextDocument *doc = target())
        doc->setUndoRedoEnabled(false);
    reload();
    Q_EMIT documentChanged();
}

QTextDocument *LogDocument::target() const
{
    return m_document ? m_document->textDocument() : nullptr;
}

void LogDocument::reload()
{
    if (QTextDocument *doc = target())
        doc->setPlainText(m_lines ? m_lines->text() : QString());
}

void LogDocument::append(const QString &text)
{
    if (QTextDocument *doc = target()) {
        QTextCursor cursor(doc);
        cursor.movePosition(QTextCursor::End);
        cursor.insertText(text);
    }
}

void LogDocument::dropFront(qsizetype characters)
{
    if (QTextDocument *doc = target()) {
        QTextCursor cursor(doc);
        cursor.setPosition(int(characters), QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
    }
}

void LogDocument::replaceLast(const QString &line, qsizetype oldLength)
{
    if (QTextDocument *doc = target()) {
        QTextCursor cursor(doc);
        cursor.movePosition(QTextCursor::End);
        cursor.setPosition(cursor.position() - int(oldLength), QTextCursor::KeepAnchor);
        cursor.insertText(line);
    }
}
