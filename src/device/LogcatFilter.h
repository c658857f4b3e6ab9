#pragma once

#include "LogcatEntry.h"

#include <QRegularExpression>
#include <QString>

#include <optional>

// Which entries of a phone's log are shown: a minimum level, one app, and a text that the tag or the
// message holds (ignoring case) or a regular expression they match. Lines without a level pass the
// level test, so logcat's own words stay in view; with an app picked they go.
struct LogcatFilter
{
    LogcatEntry::Level minimumLevel = LogcatEntry::Verbose;
    // The index of the app in the log's list of apps, or -1 for every process.
    qint16 app = -1;
    QString text;
    std::optional<QRegularExpression> expression;

    bool matches(const LogcatEntry &entry) const;
};
