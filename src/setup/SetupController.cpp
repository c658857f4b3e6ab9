#include "SetupController.h"

#include "AndroidTools.h"
#include "Host.h"
#include "ToolRunner.h"

#include <QFileInfo>
#include <QPointer>
#include <QRegularExpression>

namespace {

const QString sdkManagerMissing = QStringLiteral("sdkmanager was not found.");

// Why the Java the tools would be given cannot run them, or empty: they need Java 17 or newer, and on
// Apple silicon one built for it. sdkmanager on an Intel Java runs under Rosetta and fetches the Intel
// emulator, which cannot start arm64 phones.
QString javaProblem()
{
    const auto home = AndroidTools::javaHome();
    if (!home)
        return QString();
    const AndroidTools::JavaRelease release = AndroidTools::javaRelease(*home);
    if (release.version == 0)
        return QStringLiteral("Java found, but it does not say which version; the Android tools need 17");
    if (release.version < 17)
        return QStringLiteral("Java %1 found; the Android tools need 17").arg(release.version);
    if (release.arch != QLatin1String("aarch64"))
        return QStringLiteral("Java %1 for Intel found; the Android tools need one for Apple silicon")
            .arg(release.version);
    return QString();
}

} // namespace

SetupController::SetupController(QObject *parent)
    : QObject(parent)
    , m_isAppleSilicon(Host::current().arm64)
    , m_job(new JobRunner(this))
    , m_sdkRoot(AndroidTools::sdkRoot())
{
    for (auto signal : {&SetupController::isAppleSiliconChanged, &SetupController::brewReadyChanged,
             &SetupController::javaReadyChanged, &SetupController::cmdlineReadyChanged,
             &SetupController::licensesAcceptedChanged, &SetupController::emulatorReadyChanged,
             &SetupController::platformToolsReadyChanged, &SetupController::licenseTextChanged,
             &SetupController::licenseLoadingChanged, &SetupController::messageChanged,
             &SetupController::sdkRootChanged})
        connect(this, signal, this, &SetupController::changed);
    // With the controller as context, the connection ends with the controller.
    connect(m_job, &JobRunner::changed, this, &SetupController::changed);
}

void SetupController::refresh()
{
    setFlag(m_isAppleSilicon, Host::current().arm64, &SetupController::isAppleSiliconChanged);
    setFlag(m_brewReady, AndroidTools::brewPath().has_value(), &SetupController::brewReadyChanged);
    m_javaNote = javaProblem();
    setFlag(
        m_javaReady, AndroidTools::javaHome() && m_javaNote.isEmpty(), &SetupController::javaReadyChanged);
    setFlag(m_cmdlineReady, AndroidTools::sdkManager() && AndroidTools::avdManager(),
        &SetupController::cmdlineReadyChanged);
    // Any file at the marker's place counts; sdkmanager owns what is in it.
    setFlag(m_licensesAccepted, QFileInfo::exists(AndroidTools::licenseFile()),
        &SetupController::licensesAcceptedChanged);
    setFlag(
        m_emulatorReady, AndroidTools::emulatorPath().has_value(), &SetupController::emulatorReadyChanged);
    setFlag(m_platformToolsReady, AndroidTools::adbPath().has_value(),
        &SetupController::platformToolsReadyChanged);
    setSdkRoot(AndroidTools::sdkRoot());
}

QString SetupController::nextStep() const
{
    if (!m_brewReady)
        return QStringLiteral(
            "Next: install Homebrew from its web site (Get Homebrew), then come back here.");
    if (!m_javaReady)
        return QStringLiteral("Next: press Install Java.");
    if (!m_cmdlineReady)
        return QStringLiteral("Next: press Install tools.");
    if (!m_licensesAccepted)
        return QStringLiteral("Next: read the SDK licenses (Show license text) and accept them.");
    if (!m_emulatorReady || !m_platformToolsReady)
        return QStringLiteral("Next: press Install the emulator.");
    return QStringLiteral("Everything is ready. Create a phone on the Phones tab.");
}

void SetupController::hideLicenseText()
{
    setLicenseText(std::nullopt);
}

void SetupController::installJava()
{
    installJavaTask();
}

void SetupController::installCommandLineTools()
{
    installCommandLineToolsTask();
}

void SetupController::loadLicenseText()
{
    loadLicenseTextTask();
}

void SetupController::acceptLicenses()
{
    acceptLicensesTask();
}

void SetupController::installEmulator()
{
    installEmulatorTask();
}

QCoro::Task<> SetupController::installJavaTask()
{
    return brewInstallTask(QStringLiteral("Installing Java (OpenJDK 17)"),
        {QStringLiteral("install"), QStringLiteral("openjdk@17")},
        QStringLiteral("Java install failed. See the log for details."));
}

QCoro::Task<> SetupController::installCommandLineToolsTask()
{
    return brewInstallTask(QStringLiteral("Installing Android command line tools"),
        {QStringLiteral("install"), QStringLiteral("--cask"), QStringLiteral("android-commandlinetools")},
        QStringLiteral("Command line tools install failed. See the log for details."));
}

QCoro::Task<> SetupController::brewInstallTask(QString title, QStringList arguments, QString failureText)
{
    const auto brew = AndroidTools::brewPath();
    if (!brew) {
        setMessage(QStringLiteral("Homebrew is needed first."));
        co_return;
    }
    setMessage(std::nullopt);
    auto step = jobStepTask(title, *brew, arguments, std::nullopt, failureText);
    co_await std::move(step);
}

