#pragma once

#include <QString>

#include <optional>

// What files take on disk and what is left, for showing where the space went.
namespace DiskUsage {

// Below this much free space a new system image or phone may not fit.
constexpr qint64 lowSpace = 8'000'000'000;

// The blocks a file or folder tree has allocated, without following links. A sparse disk image counts
// only what has been written, which is far less than its apparent size.
qint64 allocatedBytes(const QString &path);
// Free space for this user on the disk that holds the path, or on the nearest folder above it that
// exists; none when the disk cannot be asked.
std::optional<qint64> freeBytes(const QString &path);
// In decimal units as the Finder shows them, e.g. "6.4 GB".
QString format(qint64 bytes);

} // namespace DiskUsage
