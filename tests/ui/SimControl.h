#pragma once

#include "ApkInstaller.h"
#include "PhoneStore.h"
#include "SetupController.h"
#include "SimHost.h"

#include <QObject>
#include <QTemporaryDir>

#include <memory>

// Lets QML tests and the screen gallery lay out a fresh simulated Mac and tell its tools what to do.
class SimControl : public QObject
{
    Q_OBJECT

public:
    explicit SimControl(QObject *parent = nullptr);

    SimHost &host() { return *m_host; }

    // A fresh temporary Mac with nothing installed, made the current host.
    Q_INVOKABLE void reset();
    Q_INVOKABLE void setTimeScale(double scale) { m_host->setTimeScale(scale); }
    Q_INVOKABLE void installBrew() { m_host->installBrew(); }
    Q_INVOKABLE void installJava() { m_host->installJava(); }
    Q_INVOKABLE void installCommandLineTools() { m_host->installCommandLineTools(); }
    Q_INVOKABLE void acceptLicenses() { m_host->acceptLicenses(); }
    Q_INVOKABLE void installSystemImage(const QString &id) { m_host->installSystemImage(id); }
    Q_INVOKABLE void makeReady() { m_host->makeReady(); }
    Q_INVOKABLE void createPhone(const QString &name) { m_host->createPhone(name); }
    // Starts a phone's emulator as another program would, and returns its serial once it has booted.
    Q_INVOKABLE QString startPhone(const QString &name, int port = 5554)
    {
        return m_host->startPhone(name, port);
    }
    Q_INVOKABLE void setBehaviour(const QString &key, const QString &value = QStringLiteral("1"))
    {
        m_host->setBehaviour(key, value.toUtf8());
    }
    Q_INVOKABLE void clearBehaviour(const QString &key) { m_host->clearBehaviour(key); }
    Q_INVOKABLE QString root() const { return m_host->root(); }
    // Writes a file below the root and returns its path.
    Q_INVOKABLE QString writeFile(const QString &name, const QString &content) const;
    // Writes a real .apk below the root, with native code for these ABIs, and returns its file URL.
    Q_INVOKABLE QString writeApk(const QString &name, const QStringList &abis = {}) const;
    Q_INVOKABLE bool isPng(const QString &path) const;
    Q_INVOKABLE QString clipboardText() const;
    Q_INVOKABLE QString sdkRoot() const { return m_host->sdkRoot(); }
    // A setup controller for a Mac whose arm64 answer is false; owned by this object.
    Q_INVOKABLE SetupController *intelSetup();
    // A phone store that has never seen a phone; owned by this object.
    Q_INVOKABLE PhoneStore *freshStore() { return new PhoneStore(this); }
    // An APK installer with an empty log; owned by this object.
    Q_INVOKABLE ApkInstaller *freshInstaller() { return new ApkInstaller(this); }

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SimHost> m_host;
};
