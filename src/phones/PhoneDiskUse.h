#pragma once

#include "AVDInfo.h"
#include "SystemImage.h"

#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

#include <QCoro/QCoroTask>

#include <optional>

// What the phones and the installed system images take on disk and what is left. Read off the main
// thread: a phone's folder can hold a great many files.
class PhoneDiskUse : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the phone store")
    Q_PROPERTY(QVariantMap phoneSizes READ phoneSizes NOTIFY changed)
    Q_PROPERTY(QVariantList installedImages READ installedImagesVariant NOTIFY changed)
    Q_PROPERTY(qint64 phonesBytes READ phonesBytes NOTIFY changed)
    Q_PROPERTY(qint64 imagesBytes READ imagesBytes NOTIFY changed)
    Q_PROPERTY(QVariant freeBytes READ freeBytesVariant NOTIFY changed)
    Q_PROPERTY(bool lowDisk READ lowDisk NOTIFY changed)

public:
    // One installed system image on disk.
    struct InstalledImage
    {
        SystemImage image;
        qint64 bytes = 0;
        QStringList users; // the phones made from it
    };
    struct Reading
    {
        QVariantMap phoneSizes;
        QList<InstalledImage> installedImages;
        std::optional<qint64> freeBytes;
    };

    using QObject::QObject;

    QVariantMap phoneSizes() const { return m_reading.phoneSizes; }
    const QList<InstalledImage> &installedImages() const { return m_reading.installedImages; }
    qint64 phonesBytes() const;
    qint64 imagesBytes() const;
    std::optional<qint64> freeBytes() const { return m_reading.freeBytes; }
    bool lowDisk() const;
    Q_INVOKABLE static QString formatBytes(qint64 bytes);

    // Reads it all again for these phones; a reading under way when a newer one starts is dropped.
    QCoro::Task<> readTask(QList<AVDInfo> phones);
    // What readTask measures, on whatever thread calls it.
    static Reading measure(
        const QList<AVDInfo> &phones, const QString &sdkRoot, std::optional<qint64> freeBytes);

    // The system image a phone's config.ini names (image.sysdir.1, a folder below the SDK root).
    static std::optional<SystemImage> configuredImage(const QString &phonePath);
    // The phones made from the image with this package id.
    static QStringList imageUsers(const QList<AVDInfo> &phones, const QString &id);
    // The image installed in this folder below the SDK root, e.g.
    // system-images/android-34/google_apis/arm64-v8a.
    static SystemImage imageAt(const QString &relativeFolder);

Q_SIGNALS:
    void changed();

private:
    QVariantList installedImagesVariant() const;
    QVariant freeBytesVariant() const;

    Reading m_reading;
    quint64 m_readings = 0;
};
