#include "DataTable.h"
#include "EmulatorProcess.h"
#include "PhonesElsewhere.h"
#include "SimHost.h"

#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <QCoro/QCoroTask>

using QCoro::waitFor;
using Phones = QMap<QString, QStringList>;

class TestPhonesElsewhere : public QObject
{
    Q_OBJECT

    // One machine with A twice and B running outside the app serves every row.
    QTemporaryDir m_root;
    std::unique_ptr<SimHost> m_sim;

private Q_SLOTS:
    void initTestCase()
    {
        m_sim = std::make_unique<SimHost>(m_root.path());
        m_sim->activate();
        m_sim->setTimeScale(0.02);
        m_sim->makeReady();
        for (const char *name : {"A", "B"})
            m_sim->createPhone(QLatin1String(name));
        m_sim->startPhone(QStringLiteral("A"), 5554);
        m_sim->startPhone(QStringLiteral("B"), 5556);
        m_sim->startPhone(QStringLiteral("A"), 5558, {QStringLiteral("-read-only")});
        EmulatorProcess::Timing timing;
        // Long enough for a loaded machine running sanitizers; "hangs" waits it out once.
        timing.adbTimeout = 3.0;
        EmulatorProcess::setTiming(timing);
    }

    void cleanup()
    {
        for (const char *key : {"known-failure", "adb.script", "adb.avd-name.fail"})
            m_sim->clearBehaviour(QLatin1String(key));
    }

    // A scan names the phone of every emulator adb lists but ours, or says why it cannot; one that could
    // not ask adb keeps what the scan before it saw.
    void scan_data()
    {
        // trouble: what goes wrong in the second scan; ours: the console ports of our own emulators
        columns<QString, QList<int>, Phones, QString>("trouble", "ours", "phones", "problem");

        const Phones both {{"A", {"emulator-5554", "emulator-5558"}}, {"B", {"emulator-5556"}}};
        QTest::newRow("every emulator named") << "" << QList<int> {} << both << "";
        QTest::newRow("ours left out")
            << "" << QList<int> {5556, 5560} << Phones {{"A", {"emulator-5554", "emulator-5558"}}} << "";
        QTest::newRow("adb cannot list")
            << "adb-version" << QList<int> {} << both
            << "adb could not list the running emulators (adb server version (41) doesn't match this client "
               "(39); killing...).";
        QTest::newRow("adb times out") << "hangs" << QList<int> {} << both
                                       << "adb could not list the running emulators (the command did not "
                                          "finish in time).";
        QTest::newRow("no adb") << "no adb" << QList<int> {} << both
                                << "adb is not installed, so the running emulators cannot be listed.";
        QTest::newRow("consoles do not answer")
            << "unnamed" << QList<int> {5554} << Phones {}
            << "emulator-5556 and emulator-5558 did not say which phones they run.";
        QTest::newRow("a console says KO") << "KO" << QList<int> {5554, 5558} << Phones {}
                                           << "emulator-5556 did not say which phone it runs.";
    }

    void scan()
    {
        auto [trouble, ours, phones, problem]
            = row<QString, QList<int>, Phones, QString>("trouble", "ours", "phones", "problem");

        const QString adb = m_sim->sdkRoot() + QStringLiteral("/platform-tools/adb");
        const auto restore = qScopeGuard([&] { QFile::rename(adb + QStringLiteral(".away"), adb); });
        PhonesElsewhere elsewhere([&ours = ours] { return QSet<int>(ours.begin(), ours.end()); });
        if (!trouble.isEmpty())
            waitFor(elsewhere.scanTask());
        if (trouble == QLatin1String("adb-version"))
            m_sim->setBehaviour(QStringLiteral("known-failure"), "adb-version");
        else if (trouble == QLatin1String("hangs"))
            m_sim->setBehaviour(QStringLiteral("adb.script"), "[ \"$1\" = devices ] && exec sleep 30");
        else if (trouble == QLatin1String("no adb"))
            QVERIFY(QFile::rename(adb, adb + QStringLiteral(".away")));
        else if (trouble == QLatin1String("unnamed"))
            m_sim->setBehaviour(QStringLiteral("adb.avd-name.fail"));
        else if (trouble == QLatin1String("KO"))
            m_sim->setBehaviour(QStringLiteral("adb.script"),
                "[ \"$3 $4\" = 'emu avd' ] && { printf 'KO: emulator console not ready\\r\\n'; exit 0; }");
        waitFor(elsewhere.scanTask());
        QCOMPARE(elsewhere.phones(), phones);
        QCOMPARE(elsewhere.problem(), problem.isEmpty() ? std::nullopt : std::optional(problem));
        // Every emulator that is not ours holds its port, named or not.
        QSet<int> ports {5554, 5556, 5558};
        for (const int port : std::as_const(ours))
            ports.remove(port);
        QCOMPARE(elsewhere.ports(), ports);
    }
};

QTEST_GUILESS_MAIN(TestPhonesElsewhere)
#include "tst_phoneselsewhere.moc"
