#pragma once

#include "LogcatEntry.h"

#include <QStringList>

#include <array>
#include <optional>
#include <utility>
#include <vector>

// Reads the lines of `logcat -v threadtime` into entries. Every line of that format carries the whole
// header (time, process, thread, level, tag), so a log that starts in the middle of a message still
// reads, and the lines of one message are told by their shared header: they become one entry. Lines
// that are not messages pass through as entries without a level.
class LogcatParser
{
public:
    struct Batch
    {
        // Lines that continue the entry the previous batch ended with, each after a line break.
        QString continuation;
        std::vector<LogcatEntry> entries;
    };

    Batch parse(const QStringList &lines);
    // A new stream: nothing in it continues what came before.
    void reset() { m_hasLast = false; }

    // The process an "ActivityManager: Start proc" entry announces: its id and its app's package.
    static std::optional<std::pair<qint32, QString>> startedProcess(const LogcatEntry &entry);

private:
    struct Header
    {
        qint64 time = 0;
        qint32 pid = 0;
        qint32 tid = 0;
        LogcatEntry::Level level = LogcatEntry::None;
        QStringView tag;
        QStringView message;
    };
    static bool readHeader(QStringView line, Header &header);
    // Tags repeat all the time: equal tags share one string.
    QString tag(QStringView text);

    LogcatEntry m_last;
    bool m_hasLast = false;
    std::array<QString, 256> m_tags;
};
