#include "DataTable.h"
#include "PhoneShell.h"
#include "RunningPhone.h"
#include "SavedSnapshots.h"
#include "Snapshots.h"

#include <QTest>

#include <QCoro/QCoroTask>

#include <memory>

namespace {

const QString phone = QStringLiteral("Pixel_7");

} // namespace

class TestSnapshots : public QObject
{
    Q_OBJECT

    std::unique_ptr<RunningPhone> m_phone;

private Q_SLOTS:
    void initTestCase() { m_phone = std::make_unique<RunningPhone>(phone); }

    void cleanup() { m_phone->sim.clearBehaviour(QStringLiteral("known-failure")); }

    // Each row runs one command after the ones before, on the same phone.
    void commands_data()
    {
        columns<QString, QString, QString, QString, QStringList>(
            "command", "name", "failure", "message", "names");
        QTest::newRow("save") << "save"
                              << "before_login"
                              << ""
                              << "Saved snapshot before_login." << QStringList {"before_login"};
        QTest::newRow("save a second") << "save"
                                       << "v2.1"
                                       << ""
                                       << "Saved snapshot v2.1." << QStringList {"before_login", "v2.1"};
        QTest::newRow("load") << "load"
                              << "before_login"
                              << ""
                              << "Loaded snapshot before_login." << QStringList {"before_login", "v2.1"};
        QTest::newRow("load one that is not there")
            << "load"
            << "gone"
            << ""
            << "Could not load snapshot gone: snapshot 'gone' does not exist"
            << QStringList {"before_login", "v2.1"};
        QTest::newRow("a name a phone could not have")
            << "save"
            << "my snap"
            << ""
            << "A snapshot name uses only letters, digits, dots, dashes and underscores."
            << QStringList {"before_login", "v2.1"};
        QTest::newRow("disk full, said with KO and status 0")
            << "save"
            << "big"
            << "disk-full"
            << "Could not save snapshot big: Failed to save snapshot 'big': No space left on device\n"
               "The Mac's disk is too full. A snapshot takes"
            << QStringList {"before_login", "v2.1"};
        QTest::newRow("delete") << "delete"
                                << "v2.1"
                                << ""
                                << "Deleted snapshot v2.1." << QStringList {"before_login"};
    }

    void commands()
    {
        const auto [command, name, failure, message, names]
            = row<QString, QString, QString, QString, QStringList>(
                "command", "name", "failure", "message", "names");
        if (!failure.isEmpty())
            m_phone->sim.setBehaviour(QStringLiteral("known-failure"), failure.toUtf8());
        Snapshots snapshots;
        snapshots.setSerial(m_phone->serial);
        QCoro::waitFor(snapshots.refreshTask());
        const qsizetype calls = m_phone->sim.adbCalls().size();
        QCoro::waitFor(snapshots.commandTask(command, name));
        QVERIFY2(snapshots.message().startsWith(message), qPrintable(snapshots.message()));
        QCOMPARE(snapshots.failed(), message.startsWith("Could not") || message.startsWith("A snapshot"));
        QCOMPARE(snapshots.names(), names);
        // A name refused here never reaches the console.
        if (name.contains(QLatin1Char(' ')))
            QCOMPARE(m_phone->sim.adbCalls().size(), calls);

        // The same snapshots, read from the phone's folder as a stopped phone shows them.
        SavedSnapshots saved;
        const QVariantList onDisk
            = SavedSnapshots::measure(m_phone->machine.path() + QStringLiteral("/.android/avd/Pixel_7.avd"));
        QStringList found;
        for (const QVariant &each : onDisk) {
            found.append(each.toMap().value(QStringLiteral("name")).toString());
            QVERIFY(each.toMap().value(QStringLiteral("bytes")).toLongLong() >= 512 * 1024);
        }
        QCOMPARE(found, names);
    }

    void quote_data()
    {
        columns<QString, QString>("value", "quoted");
        QTest::newRow("plain") << "https://x.test/"
                               << "'https://x.test/'";
        QTest::newRow("a quote") << "it's"
                                 << "'it'\\''s'";
        QTest::newRow("empty") << ""
                               << "''";
    }

    void quote()
    {
        const auto [value, quoted] = row<QString, QString>("value", "quoted");
        QCOMPARE(PhoneShell::quote(value), quoted);
    }
};

QTEST_GUILESS_MAIN(TestSnapshots)
#include "tst_snapshots.moc"
