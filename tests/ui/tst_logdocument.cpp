#include "LogDocument.h"
#include "LogLines.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QRandomGenerator>
#include <QTest>
#include <QTextDocument>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(TolvanePlugin)

class TestLogDocument : public QObject
{
    Q_OBJECT

    QQmlEngine m_engine;
    std::unique_ptr<QObject> m_edit;
    LogLines m_lines;
    LogDocument *m_mirror = nullptr;

    QString documentText() const { return m_mirror->document()->textDocument()->toPlainText(); }

private Q_SLOTS:
    void init()
    {
        m_engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
        QQmlComponent component(&m_engine);
        component.setData(
            "import QtQuick\nimport Tolvane\n"
            "TextEdit { id: edit; property LogDocument mirror: LogDocument { document: edit.textDocument } }",
            QUrl());
        m_edit.reset(component.create());
        QVERIFY2(m_edit, qPrintable(component.errorString()));
        m_mirror = m_edit->property("mirror").value<LogDocument *>();
        QVERIFY(m_mirror);
        m_lines.reset({});
        m_mirror->setLines(&m_lines);
    }

    void mirrorsEveryChange_data()
    {
        QTest::addColumn<QStringList>("steps"); // a=append, r=replace last, d=drop first, z=reset
        QTest::newRow("appends in one turn") << QStringList {"a3", "a2"};
        QTest::newRow("progress line replaced") << QStringList {"a2", "r", "r", "a1"};
        QTest::newRow("trim from the front") << QStringList {"a10", "d4", "a3"};
        QTest::newRow("trim everything mirrored") << QStringList {"a3", "|", "d3", "a2"};
        QTest::newRow("trim lines never mirrored") << QStringList {"a3", "|", "a5", "d6"};
        QTest::newRow("replace then append") << QStringList {"a2", "|", "r", "a2", "|", "r"};
        QTest::newRow("reset replaces everything") << QStringList {"a4", "|", "z", "a1"};
        QTest::newRow("empty lines kept") << QStringList {"e", "a1", "e"};
    }

    void mirrorsEveryChange()
    {
        QFETCH(QStringList, steps);

        int counter = 0;
        for (const QString &step : steps) {
            const int n = step.mid(1).toInt();
            switch (step.at(0).toLatin1()) {
            case 'a': {
                QStringList more;
                for (int i = 0; i < n; ++i)
                    more << QStringLiteral("line %1").arg(++counter);
                m_lines.append(more);
                break;
            }
            case 'e':
                m_lines.append({QString()});
                break;
            case 'r':
                m_lines.replaceLast(QStringLiteral("replaced %1").arg(++counter));
                break;
            case 'd':
                m_lines.dropFirst(n);
                break;
            case 'z':
                m_lines.reset({QStringLiteral("$ fresh")});
                break;
            case '|': // let the mirror catch up before the next change
                QTRY_COMPARE(documentText(), m_lines.lines().join('\n'));
                break;
            }
        }
        QTRY_COMPARE(documentText(), m_lines.lines().join('\n'));
    }

    void randomChangesStayInStep()
    {
        QRandomGenerator random(42);
        int counter = 0;
        for (int round = 0; round < 300; ++round) {
            const int changes = int(random.bounded(1, 6));
            for (int c = 0; c < changes; ++c) {
                switch (random.bounded(4)) {
                case 0:
                case 1: {
                    QStringList more;
                    for (int i = int(random.bounded(1, 40)); i > 0; --i)
                        more << QStringLiteral("line %1").arg(++counter);
                    m_lines.append(more);
                    break;
                }
                case 2:
                    m_lines.replaceLast(QStringLiteral("[===] %1%").arg(++counter % 100));
                    break;
                case 3:
                    m_lines.dropFirst(int(random.bounded(0, 60)));
                    break;
                }
            }
            QTRY_COMPARE(documentText(), m_lines.lines().join('\n'));
        }
    }
};

QTEST_MAIN(TestLogDocument)
#include "tst_logdocument.moc"
