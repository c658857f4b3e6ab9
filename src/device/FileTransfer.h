#pragma once

#include "DeviceFeature.h"

#include <QList>
#include <QUrl>

// Copies files to a running phone's Download folder and opens links on it.
class FileTransfer : public DeviceFeature
{
    Q_OBJECT
    QML_ELEMENT
    // The file being copied, or empty.
    Q_PROPERTY(QString currentFile READ currentFile NOTIFY progressChanged)
    // 0 to 100 while a file is copied, as adb tells it.
    Q_PROPERTY(int percent READ percent NOTIFY progressChanged)

public:
    // Where a dropped file goes on the phone.
    static constexpr const char *downloadFolder = "/sdcard/Download/";

    using DeviceFeature::DeviceFeature;

    QString currentFile() const { return m_currentFile; }
    int percent() const { return m_percent; }

    // The last percentage in adb push's progress ("[ 42%] /sdcard/..."), or -1 when there is none.
    static int lastPercent(const QString &output);

    Q_INVOKABLE void push(const QList<QUrl> &files);
    Q_INVOKABLE void openLink(const QString &link);

    QCoro::Task<> pushTask(QList<QUrl> files);
    QCoro::Task<> openLinkTask(QString link);

Q_SIGNALS:
    void progressChanged();

private:
    void setProgress(const QString &file, int percent);

    QString m_currentFile;
    int m_percent = 0;
};
