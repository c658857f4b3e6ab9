import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A modal question in the middle of the window with a destructive action and "Cancel".
Dialog {
    id: dialog
    property string message
    property string confirmText
    signal confirmed

    parent: Overlay.overlay
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? Math.round((parent.height - height) / 2) : 0
    width: Math.min(420, parent ? parent.width - 40 : 420)
    modal: true
    Overlay.modal: DimmedWindow {}
    background: PanelBackground {}

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
