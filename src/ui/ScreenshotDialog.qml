import QtQuick
import QtQuick.Dialogs
import Tolvane

// Where a screenshot or a screen recording goes; the main window makes it the first time one is saved.
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
