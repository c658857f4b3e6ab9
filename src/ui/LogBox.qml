import QtQuick
import QtQuick.Controls
import Tolvane

// A scrolling, selectable view of a log that follows its end whenever a line is added or dropped.
Rectangle {
    id: box
    property LogLines lines
    property string placeholder

    radius: 6
    color: Qt.rgba(0, 0, 0, 0.06)

    function scrollToEnd() {
        flick.contentY = Math.max(0, flick.contentHeight - flick.height)
    }

    Flickable {
        id: flick
        anchors.fill: parent
        anchors.margins: 6
        clip: true
        contentWidth: width
        contentHeight: edit.contentHeight
        boundsBehavior: Flickable.StopAtBounds
        ScrollBar.vertical: ScrollBar {}

        TextEdit {
            id: edit
            objectName: "logText"
            width: flick.width
            readOnly: true
            selectByMouse: true
            persistentSelection: true
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.WrapAnywhere
            font: Style.monoCaption
        }
    }

    Label {
        visible: box.placeholder.length > 0 && (!box.lines || box.lines.count === 0)
        anchors.left: parent.left
        anchors.top: parent.top
        anchors.margins: 6
        text: box.placeholder
        font: Style.monoCaption
        color: Style.secondary
    }

    LogDocument {
        id: mirror
        document: edit.textDocument
        lines: box.lines
        property int lastCount: -1
        onSynced: {
            if (box.lines && box.lines.count !== lastCount) {
                lastCount = box.lines.count
                box.scrollToEnd()
            }
        }
    }
}
