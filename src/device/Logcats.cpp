#include "Logcats.h"

#include <QQmlEngine>

Logcats::Logcats(QObject *parent)
    : QObject(parent)
{ }

Logcat *Logcats::forSerial(const QString &serial)
{
    if (serial.isEmpty())
        return nullptr;
    Logcat *&log = m_logs[serial];
    if (!log) {
        log = new Logcat(serial, this);
        // Handed to QML, it stays ours.
        QQmlEngine::setObjectOwnership(log, QQmlEngine::CppOwnership);
    }
    return log;
}
