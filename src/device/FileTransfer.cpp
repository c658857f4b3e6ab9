#include "FileTransfer.h"

#include "AndroidTools.h"
#include "PhoneShell.h"
#include "ToolRunner.h"

#include <QFileInfo>
#include <QPointer>
#include <QRegularExpression>

int FileTransfer::lastPercent(const QString &output)
{
    static const QRegularExpression progress(QStringLiteral("\\[\\s*(\\d{1,3})%\\]"));
    int percent = -1;
    for (auto it = progress.globalMatch(output); it.hasNext();)
        percent = it.next().captured(1).toInt();
    return percent;
}

void FileTransfer::push(const QList<QUrl> &files)
{
    pushTask(files);
}

void FileTransfer::openLink(const QString &link)
{
    openLinkTask(link);
}

QCoro::Task<> FileTransfer::pushTask(QList<QUrl> files)
{
    const auto adb = AndroidTools::adbPath();
    if (!adb) {
        report(QStringLiteral(
                   "adb was not found. Install the emulator and platform tools on the Setup tab first."),
            true);
        co_return;
    }
    QPointer<FileTransfer> self(this);
    QStringList copied;
    setBusy(true);
    for (const QUrl &url : std::as_const(files)) {
        const QString path = url.toLocalFile();
        const QString name = QFileInfo(path).fileName();
        setProgress(name, 0);
        report(QStringLiteral("Copying %1 to the phone's Download folder...").arg(name));
        // A large file takes as long as it takes: no time limit, progress instead.
        const QStringList arguments = {QStringLiteral("-s"), serial(), QStringLiteral("push"), path,
            QString::fromLatin1(downloadFolder)};
        auto running = ToolRunner::run(*adb, arguments, AndroidTools::environment(), std::nullopt,
            std::nullopt, nullptr, [self, name](const QString &chunk) {
                const int percent = lastPercent(chunk);
                if (self && percent >= 0)
                    self->setProgress(name, percent);
            });
        const ProcessResult result = co_await std::move(running);
        if (!self)
            co_return;
        if (const auto why = failure(result)) {
            // Only adb's last line says why: the ones before are its progress.
            static const QRegularExpression lineEnd(QStringLiteral("[\r\n]"));
            report(QStringLiteral("Could not copy %1: %2")
                       .arg(name, why->split(lineEnd, Qt::SkipEmptyParts).last()),
                true);
            setProgress(QString(), 0);
            setBusy(false);
            co_return;
        }
        copied.append(name);
    }
    setProgress(QString(), 0);
    setBusy(false);
    report(
        QStringLiteral("Copied %1 to the phone's Download folder.").arg(copied.join(QStringLiteral(", "))));
}

QCoro::Task<> FileTransfer::openLinkTask(QString link)
{
    link = link.trimmed();
    if (link.isEmpty() || link.contains(QLatin1Char('\n'))) {
        report(QStringLiteral("Type or paste a link, e.g. https://example.com."), true);
        co_return;
    }
    // A bare address opens in the phone's browser.
    if (!link.contains(QLatin1Char(':')))
        link.prepend(QStringLiteral("https://"));
    QPointer<FileTransfer> self(this);
    auto running
        = adb({QStringLiteral("shell"), QStringLiteral("am"), QStringLiteral("start"), QStringLiteral("-a"),
            QStringLiteral("android.intent.action.VIEW"), QStringLiteral("-d"), PhoneShell::quote(link)});
    const ProcessResult result = co_await std::move(running);
    if (!self)
        co_return;
    // am says "Error: ..." and still exits with 0 when nothing can open the link.
    if (result.text.contains(QLatin1String("Error:"))) {
        report(QStringLiteral("The phone could not open the link: ") + result.text.trimmed(), true);
        co_return;
    }
    if (reportFailure(result, QStringLiteral("The phone could not open the link")))
        report(QStringLiteral("Opened %1 on the phone.").arg(link));
}

void FileTransfer::setProgress(const QString &file, int percent)
{
    m_currentFile = file;
    m_percent = percent;
    Q_EMIT progressChanged();
}
