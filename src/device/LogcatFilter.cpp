#include "LogcatFilter.h"

bool LogcatFilter::matches(const LogcatEntry &entry) const
{
    if (app >= 0 && entry.app != app)
        return false;
    if (entry.level != LogcatEntry::None && entry.level < minimumLevel)
        return false;
    if (expression)
        return expression->match(entry.tag).hasMatch() || expression->match(entry.message).hasMatch();
    return text.isEmpty() || entry.tag.contains(text, Qt::CaseInsensitive)
        || entry.message.contains(text, Qt::CaseInsensitive);
}
