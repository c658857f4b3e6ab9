#include "SimControl.h"

#include "Host.h"
#include "SimApk.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QUrl>

SimControl::SimControl(QObject *parent)
    : QObject(parent)
{
    reset();
}

void SimControl::reset()
{
    m_host.reset();
    m_dir = std::make_unique<QTemporaryDir>();
    m_host = std::make_unique<SimHost>(m_dir->path());
    m_host->activate();
}

SetupController *SimControl::intelSetup()
{
    const Host previous = Host::current();
    Host intel = previous;
    intel.arm64 = false;
    Host::setCurrent(intel);
    auto *setup = new SetupController(this);
    Host::setCurrent(previous);
    return setup;
}

QString SimControl::writeFile(const QString &name, const QString &content) const
{
    const QString path = m_host->root() + QLatin1Char('/') + name;
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(content.toUtf8());
    return path;
}

QString SimControl::writeApk(const QString &name, const QStringList &abis) const
{
    const QString path = m_host->root() + QLatin1Char('/') + name;
    SimApk::write(path, abis);
    return QUrl::fromLocalFile(path).toString();
}

bool SimControl::isPng(const QString &path) const
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.read(4) == QByteArray("\x89PNG");
}

QString SimControl::clipboardText() const
{
    return QGuiApplication::clipboard()->text();
}
