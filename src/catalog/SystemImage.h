#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

// An Android system image that sdkmanager can install or has installed.
class SystemImage
{
    Q_GADGET
    QML_VALUE_TYPE(systemImage)
    Q_PROPERTY(QString id MEMBER id CONSTANT)
    Q_PROPERTY(qint64 api MEMBER api CONSTANT)
    Q_PROPERTY(QString variant MEMBER variant CONSTANT)
    Q_PROPERTY(bool installed MEMBER installed)
    Q_PROPERTY(QString androidName READ androidName)
    Q_PROPERTY(QString label READ label)

public:
    // The sdkmanager package path, e.g. system-images;android-34;google_apis_playstore;arm64-v8a;
    // sdkmanager installs by it and avdmanager takes it after -k.
    QString id;
    qint64 api = 0;
    QString variant;
    bool installed = false;

    const QString &identity() const { return id; }

    // The release's marketing name, e.g. "Android 14".
    QString androidName() const;
    // How the image is named to the user, e.g. "Android 14 (API 34), Google Play".
    QString label() const;

    bool operator==(const SystemImage &) const = default;
};

size_t qHash(const SystemImage &image, size_t seed = 0);
