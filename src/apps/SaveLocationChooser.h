#pragma once

#include <QObject>
#include <QString>

#include <QCoro/QCoroTask>

#include <optional>

// Asks the user where a file should be saved: a screenshot or a screen recording.
class SaveLocationChooser : public QObject
{
    Q_OBJECT

public:
    explicit SaveLocationChooser(QObject *parent = nullptr);

    // The chosen file's path, or none when the user cancelled.
    virtual QCoro::Task<std::optional<QString>> chooseSaveLocation(QString proposedName) = 0;
};
