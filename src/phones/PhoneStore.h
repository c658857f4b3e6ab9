#pragma once

#include "AVDInfo.h"
#include "DeviceDef.h"
#include "EmulatorProcess.h"
#include "JobRunner.h"
#include "PhoneDiskUse.h"
#include "PhonesElsewhere.h"
#include "StartOptions.h"
#include "SystemImage.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

#include <QCoro/QCoroTask>

#include <optional>

// The virtual phones, phone models and system images the Android tools report, the state of their
// listings, the last error, the image-install job and one emulator process per phone.
class PhoneStore : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes the one phone store")
    Q_PROPERTY(QVariantList phones READ phonesVariant NOTIFY phonesChanged)
    Q_PROPERTY(QVariantList devices READ devicesVariant NOTIFY devicesChanged)
    Q_PROPERTY(QVariantList images READ imagesVariant NOTIFY imagesChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    Q_PROPERTY(bool imagesLoading READ imagesLoading NOTIFY imagesLoadingChanged)
    Q_PROPERTY(bool devicesLoading READ devicesLoading NOTIFY devicesLoadingChanged)
    Q_PROPERTY(QVariant rawPhoneListing READ rawPhoneListingVariant NOTIFY rawPhoneListingChanged)
    Q_PROPERTY(QVariant rawDeviceListing READ rawDeviceListingVariant NOTIFY rawDeviceListingChanged)
    Q_PROPERTY(QVariant rawImageListing READ rawImageListingVariant NOTIFY rawImageListingChanged)
    Q_PROPERTY(QVariant errorSummary READ errorSummaryVariant NOTIFY errorSummaryChanged)
    Q_PROPERTY(QString errorDetails READ errorDetails NOTIFY errorDetailsChanged)
    // Why the phone models or the Android versions could not be listed, until a listing of the same
    // kind succeeds: the summary (or undefined) and the tool's text.
    Q_PROPERTY(QVariant catalogFailure READ catalogFailureVariant NOTIFY catalogFailureChanged)
    Q_PROPERTY(QString catalogFailureDetails READ catalogFailureDetails NOTIFY catalogFailureChanged)
    Q_PROPERTY(JobRunner *imageJob READ imageJob CONSTANT)
    Q_PROPERTY(QList<EmulatorProcess *> allRunners READ allRunners NOTIFY runnersChanged)
    Q_PROPERTY(QList<EmulatorProcess *> runningRunners READ runningRunners NOTIFY runnersChanged)
    Q_PROPERTY(QStringList lockedPhones READ lockedPhones NOTIFY lockedPhonesChanged)
    // Why the last start or lock removal of a phone was refused, by phone name; gone at its next start.
    Q_PROPERTY(QVariantMap refusals READ refusals NOTIFY refusalsChanged)
    // From the start of a system-image install until the images have been read again after it.
    Q_PROPERTY(bool installingImage READ installingImage NOTIFY installingImageChanged)
    // What a fix started from a phone's hint is doing now, by phone name: its button waits meanwhile.
    Q_PROPERTY(QVariantMap fixSteps READ fixSteps NOTIFY fixesChanged)
    // What such a fix achieved and what comes next, by phone name; gone at the phone's next start.
    Q_PROPERTY(QVariantMap fixOutcomes READ fixOutcomes NOTIFY fixesChanged)
    // Read again at each refresh and image listing.
    Q_PROPERTY(PhoneDiskUse *diskUse READ diskUse CONSTANT)
    // Looked for at each refresh.
    Q_PROPERTY(PhonesElsewhere *elsewhere READ elsewhere CONSTANT)
    // Every phone adb commands can go to: our running phones and those running elsewhere, as maps of
    // name and serial, by name.
    Q_PROPERTY(QVariantList runningTargets READ runningTargets NOTIFY runnersChanged)

public:
    static constexpr int firstConsolePort = 5554;
    static constexpr int lastConsolePort = 5584;

    // How long each tool run may take, in seconds; tests shorten them.
    struct Timeouts
    {
        double list = 20.0;
        double imageList = 180.0; // sdkmanager asks the network
        double create = 60.0;
        double remove = 20.0;
    };
    static const Timeouts &timeouts();
    static void setTimeouts(const Timeouts &timeouts);

    explicit PhoneStore(QObject *parent = nullptr);

    const QList<AVDInfo> &phones() const { return m_phones; }
    const QList<DeviceDef> &devices() const { return m_devices; }
    const QList<SystemImage> &images() const { return m_images; }
    bool isLoading() const { return m_isLoading; }
    bool imagesLoading() const { return m_imagesLoading; }
    bool devicesLoading() const { return m_devicesLoading; }
    std::optional<QString> rawPhoneListing() const { return m_rawPhoneListing; }
    std::optional<QString> rawDeviceListing() const { return m_rawDeviceListing; }
    std::optional<QString> rawImageListing() const { return m_rawImageListing; }
    std::optional<QString> errorSummary() const { return m_errorSummary; }
    QString errorDetails() const { return m_errorDetails; }
    QString catalogFailureDetails() const;
    JobRunner *imageJob() const { return m_imageJob; }

    // The phone's emulator process, made on first use and kept until the phone is deleted.
    Q_INVOKABLE EmulatorProcess *runner(const QString &name);
    // Sorted by name in character order.
    QList<EmulatorProcess *> allRunners() const;
    QList<EmulatorProcess *> runningRunners() const;
    // The first even console port from 5554 that no emulator uses, or 5584 when all are taken.
    static int consolePort(const QSet<int> &busy);

    // Starts the phone's emulator on a free console port; does nothing unless it is stopped.
    Q_INVOKABLE void start(const QString &name, const StartOptions &options);

    PhoneDiskUse *diskUse() const { return m_diskUse; }
    // Uninstalls a system image that no phone uses, through the image job.
    Q_INVOKABLE void removeImage(const QString &id);
    // True when the image was uninstalled.
    QCoro::Task<bool> removeImageTask(QString id);

    PhonesElsewhere *elsewhere() const { return m_elsewhere; }
    QVariantList runningTargets() const;
    QVariantMap refusals() const { return m_refusals; }
    bool installingImage() const { return m_installingImage; }
    QVariantMap fixSteps() const { return m_fixSteps; }
    QVariantMap fixOutcomes() const { return m_fixOutcomes; }
    Q_INVOKABLE void dismissError();

    Q_INVOKABLE void refresh();
    Q_INVOKABLE void loadDevices();
    Q_INVOKABLE void loadImages();
    QCoro::Task<> refreshTask();
    QCoro::Task<> loadDevicesTask();
    QCoro::Task<> loadImagesTask();

    // Not empty, and only ASCII letters, digits, full stop, underscore and hyphen.
    Q_INVOKABLE static bool isValidName(const QString &name);
    // Ends with createFinished: the failure is undefined once the phone exists and is listed.
    Q_INVOKABLE void createPhone(const QString &name, const DeviceDef &device, const SystemImage &image);
    Q_INVOKABLE void deletePhone(const QString &name);
    Q_INVOKABLE void installImage(const SystemImage &image);
    // None when the phone was created and the list refreshed, otherwise the text that explains the failure.
    QCoro::Task<std::optional<QString>> createPhoneTask(QString name, DeviceDef device, SystemImage image);
    QCoro::Task<> deletePhoneTask(QString name);
    // True when the install ran cleanly; the images are reloaded in every case.
    QCoro::Task<bool> installImageTask(SystemImage image);

    // Stopped phones whose folder still holds an emulator's lock files while nothing runs them: their
    // emulator did not shut down cleanly.
    QStringList lockedPhones() const { return m_lockedPhones; }
    // The lock files and folders an emulator keeps in a phone's folder while it runs.
    static QStringList lockFiles(const QString &avdPath);
    // Removes a stopped phone's lock files, unless something still runs it, then starts it.
    Q_INVOKABLE void removeLockAndStart(const QString &name, const StartOptions &options);
    QCoro::Task<> removeLockAndStartTask(QString name, StartOptions options);
    // Installs the system image the phone was made from, in imageJob.
    Q_INVOKABLE void installImageFor(const QString &name);
    QCoro::Task<bool> installImageForTask(QString name);

Q_SIGNALS:
    void phonesChanged();
    void devicesChanged();
    void imagesChanged();
    void isLoadingChanged();
    void imagesLoadingChanged();
    void devicesLoadingChanged();
    void rawPhoneListingChanged();
    void rawDeviceListingChanged();
    void rawImageListingChanged();
    void errorSummaryChanged();
    void errorDetailsChanged();
    void catalogFailureChanged();
    // A creation started by createPhone() ended; `failure` is the text that explains it, or undefined.
    void createFinished(const QString &name, const QVariant &failure);
    // A deletion ended, successfully or not, and the list has been read again.
    void deleteFinished(const QString &name);
    // A runner was made or removed, or one changed state.
    void runnersChanged();
    void lockedPhonesChanged();
    void refusalsChanged();
    void installingImageChanged();
    void fixesChanged();
    // Any of the above, and every change of the image job or of a runner.
    void changed();

private:
    QVariantList phonesVariant() const;
    QVariantList devicesVariant() const;
    QVariantList imagesVariant() const;
    QVariant rawPhoneListingVariant() const;
    QVariant rawDeviceListingVariant() const;
    QVariant rawImageListingVariant() const;
    QVariant errorSummaryVariant() const;
    QVariant catalogFailureVariant() const;

    void setPhones(const QList<AVDInfo> &phones);
    void setDevices(const QList<DeviceDef> &devices);
    void setImages(const QList<SystemImage> &images);
    void setLoading(bool loading);
    void setImagesLoading(bool loading);
    void setDevicesLoading(bool loading);
    void setRawPhoneListing(std::optional<QString> text);
    void setRawDeviceListing(std::optional<QString> text);
    void setRawImageListing(std::optional<QString> text);
    void setError(std::optional<QString> summary, const QString &details);
    struct Failure
    {
        QString summary;
        QString details;
    };
    // Sets the store's error too when there is a failure.
    void setCatalogFailure(std::optional<Failure> &kind, std::optional<Failure> failure);
    // The models' failure before the versions': the sheet shows one.
    const std::optional<Failure> &catalogFailure() const;
    // What goes with the summary of a failed run: the launch error, else everything the tool printed.
    static QString failureDetails(const ProcessResult &result);
    void removeRunner(const QString &name);
    QCoro::Task<> createAndAnnounceTask(QString name, DeviceDef device, SystemImage image);
    QString avdPath(const QString &name) const;
    void checkLocks(const QStringList &names);
    void runnerStateChanged(EmulatorProcess *runner);
    void setLockedPhones(const QStringList &names);
    void setRefusal(const QString &name, std::optional<QString> why);
    void setInstallingImage(bool installing);
    // An entry of fixSteps or fixOutcomes, set or removed.
    void setFix(QVariantMap &fixes, const QString &name, std::optional<QString> text);
    // The install of installImageTask; a fix for `phone` says which step it is at.
    QCoro::Task<bool> installImageForPhoneTask(SystemImage image, QString phone);
    // Console ports of our emulators from launch until their end.
    QSet<int> ourPorts() const;

    QList<AVDInfo> m_phones;
    QList<DeviceDef> m_devices;
    QList<SystemImage> m_images;
    bool m_isLoading = false;
    bool m_imagesLoading = false;
    bool m_devicesLoading = false;
    std::optional<QString> m_rawPhoneListing;
    std::optional<QString> m_rawDeviceListing;
    std::optional<QString> m_rawImageListing;
    std::optional<QString> m_errorSummary;
    QString m_errorDetails;
    std::optional<Failure> m_deviceFailure;
    std::optional<Failure> m_imageFailure;
    JobRunner *m_imageJob;
    // Keyed by phone name, so the values come out in name order.
    QMap<QString, EmulatorProcess *> m_runners;
    QStringList m_lockedPhones;
    QVariantMap m_refusals;
    bool m_installingImage = false;
    QVariantMap m_fixSteps;
    QVariantMap m_fixOutcomes;
    PhoneDiskUse *m_diskUse;
    PhonesElsewhere *m_elsewhere;
};
