// The phone store's operations that change what is on disk: creating and deleting phones and
// installing system images.
#include "PhoneStore.h"

#include "AndroidTools.h"
#include "ToolRunner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>

#include <algorithm>

bool PhoneStore::isValidName(const QString &name)
{
    static const QString allowed
        = QStringLiteral("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-");
    return !name.isEmpty()
        && std::all_of(name.begin(), name.end(), [](QChar c) { return allowed.contains(c); });
}

void PhoneStore::createPhone(const QString &name, const DeviceDef &device, const SystemImage &image)
{
    createAndAnnounceTask(name, device, image);
}

QCoro::Task<> PhoneStore::createAndAnnounceTask(QString name, DeviceDef device, SystemImage image)
{
    QPointer<PhoneStore> self(this);
    auto creating = createPhoneTask(name, device, image);
    const std::optional<QString> failure = co_await std::move(creating);
    if (self)
        Q_EMIT createFinished(name, failure ? QVariant(*failure) : QVariant());
}

void PhoneStore::deletePhone(const QString &name)
{
    deletePhoneTask(name);
}

void PhoneStore::installImage(const SystemImage &image)
{
    installImageTask(image);
}

QCoro::Task<std::optional<QString>> PhoneStore::createPhoneTask(
    QString name, DeviceDef device, SystemImage image)
{
    const auto avdManager = AndroidTools::avdManager();
    if (!avdManager)
        co_return QStringLiteral("avdmanager was not found.");
    QPointer<PhoneStore> self(this);
    const QStringList arguments {QStringLiteral("create"), QStringLiteral("avd"), QStringLiteral("-n"), name,
        QStringLiteral("-k"), image.id, QStringLiteral("-d"), device.id};
    // avdmanager asks whether to make a custom hardware profile.
    const std::optional<QString> answer = QStringLiteral("no\n");
    auto creating
        = ToolRunner::run(*avdManager, arguments, AndroidTools::environment(), timeouts().create, answer);
    const ProcessResult result = co_await std::move(creating);

    if (result.isClean()) {
        if (self) {
            auto refreshing = refreshTask();
            co_await std::move(refreshing);
        }
        co_return std::nullopt;
    }
    QString message = result.launchError.value_or(result.text.trimmed());
    if (message.isEmpty())
        message = result.failureSummary();
    if (self)
        setError(QStringLiteral("Creating ") + name + QStringLiteral(" failed."), message);
    co_return message;
}

QCoro::Task<> PhoneStore::deletePhoneTask(QString name)
{
    const auto avdManager = AndroidTools::avdManager();
    if (!avdManager) {
        Q_EMIT deleteFinished(name);
        co_return;
    }
    QPointer<PhoneStore> self(this);
    const QStringList arguments {QStringLiteral("delete"), QStringLiteral("avd"), QStringLiteral("-n"), name};
    auto deleting = ToolRunner::run(*avdManager, arguments, AndroidTools::environment(), timeouts().remove);
    const ProcessResult result = co_await std::move(deleting);
    if (!self)
        co_return;
    if (!result.isClean())
        setError(QStringLiteral("Deleting ") + name + QStringLiteral(" failed."), failureDetails(result));
    // The runner goes without being stopped; the Phones tab offers deleting only for a stopped phone.
    removeRunner(name);
    auto refreshing = refreshTask();
    co_await std::move(refreshing);
    if (self)
        Q_EMIT deleteFinished(name);
}

QCoro::Task<bool> PhoneStore::installImageTask(SystemImage image)
{
    return installImageForPhoneTask(image, QString());
}

