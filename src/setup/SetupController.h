#pragma once

#include "JobRunner.h"

#include <QObject>
#include <QString>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

#include <QCoro/QCoroTask>

#include <optional>

// Whether this Mac can run Android phones, and the installs and licence steps that make it ready.
// Nothing is installed unless one of the actions is called.
class SetupController : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes the one setup controller")
    Q_PROPERTY(bool isAppleSilicon READ isAppleSilicon NOTIFY isAppleSiliconChanged)
    Q_PROPERTY(bool brewReady READ brewReady NOTIFY brewReadyChanged)
    Q_PROPERTY(bool javaReady READ javaReady NOTIFY javaReadyChanged)
    Q_PROPERTY(QString javaNote READ javaNote NOTIFY javaReadyChanged)
    Q_PROPERTY(bool cmdlineReady READ cmdlineReady NOTIFY cmdlineReadyChanged)
    Q_PROPERTY(bool licensesAccepted READ licensesAccepted NOTIFY licensesAcceptedChanged)
    Q_PROPERTY(bool emulatorReady READ emulatorReady NOTIFY emulatorReadyChanged)
    Q_PROPERTY(bool platformToolsReady READ platformToolsReady NOTIFY platformToolsReadyChanged)
    Q_PROPERTY(QVariant licenseText READ licenseTextVariant NOTIFY licenseTextChanged)
    Q_PROPERTY(bool licenseLoading READ licenseLoading NOTIFY licenseLoadingChanged)
    Q_PROPERTY(QVariant message READ messageVariant NOTIFY messageChanged)
    Q_PROPERTY(JobRunner *job READ job CONSTANT)
    Q_PROPERTY(QString sdkRoot READ sdkRoot NOTIFY sdkRootChanged)
    // What the user does next to make the Mac ready, as the last check found it.
    Q_PROPERTY(QString nextStep READ nextStep NOTIFY changed)

public:
    // sdkmanager asks one question per licence; this many answers cover every licence it knows.
    static constexpr int licenseAnswers = 40;

    // Knows the processor at once; every other flag stays false until the first refresh().
    explicit SetupController(QObject *parent = nullptr);

    bool isAppleSilicon() const { return m_isAppleSilicon; }
    bool brewReady() const { return m_brewReady; }
    bool javaReady() const { return m_javaReady; }
    // What is wrong with the Java found when it does not count; empty otherwise.
    QString javaNote() const { return m_javaNote; }
    bool cmdlineReady() const { return m_cmdlineReady; }
    bool licensesAccepted() const { return m_licensesAccepted; }
    bool emulatorReady() const { return m_emulatorReady; }
    bool platformToolsReady() const { return m_platformToolsReady; }
    std::optional<QString> licenseText() const { return m_licenseText; }
    bool licenseLoading() const { return m_licenseLoading; }
    std::optional<QString> message() const { return m_message; }
    JobRunner *job() const { return m_job; }
    QString sdkRoot() const { return m_sdkRoot; }
    QString nextStep() const;

    // Checks every requirement again, in a fixed order, announcing each flag.
    Q_INVOKABLE void refresh();
    Q_INVOKABLE void hideLicenseText();

    Q_INVOKABLE void installJava();
    Q_INVOKABLE void installCommandLineTools();
    Q_INVOKABLE void loadLicenseText();
    Q_INVOKABLE void acceptLicenses();
    Q_INVOKABLE void installEmulator();

    // The same actions, for callers that wait for the end.
    QCoro::Task<> installJavaTask();
    QCoro::Task<> installCommandLineToolsTask();
    QCoro::Task<> loadLicenseTextTask();
    QCoro::Task<> acceptLicensesTask();
    QCoro::Task<> installEmulatorTask();

Q_SIGNALS:
    void isAppleSiliconChanged();
    void brewReadyChanged();
    void javaReadyChanged();
    void cmdlineReadyChanged();
    void licensesAcceptedChanged();
    void emulatorReadyChanged();
    void platformToolsReadyChanged();
    void licenseTextChanged();
    void licenseLoadingChanged();
    void messageChanged();
    void sdkRootChanged();
    // Any of the above, and every change of the job.
    void changed();

private:
    QCoro::Task<> brewInstallTask(QString title, QStringList arguments, QString failureText);
    // Runs one step in the job, reports a failure that was not a cancel, and checks the Mac again.
    // True when the step succeeded and the controller is still there.
    QCoro::Task<bool> jobStepTask(QString title, QString executable, QStringList arguments,
        std::optional<QString> input, QString failureText);
    static QStringList licenseArguments();
    // The licences sdkmanager printed, each with its heading, without the questions around them; empty
    // when it printed none.
    static QString licenseBlocks(const QString &text);

    QVariant licenseTextVariant() const { return m_licenseText ? QVariant(*m_licenseText) : QVariant(); }
    QVariant messageVariant() const { return m_message ? QVariant(*m_message) : QVariant(); }

    void setFlag(bool &field, bool value, void (SetupController::*notify)());
    void setLicenseText(std::optional<QString> text);
    void setLicenseLoading(bool loading);
    void setMessage(std::optional<QString> message);
    void setSdkRoot(const QString &root);

    bool m_isAppleSilicon = false;
    bool m_brewReady = false;
    bool m_javaReady = false;
    QString m_javaNote;
    bool m_cmdlineReady = false;
    bool m_licensesAccepted = false;
    bool m_emulatorReady = false;
    bool m_platformToolsReady = false;
    std::optional<QString> m_licenseText;
    bool m_licenseLoading = false;
    std::optional<QString> m_message;
    JobRunner *m_job;
    QString m_sdkRoot;
};
