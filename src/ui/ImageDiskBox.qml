import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// The installed system images with what each takes, the free space, and removing the unused ones.
ColumnLayout {
    id: box
    property PhoneStore store
    property var removing: undefined

    objectName: "imageDiskBox"
    spacing: 4

    Label {
        objectName: "freeSpace"
        visible: box.store.diskUse.freeBytes !== undefined
        text: visible ? box.store.diskUse.formatBytes(box.store.diskUse.freeBytes) + " is free on the disk that holds the Android SDK." : ""
        font: Style.caption
        color: Style.secondary
    }
    Label {
        objectName: "lowDiskWarning"
        visible: box.store.diskUse.lowDisk
        text: "Less than 8 GB is free. A system image takes about 1.5 GB and each phone several more, so an install or a new phone may not fit."
        color: Style.orange
        wrapMode: Text.Wrap
        Layout.fillWidth: true
    }
    Label {
        visible: box.store.diskUse.installedImages.length > 0
        text: "Installed system images"
        font.bold: true
        Layout.topMargin: 4
    }
    Repeater {
        model: box.store.diskUse.installedImages
        delegate: RowLayout {
            required property var modelData
            Layout.fillWidth: true
            Label {
                text: modelData.label + ": " + box.store.diskUse.formatBytes(modelData.bytes)
                      + (modelData.users.length > 0 ? ", used by " + modelData.users.join(", ") : "")
                font: Style.caption
                elide: Text.ElideRight
                Layout.fillWidth: true
            }
            Button {
                objectName: "Remove " + modelData.id
                text: "Remove"
                visible: modelData.users.length === 0
                enabled: !box.store.imageJob.isRunning
                onClicked: {
                    box.removing = modelData
                    removeDialog.open()
                }
            }
        }
    }
    ConfirmDialog {
        id: removeDialog
        objectName: "removeImageDialog"
        title: box.removing !== undefined ? "Remove " + box.removing.label + "?" : ""
        message: "No phone uses this system image. Removing it frees " + (box.removing !== undefined ? box.store.diskUse.formatBytes(box.removing.bytes) : "")
                 + "; it can be installed again later."
        confirmText: "Remove"
        onConfirmed: box.store.removeImage(box.removing.id)
    }
}
