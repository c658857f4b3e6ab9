#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// What one tool run delivers.
struct ProcessResult
{
    int status = -1; // exit code, or the signal number of a child ended by a signal; -1 when nothing ran
    QString text; // both streams, each read decoded on its own, in the order read
    QByteArray stdoutData; // standard output only, byte for byte
    bool timedOut = false;
    bool cancelled = false;
    std::optional<QString> launchError; // present only when no child ran

    // A run that was refused before anything was launched.
    static ProcessResult refused(const QString &reason);

    // Launched, finished by itself in time and exited with 0.
    bool isClean() const;
    QString failureSummary() const;
};
