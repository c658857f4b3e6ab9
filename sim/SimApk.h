#pragma once

#include <QString>
#include <QStringList>

// Small real .apk archives for the simulated phones: a manifest, code, and native code for each ABI given.
namespace SimApk {

// Writes the archive at `path`, replacing any file there; an empty list makes an app without native code.
// `padding` more entries (empty assets) make an archive as long as a hostile one.
void write(const QString &path, const QStringList &abis = {}, int padding = 0);

} // namespace SimApk