QCoro::Task<bool> PhoneStore::installImageForPhoneTask(SystemImage image, QString phone)
{
    const auto sdkManager = AndroidTools::sdkManager();
    if (!sdkManager)
        co_return false;
    QPointer<PhoneStore> self(this);
    AndroidTools::ensureSDKFolder();
    setInstallingImage(true);
    if (!phone.isEmpty())
        setFix(m_fixSteps, phone, QStringLiteral("Installing the system image..."));
    const QString title = QStringLiteral("Installing ") + image.label();
    const QStringList arguments {QStringLiteral("--sdk_root=") + AndroidTools::sdkRoot(), image.id};
    auto installing = m_imageJob->run(title, *sdkManager, arguments);
    const ProcessResult result = co_await std::move(installing);
    if (!self)
        co_return result.isClean();
    // The user cancelled from the job's log; that needs no message.
    if (!result.isClean() && !result.cancelled)
        setError(QStringLiteral("Installing the system image failed."), failureDetails(result));
    // Until the images are read again, nobody can tell whether the image is there now.
    if (!phone.isEmpty())
        setFix(m_fixSteps, phone, QStringLiteral("Checking whether the system image is installed now..."));
    auto loading = loadImagesTask();
    co_await std::move(loading);
    if (!self)
        co_return result.isClean();
    setInstallingImage(false);
    if (!phone.isEmpty())
        setFix(m_fixSteps, phone, std::nullopt);
    co_return result.isClean();
}

QStringList PhoneStore::lockFiles(const QString &avdPath)
{
    if (avdPath.isEmpty())
        return {};
    const QDir folder(avdPath);
    QStringList paths;
    const QStringList names = folder.entryList({QStringLiteral("*.lock")},
        QDir::Files | QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::System);
    for (const QString &name : names)
        paths.append(folder.filePath(name));
    return paths;
}

QString PhoneStore::avdPath(const QString &name) const
{
    for (const AVDInfo &phone : m_phones) {
        if (phone.name == name)
            return phone.path;
    }
    return QString();
}

void PhoneStore::checkLocks(const QStringList &names)
{
    // A phone another program runs holds its locks rightly; so does one of ours that is not stopped. While
    // adb cannot name every emulator, no lock is called stale.
    const auto stale = [this](const QString &name) {
        const EmulatorProcess *phone = m_runners.value(name);
        return (!phone || phone->state() == EmulatorProcess::State::Stopped) && !m_elsewhere->problem()
            && !m_elsewhere->phones().contains(name) && !lockFiles(avdPath(name)).isEmpty();
    };
    QStringList locked;
    for (const QString &name : std::as_const(m_lockedPhones)) {
        if (!names.contains(name))
            locked.append(name);
    }
    std::copy_if(names.begin(), names.end(), std::back_inserter(locked), stale);
    setLockedPhones(locked);
}

void PhoneStore::runnerStateChanged(EmulatorProcess *runner)
{
    const QString name = runner->name();
    if (runner->state() == EmulatorProcess::State::Stopped) {
        checkLocks({name});
    } else if (m_lockedPhones.contains(name)) {
        QStringList locked = m_lockedPhones;
        locked.removeAll(name);
        setLockedPhones(locked);
    }
}

void PhoneStore::setLockedPhones(const QStringList &names)
{
    m_lockedPhones = names;
    Q_EMIT lockedPhonesChanged();
}

void PhoneStore::removeLockAndStart(const QString &name, const StartOptions &options)
{
    removeLockAndStartTask(name, options);
}

