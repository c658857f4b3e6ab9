#pragma once

#include "DeviceFeature.h"

#include <QStringList>

// The snapshots of a running phone, through the emulator's console: list, save under a name, load and
// delete.
class Snapshots : public DeviceFeature
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QStringList names READ names NOTIFY namesChanged)

public:
    using DeviceFeature::DeviceFeature;

    QStringList names() const { return m_names; }

    // The snapshot names in the console's table, in its order.
    static QStringList parseList(const QString &listing);

    Q_INVOKABLE void refresh();
    Q_INVOKABLE void save(const QString &name);
    Q_INVOKABLE void load(const QString &name);
    Q_INVOKABLE void remove(const QString &name);

    QCoro::Task<> refreshTask();
    // "save", "load" or "delete" of one snapshot, then the list again.
    QCoro::Task<> commandTask(QString command, QString name);

Q_SIGNALS:
    void namesChanged();

protected:
    void serialSet() override;

private:
    void setNames(const QStringList &names);

    QStringList m_names;
};
