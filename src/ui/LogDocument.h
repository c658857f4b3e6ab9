#pragma once

#include "LogLines.h"

#include <QObject>
#include <QPointer>
#include <QQuickTextDocument>
#include <QtQml/qqmlregistration.h>

// Mirrors a log into the document of a read-only TextEdit, so the user can select and copy across
// lines. Changes are applied in one batch per event-loop turn, and only the changed ends of the
// document are touched: a flood of output never re-lays out the whole log.
class LogDocument : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickTextDocument *document READ document WRITE setDocument NOTIFY documentChanged)
    Q_PROPERTY(LogLines *lines READ lines WRITE setLines NOTIFY linesChanged)

public:
    explicit LogDocument(QObject *parent = nullptr);

    QQuickTextDocument *document() const { return m_document; }
    void setDocument(QQuickTextDocument *document);
    LogLines *lines() const { return m_lines; }
    void setLines(LogLines *lines);

Q_SIGNALS:
    void documentChanged();
    void linesChanged();
    // The document caught up with the log; the view scrolls after this.
    void synced();

private:
    void schedule();
    void sync();

    QPointer<QQuickTextDocument> m_document;
    QPointer<LogLines> m_lines;
    qint64 m_firstDropped = 0; // the log's dropped count when the document's first line was mirrored
    int m_mirrored = 0;
    bool m_rebuild = true;
    bool m_lastChanged = false;
    bool m_scheduled = false;
};
