#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

// A phone model: a hardware profile that avdmanager knows.
class DeviceDef
{
    Q_GADGET
    QML_VALUE_TYPE(deviceDef)
    Q_PROPERTY(QString id MEMBER id CONSTANT)
    Q_PROPERTY(QString name MEMBER name CONSTANT)
    Q_PROPERTY(QString oem MEMBER oem CONSTANT)

public:
    QString id; // what avdmanager takes after -d
    QString name;
    QString oem; // may be empty

    const QString &identity() const { return id; }

    bool operator==(const DeviceDef &) const = default;
};

size_t qHash(const DeviceDef &device, size_t seed = 0);
