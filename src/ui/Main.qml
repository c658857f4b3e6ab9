import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import Tolvane

AppWindow {
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

    // The save dialog is made the first time a screenshot is saved, not when the window opens.
    property FileDialog saveDialog: null
    Component {
        id: saveDialogComponent
        FileDialog {
            objectName: "saveDialog"
            title: "Save Screenshot"
            fileMode: FileDialog.SaveFile
            acceptLabel: "Save"
            nameFilters: ["PNG image (*.png)"]
            defaultSuffix: "png"
            onAccepted: TolvaneApp.saveChooser.accept(selectedFile)
            onRejected: TolvaneApp.saveChooser.reject()
        }
    }
    Connections {
        target: TolvaneApp.saveChooser
        function onSaveRequested(proposedName) {
            if (!window.saveDialog)
                window.saveDialog = saveDialogComponent.createObject(window)
            const folder = TolvaneApp.saveChooser.proposedFolder()
            window.saveDialog.currentFolder = folder
            window.saveDialog.selectedFile = folder + "/" + encodeURIComponent(proposedName)
            window.saveDialog.open()
        }
    }
}
