#include "DialogSaveLocationChooser.h"

#include <QPointer>

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

void DialogSaveLocationChooser::accept(const QUrl &file)
{
    Q_EMIT answered(file.isLocalFile() ? file.toLocalFile() : QString());
}

void DialogSaveLocationChooser::reject()
{
    Q_EMIT answered(QString());
}
