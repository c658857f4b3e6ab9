#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// Turns streamed chunks into complete, non-blank lines. Line feed, carriage return and the pair
// CR LF end a line; nothing else does, so progress bars that redraw with CR become separate lines.
// A CR LF split across two chunks leaves an empty piece, which is blank and so dropped.
// Only the new chunk is ever scanned, so a long run without a line break costs time in its length,
// not in its square.
class LineSplitter
{
public:
    QStringList feed(QStringView chunk);
    // The unfinished rest at the end of a stream, unless it is blank.
    std::optional<QString> flush();

    const QString &carry() const { return m_carry; }

private:
    QString m_carry;
    // The carry holds nothing but blanks so far.
    bool m_carryBlank = true;
};

// Blank: empty, or only tabs and space separators.
bool isBlank(QStringView text);

// The percentage (0 to 100) written right before the line's last "%", if there is one; a decimal one
// ("12.5%") by its whole part.
std::optional<int> percentValue(QStringView line);
