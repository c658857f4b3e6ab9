#pragma once

#include <QString>

#include <optional>

// The fixed places of the machine the app runs on, and whether it has an arm64 processor.
// The app fills it from the real machine; tests and the demo fill it from a temporary folder,
// so nothing outside that folder is ever read or written.
struct Host
{
    QString homebrewPrefix; // where Homebrew lives on Apple silicon
    QString legacyHomebrewPrefix; // where an Intel-era Homebrew lives
    QString javaVirtualMachinesDir; // the system's folder of installed JDKs
    QString javaHomeSuffix; // what follows a JDK's folder to reach its Java home
    QString homebrewJavaHomeSuffix; // what follows a Homebrew OpenJDK's opt folder to reach its Java home
    QString userDataDir; // the user's Application Support folder
    bool arm64 = false;
    // What the disk holding the SDK has free, where a test says so; none asks the disk itself.
    std::optional<qint64> freeBytes;

    static Host detect();
    // The macOS layout of every place, below root.
    static Host underRoot(const QString &root, bool arm64);

    // The account's home folder from the password database, whatever HOME says.
    static QString accountHome();

    static const Host &current();
    static void setCurrent(const Host &host);
};
