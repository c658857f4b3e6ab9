#include "DialogSaveLocationChooser.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QStandardPaths>

#include <QCoro/QCoroSignal>

DialogSaveLocationChooser::DialogSaveLocationChooser(QObject *parent)
    : SaveLocationChooser(parent)
{ }

QCoro::Task<std::optional<QString>> DialogSaveLocationChooser::chooseSaveLocation(QString proposedName)
{
    // Listening starts before the request goes out, so even an answer given at once is heard.
    QPointer<DialogSaveLocationChooser> self(this);
    auto answer = qCoro(this, &DialogSaveLocationChooser::answered);
    Q_EMIT saveRequested(proposedName);
    const QString path = co_await std::move(answer);
    if (!self || path.isEmpty())
        co_return std::nullopt;
    co_return path;
}

QUrl DialogSaveLocationChooser::proposedFolder(const QString &proposedName)
{
    const auto first = proposedName.endsWith(QLatin1String(".mp4")) ? QStandardPaths::MoviesLocation
                                                                    : QStandardPaths::PicturesLocation;
    for (const auto location : {first, QStandardPaths::DesktopLocation}) {
        const QString folder = QStandardPaths::writableLocation(location);
        if (!folder.isEmpty() && QFileInfo(folder).isDir())
            return QUrl::fromLocalFile(folder);
    }
    return QUrl::fromLocalFile(QDir::homePath());
}

void DialogSaveLocationChooser::accept(const QUrl &file)
{
    Q_EMIT answered(file.isLocalFile() ? file.toLocalFile() : QString());
}

void DialogSaveLocationChooser::reject()
{
    Q_EMIT answered(QString());
}
