import QtQuick
import QtQuick.Controls

AppWindow {
    objectName: "logs"
    title: "Emulator Logs"
    minimumWidth: 640
    minimumHeight: 420
    width: 640
    height: 480

    LogsView {
        anchors.fill: parent
        anchors.margins: 14
    }
}
