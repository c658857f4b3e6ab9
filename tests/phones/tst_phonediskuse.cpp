#include "AndroidTools.h"
#include "DataTable.h"
#include "Host.h"
#include "PhoneDiskUse.h"
#include "SimHost.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <QCoro/QCoroTask>

using QCoro::waitFor;

class TestPhoneDiskUse : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Below 8 GB free, a new system image or phone may not fit.
    void lowDisk_data()
    {
        columns<qint64, bool>("free", "low");

        QTest::newRow("5 GB") << qint64(5'000'000'000) << true;
        QTest::newRow("just under 8 GB") << qint64(7'999'999'999) << true;
        QTest::newRow("8 GB") << qint64(8'000'000'000) << false;
        QTest::newRow("500 GB") << qint64(500'000'000'000) << false;
    }

    void lowDisk()
    {
        auto [free, low] = row<qint64, bool>("free", "low");

        QTemporaryDir root;
        Host host = Host::underRoot(root.path(), true);
        host.freeBytes = free;
        Host::setCurrent(host);
        PhoneDiskUse disk;
        waitFor(disk.readTask({}));
        QCOMPARE(disk.freeBytes(), free);
        QCOMPARE(disk.lowDisk(), low);
    }

    // Sparse disk images count what they hold, not their apparent size; each image knows its phones.
    void measured()
    {
        QTemporaryDir root;
        SimHost sim(root.path());
        sim.activate();
        sim.makeReady();
        const QString used = QStringLiteral("system-images;android-34;google_apis;arm64-v8a");
        sim.createPhone(QStringLiteral("Pixel"), QStringLiteral("pixel_7"), used);
        sim.installSystemImage(QStringLiteral("system-images;android-35;google_apis;arm64-v8a"));
        // The first boot makes the phone's 6 GB data image, sparse as the emulator's own.
        sim.startPhone(QStringLiteral("Pixel"));
        sim.killEmulators();
        AVDInfo pixel;
        pixel.name = QStringLiteral("Pixel");
        pixel.path = root.filePath(QStringLiteral(".android/avd/Pixel.avd"));

        PhoneDiskUse disk;
        waitFor(disk.readTask({pixel}));

        qint64 apparent = 0;
        for (const QFileInfo &file : QDir(pixel.path).entryInfoList(QDir::Files))
            apparent += file.size();
        QVERIFY(apparent > 6'000'000'000);
        const qint64 taken = disk.phoneSizes().value(QStringLiteral("Pixel")).toLongLong();
        QVERIFY2(taken >= 4'000'000 && taken < 20'000'000, qPrintable(QString::number(taken)));
        QCOMPARE(disk.phonesBytes(), taken);
        QCOMPARE(disk.installedImages().size(), 2);
        QCOMPARE(disk.installedImages().at(0).image.id, used);
        QCOMPARE(disk.installedImages().at(0).users, QStringList {"Pixel"});
        QCOMPARE(disk.installedImages().at(1).users, QStringList {});
        QVERIFY(disk.imagesBytes() >= 4'000'000 && disk.imagesBytes() < 20'000'000);
        QVERIFY(disk.freeBytes().value_or(0) > 0);
        QCOMPARE(PhoneDiskUse::formatBytes(taken).right(3), QStringLiteral(" MB"));
    }
};

QTEST_GUILESS_MAIN(TestPhoneDiskUse)
#include "tst_phonediskuse.moc"
