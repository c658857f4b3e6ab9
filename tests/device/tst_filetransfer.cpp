#include "DataTable.h"
#include "FileTransfer.h"
#include "RunningPhone.h"
#include "TestFiles.h"

#include <QFile>
#include <QSignalSpy>
#include <QTest>

#include <QCoro/QCoroTask>

#include <memory>

class TestFileTransfer : public QObject
{
    Q_OBJECT

    std::unique_ptr<RunningPhone> m_phone;

    QString phoneDir() const { return m_phone->sim.stateDir() + QStringLiteral("/emulators/5554"); }

private Q_SLOTS:
    void initTestCase() { m_phone = std::make_unique<RunningPhone>(QStringLiteral("Pixel_7")); }

    void cleanup() { m_phone->sim.clearBehaviour(QStringLiteral("known-failure")); }

    void push_data()
    {
        columns<QString, QString, QString>("file", "failure", "message");
        QTest::newRow("copied") << "notes.txt"
                                << ""
                                << "Copied notes.txt to the phone's Download folder.";
        QTest::newRow("phone full")
            << "big.bin"
            << "disk-full"
            << "Could not copy big.bin: adb: error: failed to copy 'BIG' to '/sdcard/Download/big.bin': "
               "remote No space left on device";
    }

    void push()
    {
        const auto [file, failure, message] = row<QString, QString, QString>("file", "failure", "message");
        if (!failure.isEmpty())
            m_phone->sim.setBehaviour(QStringLiteral("known-failure"), failure.toUtf8());
        const QString local = m_phone->machine.filePath(file);
        writeFile(local, "hello phone");
        FileTransfer transfer;
        transfer.setSerial(m_phone->serial);
        QList<int> percents;
        connect(&transfer, &FileTransfer::progressChanged, this, [&] {
            if (!transfer.currentFile().isEmpty())
                percents.append(transfer.percent());
        });
        QCoro::waitFor(transfer.pushTask({QUrl::fromLocalFile(local)}));
        QCOMPARE(transfer.message(), QString(message).replace(QStringLiteral("BIG"), local));
        QCOMPARE(transfer.failed(), !failure.isEmpty());
        QVERIFY(!transfer.busy());
        // adb's redrawn progress reached the view on the way.
        QVERIFY2(
            percents.contains(50) && percents.last() == 100, qPrintable(QString::number(percents.size())));
        QCOMPARE(QFile::exists(phoneDir() + QStringLiteral("/storage/Download/") + file), failure.isEmpty());
    }

    // The phone's shell reads what adb hands it: every value must arrive as one word and run nothing.
    void openLink_data()
    {
        columns<QString, QString>("link", "opened");
        QTest::newRow("plain") << "https://example.com/a b"
                               << "https://example.com/a b";
        QTest::newRow("a bare address") << "example.com"
                                        << "https://example.com";
        QTest::newRow("shell in the link")
            << "https://x.test/?a=1;touch PWNED&b=$(touch PWNED)`touch PWNED`'\"|touch PWNED"
            << "https://x.test/?a=1;touch PWNED&b=$(touch PWNED)`touch PWNED`'\"|touch PWNED";
    }

    void openLink()
    {
        auto [link, opened] = row<QString, QString>("link", "opened");
        const QString pwned = m_phone->machine.filePath(QStringLiteral("pwned"));
        link.replace(QStringLiteral("PWNED"), pwned);
        opened.replace(QStringLiteral("PWNED"), pwned);
        FileTransfer transfer;
        transfer.setSerial(m_phone->serial);
        QCoro::waitFor(transfer.openLinkTask(link));
        QCOMPARE(transfer.message(), QStringLiteral("Opened %1 on the phone.").arg(opened));
        QFile args(phoneDir() + QStringLiteral("/am.args"));
        QVERIFY(args.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(args.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts),
            QStringList({"start", "-a", "android.intent.action.VIEW", "-d", opened}));
        QVERIFY(!QFile::exists(pwned));
    }
};

QTEST_GUILESS_MAIN(TestFileTransfer)
#include "tst_filetransfer.moc"
