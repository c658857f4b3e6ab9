#include "PhoneStore.h"

#include "AndroidParsers.h"
#include "AndroidTools.h"
#include "ToolRunner.h"

#include <QPointer>
#include <QRegularExpression>

#include <algorithm>

namespace {

template <typename T> QVariantList toVariants(const QList<T> &values)
{
    QVariantList variants;
    variants.reserve(values.size());
    for (const T &value : values)
        variants.append(QVariant::fromValue(value));
    return variants;
}

QVariant toVariant(const std::optional<QString> &text)
{
    return text ? QVariant(*text) : QVariant();
}

// Anything besides the tool's own heading and separator lines.
bool holdsUnexpectedLines(const QString &text)
{
    // Every kind of line break counts, so a heading cannot hide what follows a lone carriage return.
    static const QRegularExpression lineBreak(QStringLiteral("\\R"));
    const QStringList lines = text.split(lineBreak);
    return std::any_of(lines.begin(), lines.end(), [](const QString &line) {
        const QString trimmed = line.trimmed();
        return !trimmed.isEmpty() && !trimmed.startsWith(QLatin1String("Available Android"))
            && !trimmed.startsWith(QLatin1String("---"));
    });
}

PhoneStore::Timeouts &currentTimeouts()
{
    static PhoneStore::Timeouts timeouts;
    return timeouts;
}

// Sets or removes a phone's entry of a by-name map; true when that changed the map.
bool setEntry(QVariantMap &map, const QString &name, const std::optional<QString> &text)
{
    if (text) {
        map.insert(name, *text);
        return true;
    }
    return map.remove(name) > 0;
}

} // namespace

const PhoneStore::Timeouts &PhoneStore::timeouts()
{
    return currentTimeouts();
}

void PhoneStore::setTimeouts(const Timeouts &timeouts)
{
    currentTimeouts() = timeouts;
}

PhoneStore::PhoneStore(QObject *parent)
    : QObject(parent)
    , m_imageJob(new JobRunner(this))
    , m_diskUse(new PhoneDiskUse(this))
    , m_elsewhere(new PhonesElsewhere([this] { return ourPorts(); }, this))
{
    for (auto signal : {&PhoneStore::phonesChanged, &PhoneStore::devicesChanged, &PhoneStore::imagesChanged,
             &PhoneStore::isLoadingChanged, &PhoneStore::imagesLoadingChanged,
             &PhoneStore::devicesLoadingChanged, &PhoneStore::rawPhoneListingChanged,
             &PhoneStore::rawDeviceListingChanged, &PhoneStore::rawImageListingChanged,
             &PhoneStore::errorSummaryChanged, &PhoneStore::errorDetailsChanged,
             &PhoneStore::lockedPhonesChanged, &PhoneStore::refusalsChanged,
             &PhoneStore::installingImageChanged, &PhoneStore::fixesChanged})
        connect(this, signal, this, &PhoneStore::changed);
    // With the store as context, the connections end with the store and never keep it alive.
    connect(m_imageJob, &JobRunner::changed, this, &PhoneStore::changed);
    connect(m_diskUse, &PhoneDiskUse::changed, this, &PhoneStore::changed);
    connect(m_elsewhere, &PhonesElsewhere::changed, this, &PhoneStore::runnersChanged);
    connect(m_elsewhere, &PhonesElsewhere::changed, this, &PhoneStore::changed);
    connect(
        m_elsewhere, &PhonesElsewhere::stopFailed, this, [this](const QString &name, const QString &details) {
            setError(QStringLiteral("Could not stop ") + name + QStringLiteral("."), details);
        });
}

EmulatorProcess *PhoneStore::runner(const QString &name)
{
    if (EmulatorProcess *existing = m_runners.value(name))
        return existing;
    auto *made = new EmulatorProcess(name, this);
    connect(made, &EmulatorProcess::changed, this, &PhoneStore::changed);
    connect(made, &EmulatorProcess::stateChanged, this, &PhoneStore::runnersChanged);
    connect(made, &EmulatorProcess::stateChanged, this, [this, made] { runnerStateChanged(made); });
    m_runners.insert(name, made);
    Q_EMIT runnersChanged();
    Q_EMIT changed();
    return made;
}

void PhoneStore::removeRunner(const QString &name)
{
    EmulatorProcess *removed = m_runners.take(name);
    if (!removed)
        return;
    removed->disconnect(this);
    // Whoever still holds the runner for the moment keeps a valid object until control returns to
    // the event loop.
    removed->deleteLater();
    Q_EMIT runnersChanged();
    Q_EMIT changed();
}

QList<EmulatorProcess *> PhoneStore::allRunners() const
{
    return m_runners.values();
}

QList<EmulatorProcess *> PhoneStore::runningRunners() const
{
    QList<EmulatorProcess *> running;
    for (EmulatorProcess *runner : m_runners) {
        if (runner->state() == EmulatorProcess::State::Running)
            running.append(runner);
    }
    return running;
}

