import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The standard box for a failure: its summary always, its full text on demand.
Rectangle {
    id: box
    property string summary
    property string details
    property bool open: false

    implicitHeight: column.implicitHeight + 16
    radius: 6
    color: Qt.rgba(0.84, 0, 0.08, 0.08)

    ColumnLayout {
        id: column
        anchors.fill: parent
        anchors.margins: 8
        spacing: 4

        Label {
            objectName: "detailsSummary"
            text: box.summary
            textFormat: Text.PlainText
            color: Style.red
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        Button {
            objectName: "showDetails"
            text: "Show Details"
            flat: true
            icon.name: box.open ? "pan-down-symbolic" : "pan-end-symbolic"
            checkable: true
            checked: box.open
            onToggled: box.open = checked
            padding: 2
        }
        ScrollView {
            visible: box.open
            Layout.fillWidth: true
            Layout.preferredHeight: 120
            clip: true
            TextEdit {
                objectName: "detailsText"
                width: box.width - 16
                text: box.details.length > 0 ? box.details : "(no further text)"
                textFormat: TextEdit.PlainText
                readOnly: true
                selectByMouse: true
                wrapMode: TextEdit.Wrap
                font: Style.monoCaption
            }
        }
    }
}
