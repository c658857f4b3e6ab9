#pragma once

#include "Logcat.h"

#include <QHash>
#include <QObject>
#include <QtQml/qqmlregistration.h>

// One live log per phone serial, made the first time a view asks for it and kept, with what it has read,
// while the application runs.
class Logcats : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes the one set of logs")

public:
    explicit Logcats(QObject *parent = nullptr);

    Q_INVOKABLE Logcat *forSerial(const QString &serial);

private:
    QHash<QString, Logcat *> m_logs;
};
