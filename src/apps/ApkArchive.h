#pragma once

#include <QFuture>
#include <QString>
#include <QStringList>

// What an .apk file says about itself before it is installed: whether it is a zip archive at all, and
// which processor ABIs its native code (lib/<abi>/...) is built for.
class ApkArchive
{
public:
    // Real apps hold a few thousand entries. An archive with more is not looked into: its ABIs are left
    // for Android's own check at install, which refuses a mismatch without touching the installed app.
    static constexpr qint64 maxEntries = 50000;

    // Reads the archive's table of contents; takes time in the number of entries.
    static ApkArchive read(const QString &path);
    // The same on a pool thread; the result is delivered to whoever awaits the future.
    static QFuture<ApkArchive> readInBackground(const QString &path);

    bool isArchive() const { return m_error.isEmpty(); }
    // Why the file could not be read as a zip archive; empty when it could.
    QString error() const { return m_error; }
    // Sorted; empty for an app without native code and for one with more than maxEntries entries.
    QStringList abis() const { return m_abis; }

    // Whether a phone with these ABIs (its ro.product.cpu.abilist) runs the app's native code; always
    // true for an app without native code.
    bool runsOn(const QStringList &phoneAbis) const;

private:
    QString m_error;
    QStringList m_abis;
};
