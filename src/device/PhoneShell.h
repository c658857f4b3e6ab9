#pragma once

#include <QString>

// `adb shell` joins its words with spaces and the phone's /system/bin/sh reads them again, so every
// value that reaches the phone goes through here first.
namespace PhoneShell {

// The value as one single-quoted word of the phone's shell: nothing in it is expanded or run.
QString quote(const QString &value);

} // namespace PhoneShell
