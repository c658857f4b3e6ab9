#include "ApkInstaller.h"

#include "AndroidTools.h"
#include "ApkArchive.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <QCoro/QCoroFuture>

#include <algorithm>

namespace {

// What an install or uninstall run has to say: why it could not start, else what adb printed.
std::optional<QString> reply(const ProcessResult &result)
{
    if (result.launchError)
        return result.launchError;
    const QString text = result.text.trimmed();
    if (text.isEmpty())
        return std::nullopt;
    return text;
}

QStringList packageNames(const QString &listing)
{
    static const QRegularExpression lineBreak(
        QStringLiteral("[\\n\\r\\x{0B}\\x{0C}\\x{85}\\x{2028}\\x{2029}]"));
    const QString prefix = QStringLiteral("package:");
    QStringList names;
    for (const QString &line : listing.split(lineBreak)) {
        const QString trimmed = line.trimmed();
        if (trimmed.startsWith(prefix))
            names.append(trimmed.mid(prefix.size()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

// A handful of names, then how many more: an archive can name thousands.
QString someOf(const QStringList &names)
{
    constexpr qsizetype shown = 5;
    if (names.size() <= shown)
        return names.join(QStringLiteral(", "));
    return names.first(shown).join(QStringLiteral(", ")) + QStringLiteral(" and ")
        + QString::number(names.size() - shown) + QStringLiteral(" more");
}

// The signature's start, and more than the signature's eight bytes.
bool isPng(const QByteArray &bytes)
{
    return bytes.size() >= 9 && bytes.startsWith(QByteArray("\x89PNG", 4));
}

ApkInstaller::Timeouts &currentTimeouts()
{
    static ApkInstaller::Timeouts timeouts;
    return timeouts;
}

} // namespace

const ApkInstaller::Timeouts &ApkInstaller::timeouts()
{
    return currentTimeouts();
}

void ApkInstaller::setTimeouts(const Timeouts &timeouts)
{
    currentTimeouts() = timeouts;
}

ApkInstaller::ApkInstaller(QObject *parent)
    : ApkInstaller(nullptr, parent)
{ }

ApkInstaller::ApkInstaller(SaveLocationChooser *chooser, QObject *parent)
    : QObject(parent)
    , m_chooser(chooser)
{
    for (auto signal :
        {&ApkInstaller::outputChanged, &ApkInstaller::busyChanged, &ApkInstaller::packagesChanged,
            &ApkInstaller::packagesNoteChanged, &ApkInstaller::latestSerialChanged})
        connect(this, signal, this, &ApkInstaller::changed);
}

void ApkInstaller::setSaveLocationChooser(SaveLocationChooser *chooser)
{
    m_chooser = chooser;
}

void ApkInstaller::install(const QList<QUrl> &urls, const QString &serial)
{
    installTask(urls, serial);
}

void ApkInstaller::refreshPackages(const QString &serial)
{
    refreshPackagesTask(serial);
}

void ApkInstaller::uninstall(const QString &package, const QString &serial)
{
    uninstallTask(package, serial);
}

void ApkInstaller::screenshot(const QString &serial)
{
    screenshotTask(serial);
}

QCoro::Task<> ApkInstaller::installTask(QList<QUrl> urls, QString serial)
{
    beginAction(serial);
    QStringList paths;
    for (const QUrl &url : std::as_const(urls)) {
        const QString path = url.path();
        if (QFileInfo(path).suffix().toLower() == QLatin1String("apk"))
            paths.append(path);
    }
    if (paths.isEmpty()) {
        log(QStringLiteral("Only .apk files can be installed."));
        co_return;
    }

    QPointer<ApkInstaller> self(this);
    setBusy(true);
    for (const QString &path : std::as_const(paths)) {
        auto installing = installOne(path, serial);
        co_await std::move(installing);
        if (!self)
            co_return;
    }
    setBusy(false);

    auto listing = refreshPackagesTask(serial);
    co_await std::move(listing);
}

QCoro::Task<bool> ApkInstaller::installOne(QString path, QString serial)
{
    QPointer<ApkInstaller> self(this);
    log(QStringLiteral("Installing ") + QFileInfo(path).fileName() + QStringLiteral("..."));
    auto checking = refusal(path, serial);
    const std::optional<QString> refused = co_await std::move(checking);
    if (!self)
        co_return false;
    if (refused) {
        log(*refused);
        co_return false;
    }
    const QStringList arguments = {QStringLiteral("install"), QStringLiteral("-r"), path};
    auto running = AndroidTools::runADB(arguments, serial, std::nullopt);
    const ProcessResult result = co_await std::move(running);
    if (!self)
        co_return false;
    const std::optional<QString> said = reply(result);
    log(said.value_or(QStringLiteral("(adb printed nothing; exit status ") + QString::number(result.status)
        + QLatin1Char(')')));
    co_return result.isClean() && said && said->endsWith(QLatin1String("Success"));
}

QCoro::Task<std::optional<QString>> ApkInstaller::refusal(QString path, QString serial)
{
    const QString file = QFileInfo(path).fileName();
    QPointer<ApkInstaller> self(this);
    // Reading the table of contents takes time in its length, which the file alone decides.
    auto reading = qCoro(ApkArchive::readInBackground(path));
    const ApkArchive archive = co_await reading.takeResult();
    if (!self)
        co_return std::nullopt;
    if (!archive.isArchive()) {
        co_return QStringLiteral(
            "Not installed: %1 is not a zip archive (%2), so it cannot be an Android app. "
            "Download it again, or ask its maker for the .apk file itself.")
            .arg(file, archive.error());
    }
    if (archive.abis().isEmpty())
        co_return std::nullopt;
    auto asking = phoneAbis(serial);
    const QStringList abis = co_await std::move(asking);
    // When the phone cannot tell, adb decides. What to do is said once, by the hint the Apps tab shows
    // for this known failure.
    if (!self || abis.isEmpty() || archive.runsOn(abis))
        co_return std::nullopt;
    co_return QStringLiteral("Not installed: %1 has native code only for %2, and this phone runs %3.")
        .arg(file, someOf(archive.abis()), someOf(abis));
}

QCoro::Task<QStringList> ApkInstaller::phoneAbis(QString serial)
{
    if (m_phoneAbis.contains(serial))
        co_return m_phoneAbis.value(serial);
    const QStringList arguments
        = {QStringLiteral("shell"), QStringLiteral("getprop"), QStringLiteral("ro.product.cpu.abilist")};
    const std::optional<double> timeout = timeouts().list;
    QPointer<ApkInstaller> self(this);
    auto running = AndroidTools::runADB(arguments, serial, timeout);
    const ProcessResult result = co_await std::move(running);
    const QStringList abis = result.text.trimmed().split(QLatin1Char(','), Qt::SkipEmptyParts);
    if (!self || !result.isClean() || abis.isEmpty())
        co_return QStringList();
    m_phoneAbis.insert(serial, abis);
    co_return abis;
}

void ApkInstaller::keepPhonesOnly(const QStringList &runningSerials)
{
    for (auto it = m_phoneAbis.begin(); it != m_phoneAbis.end();) {
        if (runningSerials.contains(it.key()))
            ++it;
        else
            it = m_phoneAbis.erase(it);
    }
}

void ApkInstaller::reinstall(const QString &package, const QString &path, const QString &serial)
{
    reinstallTask(package, path, serial);
}

QCoro::Task<> ApkInstaller::reinstallTask(QString package, QString path, QString serial)
{
    beginAction(serial);
    setBusy(true);
    QPointer<ApkInstaller> self(this);
    auto removing = removePackage(package, serial);
    const bool removed = co_await std::move(removing);
    if (!self)
        co_return;
    if (removed) {
        auto installing = installOne(path, serial);
        const bool installed = co_await std::move(installing);
        if (!self)
            co_return;
        if (installed) {
            m_fixOutcome
                = QStringLiteral("Uninstalled %1 and installed %2.").arg(package, QFileInfo(path).fileName());
            Q_EMIT outputChanged();
        }
    }
    setBusy(false);

    auto listing = refreshPackagesTask(serial);
    co_await std::move(listing);
}

QCoro::Task<> ApkInstaller::refreshPackagesTask(QString serial)
{
    // Only the apps the user installed, not the system's own.
    const QStringList arguments = {QStringLiteral("shell"), QStringLiteral("pm"), QStringLiteral("list"),
        QStringLiteral("packages"), QStringLiteral("-3")};
    const std::optional<double> timeout = timeouts().list;
    QPointer<ApkInstaller> self(this);
    auto running = AndroidTools::runADB(arguments, serial, timeout);
    const ProcessResult result = co_await std::move(running);
    if (!self)
        co_return;

    const QString text = result.text.trimmed();
    if (!result.isClean()) {
        // The previous list stays: it still describes the phone as last seen.
        QString reason = result.launchError.value_or(text);
        // A tool that failed without a word still gets a reason: how it ended.
        if (reason.isEmpty())
            reason = result.failureSummary();
        setPackagesNote(QStringLiteral("Could not list apps: ") + reason, true);
        co_return;
    }
    const QStringList names = packageNames(result.text);
    setPackages(names);
    if (!names.isEmpty())
        setPackagesNote(std::nullopt);
    else if (!text.isEmpty())
        setPackagesNote(QStringLiteral("adb said: ") + text);
    else
        setPackagesNote(QStringLiteral("No apps installed by you yet."));
}

QCoro::Task<> ApkInstaller::uninstallTask(QString package, QString serial)
{
    beginAction(serial);
    setBusy(true);
    QPointer<ApkInstaller> self(this);
    auto removing = removePackage(package, serial);
    co_await std::move(removing);
    if (!self)
        co_return;
    setBusy(false);

    auto listing = refreshPackagesTask(serial);
    co_await std::move(listing);
}

QCoro::Task<bool> ApkInstaller::removePackage(QString package, QString serial)
{
    log(QStringLiteral("Uninstalling ") + package + QStringLiteral("..."));
    const QStringList arguments = {QStringLiteral("uninstall"), package};
    const std::optional<double> timeout = timeouts().uninstall;
    QPointer<ApkInstaller> self(this);
    auto running = AndroidTools::runADB(arguments, serial, timeout);
    const ProcessResult result = co_await std::move(running);
    if (!self)
        co_return false;
    log(reply(result).value_or(QStringLiteral("(no output)")));
    co_return result.isClean();
}

QCoro::Task<> ApkInstaller::screenshotTask(QString serial)
{
    beginAction(serial);
    setBusy(true);
    const QStringList arguments
        = {QStringLiteral("exec-out"), QStringLiteral("screencap"), QStringLiteral("-p")};
    const std::optional<double> timeout = timeouts().screenshot;
    QPointer<ApkInstaller> self(this);
    auto running = AndroidTools::runADB(arguments, serial, timeout);
    const ProcessResult result = co_await std::move(running);
    if (!self)
        co_return;
    setBusy(false);

    // Only the bytes tell whether a picture came back: screencap's exit status is not reliable.
    if (result.launchError || !isPng(result.stdoutData)) {
        log(QStringLiteral("Screenshot failed: ") + result.launchError.value_or(result.text.trimmed()));
        co_return;
    }
    if (!m_chooser)
        co_return;
    const QString proposedName = QStringLiteral("Android Screenshot.png");
    auto choosing = m_chooser->chooseSaveLocation(proposedName);
    const std::optional<QString> path = co_await std::move(choosing);
    if (!self || !path)
        co_return;
    saveScreenshot(*path, result.stdoutData);
}

void ApkInstaller::saveScreenshot(const QString &path, const QByteArray &png)
{
    // A plain write over any file of that name: the user already agreed to replace it.
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(png) != png.size()
        || !file.flush()) {
        log(QStringLiteral("Could not save the screenshot: ") + file.errorString());
        return;
    }
    file.close();
    log(QStringLiteral("Saved screenshot to ") + QFileInfo(path).fileName() + QLatin1Char('.'));
}

void ApkInstaller::log(const QString &message)
{
    if (!m_output.isEmpty())
        m_output += QLatin1Char('\n');
    m_output += message;
    if (!m_latestOutput.isEmpty())
        m_latestOutput += QLatin1Char('\n');
    m_latestOutput += message;
    Q_EMIT outputChanged();
}

void ApkInstaller::beginAction(const QString &serial)
{
    m_latestOutput.clear();
    m_fixOutcome.clear();
    m_latestSerial = serial;
    Q_EMIT latestSerialChanged();
    Q_EMIT outputChanged();
}

void ApkInstaller::setBusy(bool busy)
{
    m_busy = busy;
    Q_EMIT busyChanged();
}

void ApkInstaller::setPackages(const QStringList &packages)
{
    m_packages = packages;
    Q_EMIT packagesChanged();
}

void ApkInstaller::setPackagesNote(std::optional<QString> note, bool outOfDate)
{
    m_packagesNote = std::move(note);
    m_packagesOutOfDate = outOfDate;
    Q_EMIT packagesNoteChanged();
}
