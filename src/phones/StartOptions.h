#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

// The user's start choices for one phone, as the Phones tab holds them.
class StartOptions
{
    Q_GADGET
    QML_VALUE_TYPE(startOptions)
    Q_PROPERTY(bool coldBoot MEMBER coldBoot)
    Q_PROPERTY(bool noSnapshot MEMBER noSnapshot)
    Q_PROPERTY(bool wipeData MEMBER wipeData)
    Q_PROPERTY(QString scale MEMBER scale)
    Q_PROPERTY(QString gpu MEMBER gpu)
    Q_PROPERTY(QString snapshot MEMBER snapshot)

public:
    bool coldBoot = false;
    bool noSnapshot = false;
    bool wipeData = false;
    QString scale = QStringLiteral("Default");
    QString gpu = QStringLiteral("auto");
    // A saved snapshot to start from instead of the quick-boot one; empty for none.
    QString snapshot;

    // The option part of the emulator's command line; the strings are passed on as they are.
    QStringList arguments() const;
};
