#pragma once

#include "LogLines.h"

#include <QObject>
#include <QPointer>
#include <QQuickTextDocument>
#include <QtQml/qqmlregistration.h>

class QTextDocument;

// Mirrors a log into the document of a read-only TextEdit, so the whole log is one text the user can
// select across lines. New lines are appended at the end and trimmed lines removed from the front, one
// edit per batch; the document keeps no undo history, which would otherwise hold every line ever shown.
class LogDocument : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(LogLines *lines READ lines WRITE setLines NOTIFY linesChanged)
    Q_PROPERTY(QQuickTextDocument *document READ document WRITE setDocument NOTIFY documentChanged)

public:
    explicit LogDocument(QObject *parent = nullptr);

    LogLines *lines() const { return m_lines; }
    void setLines(LogLines *lines);
    QQuickTextDocument *document() const { return m_document; }
    void setDocument(QQuickTextDocument *document);

Q_SIGNALS:
    void linesChanged();
    void documentChanged();

private:
    QTextDocument *target() const;
    void reload();
    void append(const QString &text);
    void dropFront(qsizetype characters);
    void replaceLast(const QString &line, qsizetype oldLength);

    QPointer<LogLines> m_lines;
    QPointer<QQuickTextDocument> m_document;
};
