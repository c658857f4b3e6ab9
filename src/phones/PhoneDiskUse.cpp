#include "PhoneDiskUse.h"

#include "AndroidTools.h"
#include "DiskUsage.h"
#include "Host.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>

#include <QCoro/QCoroFuture>

qint64 PhoneDiskUse::phonesBytes() const
{
    qint64 total = 0;
    for (const QVariant &bytes : m_reading.phoneSizes)
        total += bytes.toLongLong();
    return total;
}

qint64 PhoneDiskUse::imagesBytes() const
{
    qint64 total = 0;
    for (const InstalledImage &installed : m_reading.installedImages)
        total += installed.bytes;
    return total;
}

bool PhoneDiskUse::lowDisk() const
{
    return m_reading.freeBytes && *m_reading.freeBytes < DiskUsage::lowSpace;
}

QString PhoneDiskUse::formatBytes(qint64 bytes)
{
    return DiskUsage::format(bytes);
}

QVariantList PhoneDiskUse::installedImagesVariant() const
{
    QVariantList list;
    for (const InstalledImage &installed : m_reading.installedImages) {
        list.append(QVariantMap {{QStringLiteral("id"), installed.image.id},
            {QStringLiteral("label"), installed.image.label()}, {QStringLiteral("bytes"), installed.bytes},
            {QStringLiteral("users"), installed.users}});
    }
    return list;
}

QVariant PhoneDiskUse::freeBytesVariant() const
{
    return m_reading.freeBytes ? QVariant(*m_reading.freeBytes) : QVariant();
}

QCoro::Task<> PhoneDiskUse::readTask(QList<AVDInfo> phones)
{
    QPointer<PhoneDiskUse> self(this);
    const quint64 reading = ++m_readings;
    // The worker gets values only: it never touches this object, which may be gone when it ends.
    auto measuring = QtConcurrent::run(
        &PhoneDiskUse::measure, std::move(phones), AndroidTools::sdkRoot(), Host::current().freeBytes);
    Reading measured = co_await std::move(measuring);
    if (!self || reading != m_readings)
        co_return;
    m_reading = std::move(measured);
    Q_EMIT changed();
}

PhoneDiskUse::Reading PhoneDiskUse::measure(
    const QList<AVDInfo> &phones, const QString &sdkRoot, std::optional<qint64> freeBytes)
{
    Reading reading;
    for (const AVDInfo &phone : phones) {
        if (!phone.path.isEmpty() && QFileInfo::exists(phone.path))
            reading.phoneSizes.insert(phone.name, DiskUsage::allocatedBytes(phone.path));
    }

    const QDir root(sdkRoot);
    const auto below = [](const QString &folder) {
        return QDir(folder).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    };
    // system-images/<platform>/<tag>/<abi>
    for (const QFileInfo &platform : below(root.filePath(QStringLiteral("system-images")))) {
        for (const QFileInfo &tag : below(platform.filePath())) {
            for (const QFileInfo &abi : below(tag.filePath())) {
                InstalledImage installed;
                installed.image = imageAt(root.relativeFilePath(abi.filePath()));
                installed.bytes = DiskUsage::allocatedBytes(abi.filePath());
                installed.users = imageUsers(phones, installed.image.id);
                reading.installedImages.append(installed);
            }
        }
    }
    reading.freeBytes = freeBytes ? freeBytes : DiskUsage::freeBytes(sdkRoot);
    return reading;
}

SystemImage PhoneDiskUse::imageAt(const QString &relativeFolder)
{
    const QStringList parts = relativeFolder.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    SystemImage image;
    image.id = parts.join(QLatin1Char(';'));
    image.api = parts.value(1).section(QLatin1Char('-'), -1).toLongLong();
    image.variant = parts.value(2);
    image.installed = true;
    return image;
}

std::optional<SystemImage> PhoneDiskUse::configuredImage(const QString &phonePath)
{
    QFile config(phonePath + QStringLiteral("/config.ini"));
    if (phonePath.isEmpty() || !config.open(QIODevice::ReadOnly | QIODevice::Text))
        return std::nullopt;
    static const QByteArray key = "image.sysdir.1=";
    while (!config.atEnd()) {
        const QByteArray line = config.readLine().trimmed();
        if (line.startsWith(key))
            return imageAt(QString::fromUtf8(line.mid(key.size()).trimmed()));
    }
    return std::nullopt;
}

QStringList PhoneDiskUse::imageUsers(const QList<AVDInfo> &phones, const QString &id)
{
    const QStringList parts = id.split(QLatin1Char(';'));
    const QString tagAndAbi
        = QStringLiteral("Tag/ABI: ") + parts.value(2) + QLatin1Char('/') + parts.value(3);
    QStringList users;
    for (const AVDInfo &phone : phones) {
        const std::optional<SystemImage> configured = configuredImage(phone.path);
        // Without its config the listing's wording decides, erring towards keeping the image.
        if (configured ? configured->id == id : phone.basedOn.contains(tagAndAbi))
            users.append(phone.name);
    }
    return users;
}