QCoro::Task<bool> SetupController::jobStepTask(QString title, QString executable, QStringList arguments,
    std::optional<QString> input, QString failureText)
{
    QPointer<SetupController> self(this);
    auto running = m_job->run(title, executable, arguments, input);
    const ProcessResult result = co_await std::move(running);
    if (!self)
        co_return false;
    if (!result.isClean() && !result.cancelled)
        setMessage(failureText);
    refresh();
    co_return result.isClean();
}

QCoro::Task<> SetupController::loadLicenseTextTask()
{
    const auto sdkManager = AndroidTools::sdkManager();
    if (!sdkManager) {
        setMessage(sdkManagerMissing);
        co_return;
    }
    if (!AndroidTools::javaHome()) {
        setMessage(QStringLiteral("Install Java first."));
        co_return;
    }
    AndroidTools::ensureSDKFolder();
    setLicenseLoading(true);
    setMessage(std::nullopt);

    // Refusing every question makes sdkmanager print each licence and accept none.
    const std::optional<QString> input = QStringLiteral("n\n").repeated(licenseAnswers);
    const QString executable = *sdkManager;
    const QStringList arguments = licenseArguments();
    const QProcessEnvironment environment = AndroidTools::environment();
    QPointer<SetupController> self(this);
    auto running = ToolRunner::run(executable, arguments, environment, std::nullopt, input);
    const ProcessResult result = co_await std::move(running);
    if (!self)
        co_return;

    setLicenseLoading(false);
    if (result.launchError) {
        setMessage(*result.launchError);
        co_return;
    }
    // A run that failed after printing licences still shows them. One that names no licence failed before
    // it got to them (no Java, say): that is no text to accept.
    const QString text = result.text.trimmed();
    static const QRegularExpression licence(
        QStringLiteral("\\blicen[cs]e"), QRegularExpression::CaseInsensitiveOption);
    if (!result.isClean() && !licence.match(text).hasMatch()) {
        setMessage(QStringLiteral("Showing the licenses failed: ")
            + (text.isEmpty() ? result.failureSummary() : text));
        co_return;
    }
    const QString licences = licenseBlocks(text);
    setLicenseText(text.isEmpty() ? QStringLiteral("sdkmanager printed no license text.")
            : licences.isEmpty()  ? text
                                  : licences);
}

QString SetupController::licenseBlocks(const QString &text)
{
    // What sdkmanager prints around the licences (its catalog progress, the question whether to review
    // them, each "Accept?" and the count it was refused) stays in the tool's output.
    static const QRegularExpression heading(QStringLiteral("^(?:\\d+/\\d+: )?(License \\S+:)\\s*$"));
    static const QRegularExpression rule(QStringLiteral("^-{10,}\\s*$"));
    static const QRegularExpression lineBreak(QStringLiteral("\\r\\n|\\r|\\n"));
    const QStringList lines = text.split(lineBreak);
    qsizetype first = -1;
    qsizetype last = -1;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (first < 0 && heading.match(lines[i]).hasMatch())
            first = i;
        else if (first >= 0 && rule.match(lines[i]).hasMatch())
            last = i;
    }
    if (first < 0)
        return QString();
    if (last < 0)
        last = lines.size() - 1;
    QStringList kept;
    for (qsizetype i = first; i <= last; ++i) {
        if (lines[i].startsWith(QLatin1String("Accept? (y/N)")))
            continue;
        if (const auto match = heading.match(lines[i]); match.hasMatch()) {
            if (!kept.isEmpty())
                kept.append(QString());
            kept.append(match.captured(1));
        } else {
            kept.append(lines[i]);
        }
    }
    return kept.join(QLatin1Char('\n')).trimmed();
}

QCoro::Task<> SetupController::acceptLicensesTask()
{
    const auto sdkManager = AndroidTools::sdkManager();
    if (!sdkManager) {
        setMessage(sdkManagerMissing);
        co_return;
    }
    AndroidTools::ensureSDKFolder();

    // The earlier message stays visible while the licences are accepted.
    auto step = jobStepTask(QStringLiteral("Accepting SDK licenses"), *sdkManager, licenseArguments(),
        QStringLiteral("y\n").repeated(licenseAnswers),
        QStringLiteral("Accepting licenses failed. See the log for details."));
    if (co_await std::move(step))
        setLicenseText(std::nullopt);
}

QCoro::Task<> SetupController::installEmulatorTask()
{
    const auto sdkManager = AndroidTools::sdkManager();
    if (!sdkManager) {
        setMessage(sdkManagerMissing);
        co_return;
    }
    AndroidTools::ensureSDKFolder();
    setMessage(std::nullopt);

    const QStringList arguments = {QStringLiteral("--sdk_root=") + AndroidTools::sdkRoot(),
        QStringLiteral("emulator"), QStringLiteral("platform-tools")};
    auto step = jobStepTask(QStringLiteral("Installing emulator and platform tools"), *sdkManager, arguments,
        std::nullopt, QStringLiteral("Install failed. See the log for details."));
    co_await std::move(step);
}

QStringList SetupController::licenseArguments()
{
    return {QStringLiteral("--sdk_root=") + AndroidTools::sdkRoot(), QStringLiteral("--licenses")};
}

void SetupController::setFlag(bool &field, bool value, void (SetupController::*notify)())
{
    field = value;
    Q_EMIT(this->*notify)();
}

void SetupController::setLicenseText(std::optional<QString> text)
{
    m_licenseText = std::move(text);
    Q_EMIT licenseTextChanged();
}

void SetupController::setLicenseLoading(bool loading)
{
    m_licenseLoading = loading;
    Q_EMIT licenseLoadingChanged();
}

void SetupController::setMessage(std::optional<QString> message)
{
    m_message = std::move(message);
    Q_EMIT messageChanged();
}

void SetupController::setSdkRoot(const QString &root)
{
    m_sdkRoot = root;
    Q_EMIT sdkRootChanged();
}
