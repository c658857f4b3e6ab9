#include "LogcatEntry.h"

#include <QStringList>

LogcatEntry::Level LogcatEntry::levelOf(QChar letter)
{
    switch (letter.unicode()) {
    case 'V':
        return Verbose;
    case 'D':
        return Debug;
    case 'I':
        return Info;
    case 'W':
        return Warning;
    case 'E':
        return Error;
    case 'F':
    case 'A':
        return Fatal;
    default:
        return None;
    }
}

QChar LogcatEntry::letterOf(Level level)
{
    static constexpr char letters[] = " VDIWEF";
    return QLatin1Char(letters[level]);
}

QString LogcatEntry::timeText() const
{
    if (level == None)
        return {};
    qint64 rest = time;
    const auto take = [&rest](int digits) {
        int divisor = 1;
        for (int i = 0; i < digits; ++i)
            divisor *= 10;
        const int part = int(rest % divisor);
        rest /= divisor;
        return part;
    };
    const int ms = take(3), seconds = take(2), minutes = take(2), hours = take(2), day = take(2);
    return QString::asprintf("%02d-%02d %02d:%02d:%02d.%03d", int(rest), day, hours, minutes, seconds, ms);
}

QString LogcatEntry::text() const
{
    if (level == None)
        return message;
    const QString header = QStringLiteral("%1 %2 %3 %4 %5: ")
                               .arg(timeText())
                               .arg(pid, 5)
                               .arg(tid, 5)
                               .arg(letterOf(level))
                               .arg(tag, -8);
    QString text;
    for (const QString &line : message.split(QLatin1Char('\n'))) {
        if (!text.isEmpty())
            text += QLatin1Char('\n');
        text += header + line;
    }
    return text;
}
