#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <QCoro/QCoroTask>

// The snapshots a stopped phone keeps in its folder (snapshots/<name>/), with what each takes on disk.
// Read off the main thread: a snapshot holds the phone's whole memory.
class SavedSnapshots : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    // The phone's folder, as avdmanager names it.
    Q_PROPERTY(QString phoneFolder READ phoneFolder WRITE setPhoneFolder NOTIFY phoneFolderChanged)
    // Each as {name, bytes}, by name.
    Q_PROPERTY(QVariantList snapshots READ snapshots NOTIFY snapshotsChanged)

public:
    using QObject::QObject;

    QString phoneFolder() const { return m_phoneFolder; }
    void setPhoneFolder(const QString &folder);
    QVariantList snapshots() const { return m_snapshots; }

    Q_INVOKABLE void refresh();
    QCoro::Task<> refreshTask();
    // What refreshTask reads, on whatever thread calls it.
    static QVariantList measure(const QString &phoneFolder);

Q_SIGNALS:
    void phoneFolderChanged();
    void snapshotsChanged();

private:
    QString m_phoneFolder;
    QVariantList m_snapshots;
    quint64 m_readings = 0;
};
