#pragma once

#include <QString>

// One message of a phone's log, as `logcat -v threadtime` prints it: a message of several lines (a stack
// trace) is one entry. Lines that are not messages (logcat's own separators and errors) are entries too,
// with no level, no process and the whole line as their message.
struct LogcatEntry
{
    enum Level : quint8 { None, Verbose, Debug, Info, Warning, Error, Fatal };

    QString tag;
    QString message;
    // Month, day, hours, minutes, seconds and milliseconds as the decimal digits MMDDhhmmssmmm; 0 for
    // lines that are not messages.
    qint64 time = 0;
    qint32 pid = 0;
    qint32 tid = 0;
    // Which of the log's apps the process belonged to, or -1 when none is known.
    qint16 app = -1;
    Level level = None;
    // The start of an app's crash or of an "application not responding" report.
    bool crash = false;

    // The level for a letter of the log (V, D, I, W, E, F, and A for assertions), or None.
    static Level levelOf(QChar letter);
    // The letter the log uses for a level; a space for None.
    static QChar letterOf(Level level);
    // "MM-DD hh:mm:ss.mmm", or empty for lines that are not messages.
    QString timeText() const;
    // The entry as logcat printed it: each line of the message behind the same header.
    QString text() const;
    // The same message header: the lines of one message share it.
    bool sameHeader(const LogcatEntry &other) const
    {
        return time == other.time && pid == other.pid && tid == other.tid && level == other.level
            && tag == other.tag;
    }
};