QCoro::Task<> PhoneStore::removeLockAndStartTask(QString name, StartOptions options)
{
    QPointer<PhoneStore> self(this);
    if (runner(name)->state() != EmulatorProcess::State::Stopped)
        co_return;
    // Asked again now, and trusted only when adb named every emulator: a lock of a running emulator is
    // never touched.
    setFix(m_fixSteps, name, QStringLiteral("Checking that no emulator runs %1...").arg(name));
    auto asking = m_elsewhere->scanTask();
    co_await std::move(asking);
    if (!self)
        co_return;
    setFix(m_fixSteps, name, std::nullopt);
    if (const QStringList serials = m_elsewhere->phones().value(name); !serials.isEmpty()) {
        setRefusal(name,
            QStringLiteral("%1 is running outside Tolvane (%2), so its lock stays.")
                .arg(name, serials.join(QStringLiteral(", "))));
        checkLocks({name});
        co_return;
    }
    if (const std::optional<QString> problem = m_elsewhere->problem()) {
        setRefusal(name, name + QStringLiteral("'s lock stays: ") + *problem);
        checkLocks({name});
        co_return;
    }
    if (runner(name)->state() != EmulatorProcess::State::Stopped)
        co_return;
    QStringList failed;
    for (const QString &path : lockFiles(avdPath(name))) {
        const bool removed = QFileInfo(path).isDir() && !QFileInfo(path).isSymLink()
            ? QDir(path).removeRecursively()
            : QFile::remove(path);
        if (!removed)
            failed.append(path);
    }
    if (!failed.isEmpty()) {
        setError(QStringLiteral("Could not remove the lock of ") + name + QLatin1Char('.'),
            failed.join(QLatin1Char('\n')));
        co_return;
    }
    QStringList locked = m_lockedPhones;
    locked.removeAll(name);
    setLockedPhones(locked);
    start(name, options);
}

void PhoneStore::installImageFor(const QString &name)
{
    installImageForTask(name);
}

QCoro::Task<bool> PhoneStore::installImageForTask(QString name)
{
    const std::optional<SystemImage> configured = PhoneDiskUse::configuredImage(avdPath(name));
    const QStringList parts = configured ? configured->id.split(QLatin1Char(';')) : QStringList();
    if (parts.size() != 4 || !parts[1].startsWith(QLatin1String("android-"))) {
        setError(QStringLiteral("Could not tell which system image ") + name + QStringLiteral(" needs."),
            QStringLiteral("Its config.ini names no system image folder."));
        co_return false;
    }
    const SystemImage image = *configured;
    setFix(m_fixOutcomes, name, std::nullopt);
    QPointer<PhoneStore> self(this);
    auto installing = installImageForPhoneTask(image, name);
    const bool installed = co_await std::move(installing);
    // The folder the emulator looks for decides, not the tool's exit status.
    if (self && installed
        && QFileInfo::exists(AndroidTools::sdkRoot() + QLatin1Char('/') + parts.join(QLatin1Char('/'))))
        setFix(m_fixOutcomes, name, QStringLiteral("System image installed. Start %1 now.").arg(name));
    co_return installed;
}

void PhoneStore::removeImage(const QString &id)
{
    removeImageTask(id);
}

QCoro::Task<bool> PhoneStore::removeImageTask(QString id)
{
    const auto sdkManager = AndroidTools::sdkManager();
    if (!sdkManager)
        co_return false;
    const SystemImage image = PhoneDiskUse::imageAt(id.split(QLatin1Char(';')).join(QLatin1Char('/')));
    if (const QStringList users = PhoneDiskUse::imageUsers(m_phones, id); !users.isEmpty()) {
        setError(QStringLiteral("%1 is used by %2.").arg(image.label(), users.join(QStringLiteral(", "))),
            QStringLiteral("Delete the phones made from it before removing the system image."));
        co_return false;
    }
    QPointer<PhoneStore> self(this);
    const QString title = QStringLiteral("Removing ") + image.label();
    const QStringList arguments {
        QStringLiteral("--sdk_root=") + AndroidTools::sdkRoot(), QStringLiteral("--uninstall"), id};
    auto removing = m_imageJob->run(title, *sdkManager, arguments);
    const ProcessResult result = co_await std::move(removing);
    if (!self)
        co_return result.isClean();
    if (!result.isClean() && !result.cancelled)
        setError(QStringLiteral("Removing the system image failed."), failureDetails(result));
    // The images list shows the installed state as sdkmanager reports it; listing it reads the disk again.
    if (!m_images.isEmpty()) {
        auto loading = loadImagesTask();
        co_await std::move(loading);
    } else {
        auto reading = m_diskUse->readTask(m_phones);
        co_await std::move(reading);
    }
    co_return result.isClean();
}
