import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// The app's name, its version and the licences of what it is made with.
Dialog {
    id: box
    objectName: "aboutBox"
    parent: Overlay.overlay
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? Math.round((parent.height - height) / 3) : 0
    width: 380
    modal: true
    Overlay.modal: DimmedWindow {}
    background: PanelBackground {}
    padding: 20
    footer: DialogButtonBox {
        standardButtons: DialogButtonBox.Ok
        leftPadding: 20
        rightPadding: 20
        bottomPadding: 16
    }

    ColumnLayout {
        width: box.availableWidth
        spacing: 8
        // OK is the default button: Return presses it.
        focus: true
        Keys.onReturnPressed: box.accept()
        Keys.onEnterPressed: box.accept()
        Label {
            text: "Tolvane"
            font: Style.title3
        }
        Label {
            objectName: "aboutVersion"
            text: "Version " + TolvaneApp.version
        }
        Label {
            objectName: "aboutLicences"
            text: "Made with Qt, under the GNU LGPL version 3; QCoro, under the MIT licence; and libzip, under the BSD 3-clause licence. The Android tools it runs are Google's, under Google's own terms."
            font: Style.caption
            color: Style.secondary
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
    }
}
