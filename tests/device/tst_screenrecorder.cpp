#include "DataTable.h"
#include "RunningPhone.h"
#include "SaveLocationChooser.h"
#include "ScreenRecorder.h"

#include <QFile>
#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {

// Answers every question with the same file.
class FixedChooser : public SaveLocationChooser
{
public:
    explicit FixedChooser(QString path)
        : m_path(std::move(path))
    { }
    QCoro::Task<std::optional<QString>> chooseSaveLocation(QString) override { co_return m_path; }

private:
    QString m_path;
};

} // namespace

class TestScreenRecorder : public QObject
{
    Q_OBJECT

    std::unique_ptr<RunningPhone> m_phone;

private Q_SLOTS:
    void initTestCase()
    {
        m_phone = std::make_unique<RunningPhone>(QStringLiteral("Pixel_7"));
        // screenrecord's three minutes last 1.8 s.
        m_phone->sim.setTimeScale(0.01);
    }

    void cleanup() { m_phone->sim.clearBehaviour(QStringLiteral("adb.screenrecord.fail")); }

    void record_data()
    {
        columns<QString, QString, QString>("how", "refusal", "message");
        QTest::newRow("stopped") << "stop"
                                 << ""
                                 << "Saved the recording to clip.mp4.";
        QTest::newRow("at the limit") << "wait"
                                      << ""
                                      << "The recording reached screenrecord's 3-minute limit and stopped by "
                                         "itself. Saved the recording to clip.mp4.";
        QTest::newRow("a phone that cannot record")
            << "wait"
            << "ERROR: unable to create video/avc codec"
            << "This phone cannot record its screen: ERROR: unable to create video/avc codec";
    }

    void record()
    {
        const auto [how, refusal, message] = row<QString, QString, QString>("how", "refusal", "message");
        if (!refusal.isEmpty())
            m_phone->sim.setBehaviour(QStringLiteral("adb.screenrecord.fail"), refusal.toUtf8());
        const QString saved = m_phone->machine.filePath(QStringLiteral("clip.mp4"));
        QFile::remove(saved);
        FixedChooser chooser(saved);
        ScreenRecorder recorder;
        recorder.setSerial(m_phone->serial);
        recorder.setChooser(&chooser);
        QSignalSpy finished(&recorder, &ScreenRecorder::finished);
        recorder.start();
        QVERIFY(recorder.recording());
        const QString onPhone
            = m_phone->sim.stateDir() + QStringLiteral("/emulators/5554/storage/tolvane-recording.mp4");
        if (how == QLatin1String("stop")) {
            // Once screenrecord has begun its file: a stop before that has nothing to copy.
            QTRY_VERIFY(QFile::exists(onPhone));
            QVERIFY(recorder.recording());
            recorder.stop();
        }
        QVERIFY(finished.wait(10000));
        QCOMPARE(recorder.message(), message);
        QCOMPARE(recorder.failed(), !refusal.isEmpty());
        // The file is complete, and the phone's copy is gone.
        QFile file(saved);
        QCOMPARE(file.open(QIODevice::ReadOnly) && file.readAll().endsWith("finished"), refusal.isEmpty());
        QVERIFY(!QFile::exists(onPhone));
    }
};

QTEST_MAIN(TestScreenRecorder)
#include "tst_screenrecorder.moc"
