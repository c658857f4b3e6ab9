#include "DiskUsage.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QStorageInfo>

#include <array>

#include <sys/stat.h>

namespace {

qint64 ownBlocks(const QString &path)
{
    struct stat info
    {
    };
    if (::lstat(QFile::encodeName(path).constData(), &info) != 0)
        return 0;
    return qint64(info.st_blocks) * 512;
}

} // namespace

namespace DiskUsage {

qint64 allocatedBytes(const QString &path)
{
    qint64 total = ownBlocks(path);
    QDirIterator entries(path, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (entries.hasNext())
        total += ownBlocks(entries.next());
    return total;
}

std::optional<qint64> freeBytes(const QString &path)
{
    QFileInfo place(path);
    while (!place.exists() && !place.isRoot() && !place.absolutePath().isEmpty()
        && place.absolutePath() != place.absoluteFilePath())
        place.setFile(place.absolutePath());
    const QStorageInfo disk(place.absoluteFilePath());
    if (!disk.isValid() || !disk.isReady())
        return std::nullopt;
    return disk.bytesAvailable();
}

QString format(qint64 bytes)
{
    static constexpr std::array units {"KB", "MB", "GB", "TB"};
    if (bytes < 1000)
        return QStringLiteral("%1 bytes").arg(bytes);
    double value = double(bytes) / 1000;
    std::size_t unit = 0;
    while (value >= 999.95 && unit + 1 < units.size()) {
        value /= 1000;
        ++unit;
    }
    // Kilobytes are whole, as the Finder shows them; larger units keep one decimal.
    return QString::number(value, 'f', unit == 0 ? 0 : 1) + QLatin1Char(' ') + QLatin1String(units[unit]);
}

} // namespace DiskUsage
