#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

class QSocketNotifier;

// A pipe a child writes one of its output streams into, read on the main thread as the output comes.
// QProcess closes its own pipes the moment the child ends; this one stays open for as long as it lives,
// so what a grandchild still writes after the child's end can be read too.
class OutputPipe : public QObject
{
    Q_OBJECT

public:
    explicit OutputPipe(QObject *parent = nullptr);
    ~OutputPipe() override;

    // Why the pipe could not be made (out of descriptors, say); empty when it was.
    QString error() const { return m_error; }
    // In the child between fork and exec: makes the pipe the child's descriptor `target`.
    // Only async-signal-safe calls happen here.
    void attachInChild(int target) const;
    // Once the child has started: our copy of the writing end goes, so the stream ends when the
    // child and whoever inherited it are done.
    void closeWriteEnd();
    // Reads whatever has come so far, without waiting, and hands it on.
    void readNow();

Q_SIGNALS:
    void received(const QByteArray &bytes);

private:
    int m_readEnd = -1;
    int m_writeEnd = -1;
    QSocketNotifier *m_notifier = nullptr;
    QString m_error;
};