QVariantList PhoneStore::runningTargets() const
{
    QList<std::pair<QString, QString>> targets;
    for (auto phone = m_elsewhere->phones().begin(); phone != m_elsewhere->phones().end(); ++phone) {
        for (const QString &serial : phone.value())
            targets.append({phone.key(), serial});
    }
    for (EmulatorProcess *runner : runningRunners())
        targets.append({runner->name(), runner->serial()});
    std::sort(targets.begin(), targets.end());
    QVariantList list;
    for (const auto &[name, serial] : std::as_const(targets))
        list.append(QVariantMap {{QStringLiteral("name"), name}, {QStringLiteral("serial"), serial}});
    return list;
}

QSet<int> PhoneStore::ourPorts() const
{
    QSet<int> ports;
    for (EmulatorProcess *runner : m_runners) {
        if (runner->state() != EmulatorProcess::State::Stopped)
            ports.insert(runner->port());
    }
    return ports;
}

int PhoneStore::consolePort(const QSet<int> &busy)
{
    int port = firstConsolePort;
    while (busy.contains(port) && port < lastConsolePort)
        port += 2;
    return port;
}

void PhoneStore::start(const QString &name, const StartOptions &options)
{
    EmulatorProcess *phone = runner(name);
    if (phone->state() != EmulatorProcess::State::Stopped)
        return;
    if (const QStringList serials = m_elsewhere->phones().value(name); !serials.isEmpty()) {
        setRefusal(name,
            QStringLiteral("%1 is already running outside Tolvane (%2).")
                .arg(name, serials.join(QStringLiteral(", "))));
        return;
    }
    const auto emulator = AndroidTools::emulatorPath();
    if (!emulator) {
        setError(QStringLiteral("The emulator is not installed."),
            QStringLiteral("Install the emulator on the Setup tab first."));
        return;
    }
    setRefusal(name, std::nullopt);
    setFix(m_fixOutcomes, name, std::nullopt);
    phone->start(*emulator, consolePort(ourPorts() + m_elsewhere->ports()), options);
}

void PhoneStore::setRefusal(const QString &name, std::optional<QString> why)
{
    if (setEntry(m_refusals, name, why))
        Q_EMIT refusalsChanged();
}

void PhoneStore::setInstallingImage(bool installing)
{
    m_installingImage = installing;
    Q_EMIT installingImageChanged();
}

void PhoneStore::setFix(QVariantMap &fixes, const QString &name, std::optional<QString> text)
{
    if (setEntry(fixes, name, text))
        Q_EMIT fixesChanged();
}

void PhoneStore::dismissError()
{
    setError(std::nullopt, QString());
}

void PhoneStore::refresh()
{
    refreshTask();
}

void PhoneStore::loadDevices()
{
    loadDevicesTask();
}

void PhoneStore::loadImages()
{
    loadImagesTask();
}

QCoro::Task<> PhoneStore::refreshTask()
{
    const auto avdManager = AndroidTools::avdManager();
    if (!avdManager) {
        setPhones({});
        setRawPhoneListing(std::nullopt);
        co_return;
    }
    QPointer<PhoneStore> self(this);
    setLoading(true);
    const QStringList arguments {QStringLiteral("list"), QStringLiteral("avd")};
    auto listing = ToolRunner::run(*avdManager, arguments, AndroidTools::environment(), timeouts().list);
    const ProcessResult result = co_await std::move(listing);
    if (!self)
        co_return;
    setLoading(false);
    if (!result.isClean()) {
        setError(QStringLiteral("Could not list phones. ") + result.failureSummary(), failureDetails(result));
        co_return;
    }

    setPhones(AndroidParsers::parseAVDs(result.text));
    for (const AVDInfo &phone : std::as_const(m_phones))
        runner(phone.name);
    // An empty report of the tool is no phones; anything else without a phone is text the parser
    // could not read, shown as it came.
    if (m_phones.isEmpty() && holdsUnexpectedLines(result.text))
        setRawPhoneListing(result.text.trimmed());
    else
        setRawPhoneListing(std::nullopt);
    // The disk is read on another thread meanwhile.
    auto reading = m_diskUse->readTask(m_phones);
    // Which phones run elsewhere decides which leftover locks are stale.
    auto lookingElsewhere = m_elsewhere->scanTask();
    co_await std::move(lookingElsewhere);
    if (!self)
        co_return;
    QStringList names;
    for (const AVDInfo &phone : std::as_const(m_phones))
        names.append(phone.name);
    checkLocks(names);
    co_await std::move(reading);
}

QCoro::Task<> PhoneStore::loadDevicesTask()
{
    const auto avdManager = AndroidTools::avdManager();
    if (!avdManager)
        co_return;
    QPointer<PhoneStore> self(this);
    setDevicesLoading(true);
    const QStringList arguments {QStringLiteral("list"), QStringLiteral("device")};
    auto listing = ToolRunner::run(*avdManager, arguments, AndroidTools::environment(), timeouts().list);
    const ProcessResult result = co_await std::move(listing);
    if (!self)
        co_return;
    setDevicesLoading(false);
    if (!result.isClean()) {
        setCatalogFailure(m_deviceFailure,
            Failure {QStringLiteral("Could not list phone models. ") + result.failureSummary(),
                failureDetails(result)});
        co_return;
    }
    setCatalogFailure(m_deviceFailure, std::nullopt);

    const QList<DeviceDef> parsed = AndroidParsers::parseDevices(result.text);
    QList<DeviceDef> pixels;
    std::copy_if(parsed.begin(), parsed.end(), std::back_inserter(pixels),
        [](const DeviceDef &device) { return device.id.startsWith(QLatin1String("pixel")); });
    setDevices(pixels.isEmpty() ? parsed : pixels);
    setRawDeviceListing(m_devices.isEmpty() ? std::optional(result.text.trimmed()) : std::nullopt);
}

