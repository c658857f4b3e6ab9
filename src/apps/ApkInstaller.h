#pragma once

#include "ProcessResult.h"
#include "SaveLocationChooser.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QUrl>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

#include <QCoro/QCoroTask>

#include <optional>

// Installs, lists and uninstalls apps on a running phone and saves its screenshots. Every action is
// given the phone's serial; what happened is written to one running log.
class ApkInstaller : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes the one APK installer")
    Q_PROPERTY(QString output READ output NOTIFY outputChanged)
    Q_PROPERTY(bool busy READ busy NOTIFY busyChanged)
    Q_PROPERTY(QStringList packages READ packages NOTIFY packagesChanged)
    Q_PROPERTY(QVariant packagesNote READ packagesNoteVariant NOTIFY packagesNoteChanged)
    Q_PROPERTY(bool packagesOutOfDate READ packagesOutOfDate NOTIFY packagesNoteChanged)
    Q_PROPERTY(QString latestOutput READ latestOutput NOTIFY outputChanged)
    Q_PROPERTY(QString latestSerial READ latestSerial NOTIFY latestSerialChanged)
    Q_PROPERTY(QString fixOutcome READ fixOutcome NOTIFY outputChanged)

public:
    // How long each adb run may take, in seconds; tests shorten them.
    struct Timeouts
    {
        double list = 10.0;
        double uninstall = 30.0;
        double screenshot = 30.0;
    };
    static const Timeouts &timeouts();
    static void setTimeouts(const Timeouts &timeouts);

    explicit ApkInstaller(QObject *parent = nullptr);
    ApkInstaller(SaveLocationChooser *chooser, QObject *parent = nullptr);

    QString output() const { return m_output; }
    bool busy() const { return m_busy; }
    QStringList packages() const { return m_packages; }
    std::optional<QString> packagesNote() const { return m_packagesNote; }
    // The latest listing failed: the packages are those listed before, and the phone may have others now.
    bool packagesOutOfDate() const { return m_packagesOutOfDate; }
    // What the latest install, uninstall or screenshot logged, for explaining its failure.
    QString latestOutput() const { return m_latestOutput; }
    // The phone the latest install, uninstall or screenshot acted on: what a fix for its failure acts on,
    // whichever phone is picked by then.
    QString latestSerial() const { return m_latestSerial; }
    // What a fix that worked did, said where its hint stood; empty until the next action.
    QString fixOutcome() const { return m_fixOutcome; }

    // Asked where each screenshot goes; without one, a screenshot is dropped as if the user cancelled.
    void setSaveLocationChooser(SaveLocationChooser *chooser);

    Q_INVOKABLE void install(const QList<QUrl> &urls, const QString &serial);
    Q_INVOKABLE void refreshPackages(const QString &serial);
    Q_INVOKABLE void uninstall(const QString &package, const QString &serial);
    Q_INVOKABLE void screenshot(const QString &serial);
    // Removes the installed app, with its data, and installs the file again: what an app signed by
    // someone else needs.
    Q_INVOKABLE void reinstall(const QString &package, const QString &path, const QString &serial);
    // Forgets what it learnt about phones that are no longer running: a serial can come back as
    // another phone.
    Q_INVOKABLE void keepPhonesOnly(const QStringList &runningSerials);

    // The same actions, for callers that wait for the end.
    QCoro::Task<> installTask(QList<QUrl> urls, QString serial);
    QCoro::Task<> refreshPackagesTask(QString serial);
    QCoro::Task<> uninstallTask(QString package, QString serial);
    QCoro::Task<> screenshotTask(QString serial);
    QCoro::Task<> reinstallTask(QString package, QString path, QString serial);

Q_SIGNALS:
    void outputChanged();
    void busyChanged();
    void packagesChanged();
    void packagesNoteChanged();
    void latestSerialChanged();
    // Any of the above.
    void changed();

private:
    QVariant packagesNoteVariant() const { return m_packagesNote ? QVariant(*m_packagesNote) : QVariant(); }

    // Appends one message to the log, on a line of its own.
    void log(const QString &message);
    // Starts what latestOutput holds, about this phone.
    void beginAction(const QString &serial);
    // Why the file must not go to the phone, or none; asks the phone for its ABIs when the app has
    // native code.
    QCoro::Task<std::optional<QString>> refusal(QString path, QString serial);
    // The phone's ABIs, asked once while it runs; empty when adb could not tell.
    QCoro::Task<QStringList> phoneAbis(QString serial);
    // Logs its own lines; a failure is reported like any other and does not stop a batch. True when
    // adb reported the app installed.
    QCoro::Task<bool> installOne(QString path, QString serial);
    // Logs and runs one uninstall; true when adb removed the app.
    QCoro::Task<bool> removePackage(QString package, QString serial);
    void saveScreenshot(const QString &path, const QByteArray &png);
    void setBusy(bool busy);
    void setPackages(const QStringList &packages);
    void setPackagesNote(std::optional<QString> note, bool outOfDate = false);

    QString m_output;
    bool m_busy = false;
    QStringList m_packages;
    std::optional<QString> m_packagesNote;
    bool m_packagesOutOfDate = false;
    QString m_latestOutput;
    QString m_latestSerial;
    QString m_fixOutcome;
    QHash<QString, QStringList> m_phoneAbis; // by serial
    QPointer<SaveLocationChooser> m_chooser;
};
