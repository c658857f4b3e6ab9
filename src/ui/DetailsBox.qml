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
    color: Style.failureBox
    Accessible.role: Accessible.Grouping
    Accessible.name: summary

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
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        DisclosureButton {
            objectName: "showDetails"
            text: box.open ? "Hide Details" : "Show Details"
            checked: box.open
            onToggled: box.open = checked
        }
        ScrollView {
            objectName: "detailsScroller"
            visible: box.open
            Layout.fillWidth: true
            // A short text takes only its own height: the area never scrolls past it into blank space.
            Layout.preferredHeight: Math.min(120, detailsText.implicitHeight)
            clip: true
            contentWidth: availableWidth
            TextEdit {
                id: detailsText
                objectName: "detailsText"
                width: parent.width
                text: box.details.length > 0 ? box.details : "(no further text)"
                textFormat: TextEdit.PlainText
                readOnly: true
                selectByMouse: true
                // The keyboard reaches the text too, to select and copy it.
                activeFocusOnTab: true
                selectByKeyboard: true
                FocusRing { shown: parent.activeFocus; outset: -1 }
                wrapMode: TextEdit.Wrap
                font: Style.monoCaption
                color: Style.text
                selectionColor: Style.accent
                Accessible.role: Accessible.EditableText
                Accessible.name: "Details"
                Accessible.readOnly: true
            }
        }
    }
}
