#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

// The failures people actually meet with the Android tools on a Mac, recognised by the tools' own
// words, each with what happened and what to do in plain sentences, and the fix the app can carry out.
class KnownFailures : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    // Every entry's name, in the order they are tried.
    Q_INVOKABLE static QStringList names();
    // The first entry that matches `text`, as name, what, todo, fix ("installImage", "reinstall",
    // "removeLock" or empty) and fixLabel; for "reinstall" also the package and the file's path as adb
    // named them. A full disk's todo names what the job needed, when the text names the job (a job's log
    // starts with its command). Empty when no entry matches.
    Q_INVOKABLE static QVariantMap explain(const QString &text);
    // A stopped phone whose folder still holds an emulator's locks, in the same shape.
    Q_INVOKABLE static QVariantMap staleLock(const QString &phone);
};
