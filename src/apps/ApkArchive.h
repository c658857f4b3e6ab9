#pragma once

#include <QString>
#include <QStringList>

// What an .apk file says about itself before it is installed: whether it is a zip archive at all, and
// which processor ABIs its native code (lib/<abi>/...) is built for.
class ApkArchive
{
public:
    static ApkArchive read(const QString &path);

    bool isArchive() const { return m_error.isEmpty(); }
    // Why the file could not be read as a zip archive; empty when it could.
    QString error() const { return m_error; }
    // Sorted; empty for an app without native code.
    QStringList abis() const { return m_abis; }

    // Whether a phone with these ABIs (its ro.product.cpu.abilist) runs the app's native code; always
    // true for an app without native code.
    bool runsOn(const QStringList &phoneAbis) const;

private:
    QString m_error;
    QStringList m_abis;
};
