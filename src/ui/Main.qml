import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import Tolvane

ApplicationWindow {
    id: window
    title: "Tolvane"
    minimumWidth: 780
    minimumHeight: 640
    width: 780
    height: 640
    visible: true

    property LogsWindow logsWindow: null

    // There is one logs window: opening it again brings it forward.
    function openLogs() {
        if (!logsWindow)
            logsWindow = logsComponent.createObject(null)
        logsWindow.show()
        logsWindow.raise()
        logsWindow.requestActivate()
    }

    Component {
        id: logsComponent
        LogsWindow {}
    }

    onVisibleChanged: {
        if (visible)
            TolvaneApp.setup.refresh()
    }
    Component.onCompleted: TolvaneApp.setup.refresh()

    ContentView {
        anchors.fill: parent
        anchors.margins: 16
        onLogsRequested: window.openLogs()
    }

    FileDialog {
        id: saveDialog
        title: "Save Screenshot"
        fileMode: FileDialog.SaveFile
        nameFilters: ["PNG image (*.png)"]
        defaultSuffix: "png"
        onAccepted: TolvaneApp.saveChooser.accept(selectedFile)
        onRejected: TolvaneApp.saveChooser.reject()
    }
    Connections {
        target: TolvaneApp.saveChooser
        function onSaveRequested(proposedName) {
            saveDialog.selectedFile = saveDialog.currentFolder + "/" + proposedName
            saveDialog.open()
        }
    }
}
