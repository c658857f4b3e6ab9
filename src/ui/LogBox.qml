import QtQuick
import QtQuick.Controls
import Tolvane

// A scrolling view of a log that follows its end whenever a line is added or dropped. Only the lines
// on screen are laid out, so a flood of output costs the view next to nothing; each line is
// selectable, and "Copy" takes the whole log.
Rectangle {
    id: box
    property LogLines lines
    property string placeholder

    radius: 6
    color: Style.logBackground

    ListView {
        id: list
        objectName: "logList"
        anchors.fill: parent
        anchors.margins: 6
        // Lines wrap before the Copy button, never under it.
        anchors.rightMargin: copy.visible ? copy.width + 12 : 6
        clip: true
        model: box.lines
        boundsBehavior: Flickable.StopAtBounds
        reuseItems: true
        ScrollBar.vertical: ScrollBar {}
        delegate: TextEdit {
            required property string line
            width: ListView.view.width
            text: line
            readOnly: true
            selectByMouse: true
            textFormat: TextEdit.PlainText
            // Long words still break, but ordinary text wraps between words.
            wrapMode: TextEdit.WrapAtWordBoundaryOrAnywhere
            font: Style.monoCaption
            color: Style.text
            selectionColor: Style.accent
        }
        // Follows the end once per event-loop turn, however many lines arrived in it.
        property bool following: false
        function follow() {
            following = false
            positionViewAtEnd()
        }
        onCountChanged: {
            if (!following) {
                following = true
                Qt.callLater(follow)
            }
        }
    }

    Label {
        visible: box.placeholder.length > 0 && list.count === 0
        anchors.left: parent.left
        anchors.top: parent.top
        anchors.margins: 6
        text: box.placeholder
        font: Style.monoCaption
        color: Style.secondary
    }

    Button {
        id: copy
        objectName: "copyLog"
        visible: list.count > 0
        text: "Copy"
        flat: true
        font: Style.caption
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: 4
        onClicked: TolvaneApp.copyToClipboard(box.lines.text())
    }
}
