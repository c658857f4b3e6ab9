import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A modal question over the window with a destructive action and "Cancel".
Dialog {
    id: dialog
    property string message
    property string confirmText
    signal confirmed

    parent: Overlay.overlay
    anchors.centerIn: parent
    width: Math.min(420, parent ? parent.width - 40 : 420)
    modal: true

    Label {
        text: dialog.message
        wrapMode: Text.Wrap
        width: dialog.availableWidth
    }
    footer: DialogButtonBox {
        Button {
            objectName: "cancel"
            text: "Cancel"
            DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
        }
        Button {
            objectName: "confirm"
            text: dialog.confirmText
            palette.buttonText: Style.red
            DialogButtonBox.buttonRole: DialogButtonBox.DestructiveRole
            onClicked: {
                dialog.close()
                dialog.confirmed()
            }
        }
    }
}
