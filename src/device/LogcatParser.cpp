#include "LogcatParser.h"

#include <algorithm>
#include <limits>

namespace {

// Reads `count` decimal digits at `at`; -1 when one of them is not a digit.
int digits(QStringView text, qsizetype at, int count)
{
    int value = 0;
    for (int i = 0; i < count; ++i) {
        const char16_t c = text[at + i].unicode();
        if (c < u'0' || c > u'9')
            return -1;
        value = value * 10 + (c - u'0');
    }
    return value;
}

// Skips spaces, then reads a number; false when there is none.
bool number(QStringView text, qsizetype &at, qint32 &value)
{
    while (at < text.size() && text[at] == QLatin1Char(' '))
        ++at;
    const qsizetype start = at;
    qint64 read = 0;
    while (
        at < text.size() && text[at] >= QLatin1Char('0') && text[at] <= QLatin1Char('9') && at - start < 10)
        read = read * 10 + (text[at++].unicode() - u'0');
    value = qint32(std::min<qint64>(read, std::numeric_limits<qint32>::max()));
    return at > start;
}

bool isCrashStart(const LogcatEntry &entry)
{
    if (entry.level < LogcatEntry::Error)
        return false;
    return entry.message.startsWith(QLatin1String("FATAL EXCEPTION"))
        || entry.message.startsWith(QLatin1String("ANR in "))
        || (entry.tag == QLatin1String("DEBUG") && entry.message.startsWith(QLatin1String("*** *** ***")));
}

} // namespace

bool LogcatParser::readHeader(QStringView line, Header &header)
{
    // "MM-DD hh:mm:ss.mmm"
    constexpr qsizetype timeLength = 18;
    if (line.size() < timeLength + 6 || line[2] != QLatin1Char('-') || line[5] != QLatin1Char(' ')
        || line[8] != QLatin1Char(':') || line[11] != QLatin1Char(':') || line[14] != QLatin1Char('.'))
        return false;
    const int parts[] = {digits(line, 0, 2), digits(line, 3, 2), digits(line, 6, 2), digits(line, 9, 2),
        digits(line, 12, 2), digits(line, 15, 3)};
    qint64 time = 0;
    for (int i = 0; i < 6; ++i) {
        if (parts[i] < 0)
            return false;
        time = time * (i == 5 ? 1000 : 100) + parts[i];
    }
    qsizetype at = timeLength;
    if (!number(line, at, header.pid) || !number(line, at, header.tid))
        return false;
    // " L " and the tag, padded to eight characters, then ": " and the message.
    if (at + 3 > line.size() || line[at] != QLatin1Char(' ') || line[at + 2] != QLatin1Char(' '))
        return false;
    header.level = LogcatEntry::levelOf(line[at + 1]);
    if (header.level == LogcatEntry::None)
        return false;
    const QStringView rest = line.mid(at + 3);
    // The padding puts the separator at the eighth character or later, whatever ": " the tag holds;
    // a log without padding has it at the first ": ".
    qsizetype separator = rest.indexOf(QLatin1String(": "), 8);
    if (separator < 0 && rest.size() >= 9 && rest.endsWith(QLatin1Char(':')))
        separator = rest.size() - 1;
    if (separator < 0)
        separator = rest.indexOf(QLatin1String(": "));
    if (separator < 0)
        return false;
    QStringView tag = rest.first(separator);
    while (!tag.isEmpty() && tag.back() == QLatin1Char(' '))
        tag.chop(1);
    header.time = time;
    header.tag = tag;
    header.message = rest.mid(std::min(separator + 2, rest.size()));
    return true;
}

QString LogcatParser::tag(QStringView text)
{
    QString &slot = m_tags[qHash(text) % m_tags.size()];
    if (slot != text)
        slot = text.toString();
    return slot;
}

LogcatParser::Batch LogcatParser::parse(const QStringList &lines)
{
    Batch batch;
    batch.entries.reserve(size_t(lines.size()));
    for (const QString &line : lines) {
        Header header;
        if (!readHeader(line, header)) {
            LogcatEntry entry;
            entry.message = line;
            batch.entries.push_back(std::move(entry));
            m_hasLast = false;
            continue;
        }
        if (m_hasLast && header.time == m_last.time && header.pid == m_last.pid && header.tid == m_last.tid
            && header.level == m_last.level && header.tag == m_last.tag) {
            QString &text = batch.entries.empty() ? batch.continuation : batch.entries.back().message;
            text += QLatin1Char('\n');
            text += header.message;
            continue;
        }
        LogcatEntry entry;
        entry.time = header.time;
        entry.pid = header.pid;
        entry.tid = header.tid;
        entry.level = header.level;
        entry.tag = tag(header.tag);
        entry.message = header.message.toString();
        entry.crash = isCrashStart(entry);
        // The header alone: the message grows in the batch.
        m_last.time = entry.time;
        m_last.pid = entry.pid;
        m_last.tid = entry.tid;
        m_last.level = entry.level;
        m_last.tag = entry.tag;
        m_hasLast = true;
        batch.entries.push_back(std::move(entry));
    }
    return batch;
}

std::optional<std::pair<qint32, QString>> LogcatParser::startedProcess(const LogcatEntry &entry)
{
    static const QLatin1String start("Start proc ");
    if (entry.tag != QLatin1String("ActivityManager") || !entry.message.startsWith(start))
        return std::nullopt;
    const QStringView rest = QStringView(entry.message).mid(start.size());
    qsizetype at = 0;
    qint32 pid = 0;
    QStringView process;
    if (number(rest, at, pid) && at < rest.size() && rest[at] == QLatin1Char(':')) {
        // "Start proc 4321:com.example.notes/u0a190 for activity {...}"
        process = rest.mid(at + 1);
        process = process.first(std::max<qsizetype>(0, process.indexOf(QLatin1Char('/'))));
    } else {
        // Older releases: "Start proc com.example.notes for activity ...: pid=4321 uid=10190 ..."
        process = rest.first(std::max<qsizetype>(0, rest.indexOf(QLatin1Char(' '))));
        qsizetype pidAt = rest.indexOf(QLatin1String(" pid="));
        if (pidAt < 0)
            return std::nullopt;
        pidAt += 5;
        if (!number(rest, pidAt, pid))
            return std::nullopt;
    }
    // An app's other processes are named after it: "com.example.notes:sync".
    const QStringView package = process.first(
        process.indexOf(QLatin1Char(':')) >= 0 ? process.indexOf(QLatin1Char(':')) : process.size());
    if (package.isEmpty() || pid <= 0)
        return std::nullopt;
    return std::pair {pid, package.toString()};
}
