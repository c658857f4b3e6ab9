import QtQuick
import QtQuick.Controls

AppWindow {
    objectName: "logs"
    title: "Emulator Logs"
    minimumWidth: 640
    minimumHeight: 420
    width: 640
    height: 480

    function showLogcat(serial, app) {
        logsView.showLogcat(serial, app)
    }

    LogsView {
        id: logsView
        anchors.fill: parent
        anchors.margins: 14
    }
}
