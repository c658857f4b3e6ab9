#pragma once

#include "SaveLocationChooser.h"

#include <QUrl>
#include <QtQml/qqmlregistration.h>

// Lets the window's save dialog answer: a request goes out as saveRequested(), and the dialog answers
// with accept() or reject().
class DialogSaveLocationChooser : public SaveLocationChooser
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes the one save dialog chooser")

public:
    explicit DialogSaveLocationChooser(QObject *parent = nullptr);

    QCoro::Task<std::optional<QString>> chooseSaveLocation(QString proposedName) override;

    // Where the dialog opens: the user's Pictures folder (Movies for a movie), else the Desktop, else the
    // home folder; never the process's working folder, which for an app started from the Finder is "/".
    Q_INVOKABLE static QUrl proposedFolder(const QString &proposedName = {});

    Q_INVOKABLE void accept(const QUrl &file);
    Q_INVOKABLE void reject();

Q_SIGNALS:
    // The window shows its save dialog, offering only files of the proposed name's type (PNG or MPEG-4).
    void saveRequested(const QString &proposedName);
    // The dialog's answer: the chosen path, or empty when it was cancelled.
    void answered(const QString &path);
};
