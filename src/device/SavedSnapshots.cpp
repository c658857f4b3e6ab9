#include "SavedSnapshots.h"

#include "DiskUsage.h"

#include <QDir>
#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>

#include <QCoro/QCoroFuture>

void SavedSnapshots::setPhoneFolder(const QString &folder)
{
    if (folder == m_phoneFolder)
        return;
    m_phoneFolder = folder;
    Q_EMIT phoneFolderChanged();
    refresh();
}

void SavedSnapshots::refresh()
{
    refreshTask();
}

QCoro::Task<> SavedSnapshots::refreshTask()
{
    QPointer<SavedSnapshots> self(this);
    const quint64 reading = ++m_readings;
    auto measuring = QtConcurrent::run(&SavedSnapshots::measure, m_phoneFolder);
    QVariantList measured = co_await std::move(measuring);
    if (!self || reading != m_readings)
        co_return;
    m_snapshots = std::move(measured);
    Q_EMIT snapshotsChanged();
}

QVariantList SavedSnapshots::measure(const QString &phoneFolder)
{
    QVariantList found;
    if (phoneFolder.isEmpty())
        return found;
    const QDir snapshots(phoneFolder + QStringLiteral("/snapshots"));
    for (const QString &name : snapshots.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        found.append(QVariantMap {{QStringLiteral("name"), name},
            {QStringLiteral("bytes"), DiskUsage::allocatedBytes(snapshots.filePath(name))}});
    }
    return found;
}
