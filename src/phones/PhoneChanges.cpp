// The phone store's operations that change what is on disk: creating and deleting phones and
// installing system images.
#include "PhoneStore.h"

#include "AndroidTools.h"
#include "ToolRunner.h"

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
    const auto sdkManager = AndroidTools::sdkManager();
    if (!sdkManager)
        co_return false;
    QPointer<PhoneStore> self(this);
    AndroidTools::ensureSDKFolder();
    const QString title = QStringLiteral("Installing ") + image.label();
    const QStringList arguments {QStringLiteral("--sdk_root=") + AndroidTools::sdkRoot(), image.id};
    auto installing = m_imageJob->run(title, *sdkManager, arguments);
    const ProcessResult result = co_await std::move(installing);
    if (!self)
        co_return result.isClean();
    // The user cancelled from the job's log; that needs no message.
    if (!result.isClean() && !result.cancelled)
        setError(QStringLiteral("Installing the system image failed."), failureDetails(result));
    auto loading = loadImagesTask();
    co_await std::move(loading);
    co_return result.isClean();
}
