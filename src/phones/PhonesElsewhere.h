#pragma once

#include <QMap>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

#include <QCoro/QCoroTask>

#include <functional>
#include <optional>

// Emulators that another program started (Android Studio, a terminal): found through adb, shown beside
// our own phones, and stopped through adb. A scan that cannot name every emulator says why, so that
// nothing relies on it to know that a phone is not running.
class PhonesElsewhere : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the phone store")
    // Phone name to the serials of the emulators running it, as of the last scan.
    Q_PROPERTY(QVariantMap phones READ phonesVariant NOTIFY changed)
    Q_PROPERTY(QStringList stopping READ stopping NOTIFY changed)
    // Why the last scan could not tell which phones run, in words; undefined when it could.
    Q_PROPERTY(QVariant problem READ problemVariant NOTIFY changed)

public:
    using OurPorts = std::function<QSet<int>()>;

    // `ours` tells the console ports of our own emulators, which a scan leaves out.
    explicit PhonesElsewhere(OurPorts ours, QObject *parent = nullptr);

    const QMap<QString, QStringList> &phones() const { return m_phones; }
    // Console ports of every emulator that is not ours, also those whose phone could not be named.
    const QSet<int> &ports() const { return m_ports; }
    std::optional<QString> problem() const { return m_problem; }
    QStringList stopping() const { return m_stopping; }

    // Asks adb which emulators run and which phone each one runs.
    QCoro::Task<> scanTask();
    // Asks every emulator of the phone to quit, and waits until adb no longer lists them.
    Q_INVOKABLE void stop(const QString &name);
    QCoro::Task<> stopTask(QString name);

Q_SIGNALS:
    void changed();
    // Asking an emulator to quit failed; `details` is what adb said.
    void stopFailed(const QString &name, const QString &details);

private:
    QVariantMap phonesVariant() const;
    QVariant problemVariant() const { return m_problem ? QVariant(*m_problem) : QVariant(); }

    OurPorts m_ours;
    QMap<QString, QStringList> m_phones;
    QSet<int> m_ports;
    std::optional<QString> m_problem;
    QStringList m_stopping;
};