QCoro::Task<> PhoneStore::loadImagesTask()
{
    const auto sdkManager = AndroidTools::sdkManager();
    if (!sdkManager)
        co_return;
    QPointer<PhoneStore> self(this);
    AndroidTools::ensureSDKFolder();
    setImagesLoading(true);
    const QStringList arguments {
        QStringLiteral("--sdk_root=") + AndroidTools::sdkRoot(), QStringLiteral("--list")};
    auto listing = ToolRunner::run(*sdkManager, arguments, AndroidTools::environment(), timeouts().imageList);
    const ProcessResult result = co_await std::move(listing);
    if (!self)
        co_return;
    setImagesLoading(false);
    if (!result.isClean()) {
        setCatalogFailure(m_imageFailure,
            Failure {QStringLiteral("Could not list Android versions. ") + result.failureSummary(),
                failureDetails(result)});
        co_return;
    }
    setCatalogFailure(m_imageFailure, std::nullopt);

    setImages(AndroidParsers::parseImages(result.text));
    setRawImageListing(m_images.isEmpty() ? std::optional(result.text.trimmed()) : std::nullopt);
    auto reading = m_diskUse->readTask(m_phones);
    co_await std::move(reading);
}

QString PhoneStore::failureDetails(const ProcessResult &result)
{
    return result.launchError.value_or(result.text);
}

QVariantList PhoneStore::phonesVariant() const
{
    return toVariants(m_phones);
}

QVariantList PhoneStore::devicesVariant() const
{
    return toVariants(m_devices);
}

QVariantList PhoneStore::imagesVariant() const
{
    return toVariants(m_images);
}

QVariant PhoneStore::rawPhoneListingVariant() const
{
    return toVariant(m_rawPhoneListing);
}

QVariant PhoneStore::rawDeviceListingVariant() const
{
    return toVariant(m_rawDeviceListing);
}

QVariant PhoneStore::rawImageListingVariant() const
{
    return toVariant(m_rawImageListing);
}

QVariant PhoneStore::errorSummaryVariant() const
{
    return toVariant(m_errorSummary);
}

void PhoneStore::setPhones(const QList<AVDInfo> &phones)
{
    m_phones = phones;
    Q_EMIT phonesChanged();
}

void PhoneStore::setDevices(const QList<DeviceDef> &devices)
{
    m_devices = devices;
    Q_EMIT devicesChanged();
}

void PhoneStore::setImages(const QList<SystemImage> &images)
{
    m_images = images;
    Q_EMIT imagesChanged();
}

void PhoneStore::setLoading(bool loading)
{
    m_isLoading = loading;
    Q_EMIT isLoadingChanged();
}

void PhoneStore::setImagesLoading(bool loading)
{
    m_imagesLoading = loading;
    Q_EMIT imagesLoadingChanged();
}

void PhoneStore::setDevicesLoading(bool loading)
{
    m_devicesLoading = loading;
    Q_EMIT devicesLoadingChanged();
}

void PhoneStore::setRawPhoneListing(std::optional<QString> text)
{
    m_rawPhoneListing = std::move(text);
    Q_EMIT rawPhoneListingChanged();
}

void PhoneStore::setRawDeviceListing(std::optional<QString> text)
{
    m_rawDeviceListing = std::move(text);
    Q_EMIT rawDeviceListingChanged();
}

void PhoneStore::setRawImageListing(std::optional<QString> text)
{
    m_rawImageListing = std::move(text);
    Q_EMIT rawImageListingChanged();
}

void PhoneStore::setError(std::optional<QString> summary, const QString &details)
{
    m_errorSummary = std::move(summary);
    Q_EMIT errorSummaryChanged();
    m_errorDetails = details;
    Q_EMIT errorDetailsChanged();
}

void PhoneStore::setCatalogFailure(std::optional<Failure> &kind, std::optional<Failure> failure)
{
    if (failure)
        setError(failure->summary, failure->details);
    kind = std::move(failure);
    Q_EMIT catalogFailureChanged();
}

const std::optional<PhoneStore::Failure> &PhoneStore::catalogFailure() const
{
    return m_deviceFailure ? m_deviceFailure : m_imageFailure;
}

QVariant PhoneStore::catalogFailureVariant() const
{
    return catalogFailure() ? QVariant(catalogFailure()->summary) : QVariant();
}

QString PhoneStore::catalogFailureDetails() const
{
    return catalogFailure() ? catalogFailure()->details : QString();
}
