#pragma once

#include <QObject>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

// The bounded output log of a job or an emulator. Every change is announced as the text it adds or
// the characters it takes away, so a view that mirrors the log as one document follows a flood with
// small edits at its ends, never a re-read of the whole log.
class LogLines : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by a job runner or an emulator process")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    explicit LogLines(QObject *parent = nullptr);

    const QStringList &lines() const { return m_lines; }
    int count() const { return int(m_lines.size()); }
    // The whole log as one text, one line after another.
    Q_INVOKABLE QString text() const { return m_lines.join(QLatin1Char('\n')); }

    void reset(const QStringList &lines);
    void append(const QStringList &lines);
    void replaceLast(const QString &line);
    void dropFirst(qsizetype n);

Q_SIGNALS:
    void countChanged();
    // The log now holds exactly what text() says.
    void wasReset();
    // `text` goes at the very end; it begins with a line break unless the log was empty.
    void appended(const QString &text);
    // The first `characters` characters of text() went, with the line break after them.
    void droppedFront(qsizetype characters);
    // The last line changed; it was `oldLength` characters long.
    void lastReplaced(const QString &line, qsizetype oldLength);

private:
    QStringList m_lines;
};
