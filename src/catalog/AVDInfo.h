#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

// One virtual phone (Android Virtual Device) on this machine, as avdmanager lists it.
class AVDInfo
{
    Q_GADGET
    QML_VALUE_TYPE(avdInfo)
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(QString path MEMBER path)
    Q_PROPERTY(QString basedOn MEMBER basedOn)
    Q_PROPERTY(QString error MEMBER error)
    Q_PROPERTY(QString device MEMBER device)
    Q_PROPERTY(QString summary READ summary)

public:
    QString name; // every avdmanager and emulator command addresses the phone by it
    QString path;
    QString basedOn; // Android version, tag and ABI in avdmanager's own wording
    QString error; // why avdmanager cannot load the phone; empty for a usable one
    QString device; // the phone model's id, as "pixel_7"

    const QString &identity() const { return name; }
    // The model, the Android version and the kind of image in words, as "Pixel 7, Android 14.0, Google
    // Play"; basedOn as it came when avdmanager words it differently.
    QString summary() const;

    bool operator==(const AVDInfo &) const = default;
};

size_t qHash(const AVDInfo &phone, size_t seed = 0);
