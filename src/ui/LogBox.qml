import QtQuick
import QtQuick.Controls
import Tolvane

// A scrolling view of a log that follows its end whenever the number of lines changes. The log is one
// read-only text, so a selection can span any number of lines; it is copied with the usual keys or the
// context menu. The text is edited at its ends as lines arrive and go, so a flood costs the view little.
Rectangle {
    id: box
    property LogLines lines
    property string placeholder

    radius: 6
    color: Qt.rgba(0, 0, 0, 0.06)

    ScrollView {
        id: scroll
        anchors.fill: parent
        anchors.margins: 6
        contentWidth: availableWidth
        // A mouse drag selects text instead of dragging the content; the wheel and the bar still scroll.
        Component.onCompleted: contentItem.interactive = false

        TextEdit {
            id: edit
            objectName: "logText"
            width: scroll.availableWidth
            readOnly: true
            selectByMouse: true
            persistentSelection: true
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.WrapAtWordBoundaryOrAnywhere
            font: Style.monoCaption
            color: ink.color
            selectionColor: ink.palette.highlight
            selectedTextColor: ink.palette.highlightedText

            TapHandler {
                acceptedButtons: Qt.RightButton
                onTapped: {
                    edit.forceActiveFocus()
                    menuLoader.active = true
                    menuLoader.item.popup()
                }
            }
        }
    }

    // Follows the end once per event-loop turn, however many lines arrived in it.
    QtObject {
        id: follower
        property bool pending: false
        function follow() {
            pending = false
            const flick = scroll.contentItem
            flick.contentY = Math.max(0, flick.contentHeight - flick.height)
        }
        function schedule() {
            if (!pending) {
                pending = true
                Qt.callLater(follow)
            }
        }
    }

    // Gives the text the theme's colours, as any label has them.
    Label {
        id: ink
        visible: false
    }

    LogDocument {
        lines: box.lines
        document: edit.textDocument
    }
    Connections {
        target: box.lines
        function onCountChanged() { follower.schedule() }
    }

    Loader {
        id: menuLoader
        active: false
        sourceComponent: Menu {
            MenuItem {
                text: "Copy"
                enabled: edit.selectedText.length > 0
                onTriggered: edit.copy()
            }
            MenuItem {
                text: "Select All"
                onTriggered: edit.selectAll()
            }
        }
    }

    Label {
        visible: box.placeholder.length > 0 && (box.lines === null || box.lines.count === 0)
        anchors.left: parent.left
        anchors.top: parent.top
        anchors.margins: 6
        text: box.placeholder
        font: Style.monoCaption
        color: Style.secondary
    }
}
