import QtQuick
import QtQuick.Controls
import Tolvane

// A scrolling, read-only view of a log that follows its end as lines arrive. Only the lines on screen
// are laid out, so a flood of output costs the view next to nothing. The user selects across lines as
// in a Mac text view (drag, shift-click, double-click for a word, triple-click for a line), copies with
// the platform's shortcut or the context menu, and selects all. The selection is held here as line
// numbers of the log (see LogLines.dropped), so it stays on the same text while older lines are dropped.
Rectangle {
    id: box
    property LogLines lines
    property string placeholder
    property string accessibleName: "Output"

    // Where the selection began and where its moving end is: a line number and a character in it.
    property real anchorLine: -1
    property int anchorChar: 0
    property real cursorLine: -1
    property int cursorChar: 0

    readonly property int lineEnd: 2147483647
    readonly property real firstLine: lines ? lines.dropped : 0
    readonly property bool hasSelection: anchorLine >= 0
        && (anchorLine !== cursorLine || anchorChar !== cursorChar)
    readonly property bool backwards: cursorLine < anchorLine || (cursorLine === anchorLine && cursorChar < anchorChar)
    readonly property real startLine: backwards ? cursorLine : anchorLine
    readonly property int startChar: backwards ? cursorChar : anchorChar
    readonly property real endLine: backwards ? anchorLine : cursorLine
    readonly property int endChar: backwards ? anchorChar : cursorChar

    // The view follows the end unless the user holds a selection or has scrolled away from the end.
    property bool scrolledAway: false
    readonly property bool following: !hasSelection && !scrolledAway

    // Tells the lines on screen where the selection is now. Made of the values the lines read, so it
    // changes last, once they are all up to date.
    readonly property string selection: hasSelection ? startLine + ":" + startChar + ":" + endLine + ":" + endChar : ""
    onSelectionChanged: {
        const items = list.contentItem.children
        for (let i = 0; i < items.length; ++i) {
            if (items[i].showSelection !== undefined)
                items[i].showSelection()
        }
    }

    function selectedText() {
        return hasSelection ? lines.textBetween(startLine, startChar, endLine, endChar) : ""
    }
    function copy() {
        if (hasSelection)
            TolvaneApp.copyToClipboard(selectedText())
    }
    function selectAll() {
        if (!lines || lines.count === 0)
            return
        anchorLine = firstLine
        anchorChar = 0
        cursorLine = firstLine + lines.count - 1
        cursorChar = lineText(cursorLine).length
    }
    function clearSelection() {
        anchorLine = -1
        cursorLine = -1
    }
    // Moves the selection's moving end to a position from positionAt; its anchor stays.
    function extendTo(at) {
        cursorLine = at.line
        cursorChar = at.column
    }
    function select(fromLine, fromChar, toLine, toChar) {
        anchorLine = fromLine
        anchorChar = fromChar
        cursorLine = toLine
        cursorChar = toChar
    }

    // The position under a point of the list, as {line, column}; points past either end of the log take
    // its first or last character.
    function positionAt(x, y) {
        const count = list.count
        if (count === 0)
            return null
        const contentY = y + list.contentY
        const row = list.indexAt(1, contentY)
        if (row < 0) {
            if (contentY < list.originY)
                return { line: firstLine, column: 0 }
            return { line: firstLine + count - 1, column: lineText(firstLine + count - 1).length }
        }
        const item = list.itemAtIndex(row)
        return { line: firstLine + row, column: item ? item.positionAt(x + list.contentX - item.x, contentY - item.y) : 0 }
    }
    function holds(at) {
        return hasSelection && (at.line > startLine || (at.line === startLine && at.column >= startChar))
            && (at.line < endLine || (at.line === endLine && at.column <= endChar))
    }
    function lineText(line) {
        return lines.textBetween(line, 0, line, lineEnd)
    }
    function selectWord(at) {
        const text = lineText(at.line)
        const isWord = c => /\w/.test(c) || c.charCodeAt(0) > 127
        let from = Math.min(at.column, text.length)
        let to = from
        if (to < text.length && isWord(text[to])) {
            while (from > 0 && isWord(text[from - 1]))
                --from
            while (to < text.length && isWord(text[to]))
                ++to
        } else if (to < text.length) {
            ++to
        }
        select(at.line, from, at.line, to)
    }

    radius: 6
    color: Style.logBackground
    activeFocusOnTab: true
    Accessible.role: Accessible.EditableText
    Accessible.name: accessibleName
    Accessible.description: lines && lines.count > 0 ? "" : placeholder
    Accessible.readOnly: true
    Accessible.multiLine: true
    Accessible.selectableText: true
    Accessible.focusable: true

    FocusRing { shown: box.activeFocus; outset: 2 }

    Keys.onPressed: event => {
        if (event.matches(StandardKey.Copy))
            box.copy()
        else if (event.matches(StandardKey.SelectAll))
            box.selectAll()
        else
            event.accepted = false
    }

    Connections {
        target: box.lines
        function onModelReset() {
            box.clearSelection()
            box.scrolledAway = false
        }
        function onCountChanged() {
            // Lines dropped from the front take the part of the selection that lay on them.
            const first = box.lines.dropped
            if (box.anchorLine >= 0 && box.endLine < first) {
                box.clearSelection()
            } else if (box.anchorLine >= 0 && box.startLine < first) {
                if (box.backwards) {
                    box.cursorLine = first
                    box.cursorChar = 0
                } else {
                    box.anchorLine = first
                    box.anchorChar = 0
                }
            }
        }
    }
    onFollowingChanged: {
        if (following)
            list.followLater()
    }

    ListView {
        id: list
        objectName: "logList"
        anchors.fill: parent
        anchors.margins: 6
        clip: true
        model: box.lines
        boundsBehavior: Flickable.StopAtBounds
        reuseItems: true
        ScrollBar.vertical: ScrollBar {
            onPressedChanged: {
                if (pressed)
                    box.scrolledAway = true
                else
                    list.noteUserScroll()
            }
        }
        onMovementStarted: box.scrolledAway = true
        onMovementEnded: noteUserScroll()

        // Lines are plain Text, the lightest item that wraps: during a flood they are made and reused by
        // the hundred. Where a line needs the place of a character, the box's one editor lays that line out
        // alone. A line holds no binding on the selection either; the box tells the lines on screen when
        // the selection moves, and a line taking another row asks again.
        delegate: Text {
            id: lineItem
            required property string line
            required property int index
            // The part of this line that is selected.
            property string selectedText: ""
            property Item highlight: null

            function rowHeight() {
                return lineCount > 0 ? contentHeight / lineCount : height
            }
            function positionToRectangle(position) {
                return box.characterRectangle(line, width, position, rowHeight())
            }
            function positionAt(x, y) {
                return box.characterAt(line, width, x, Math.min(Math.floor(y / rowHeight()), lineCount - 1))
            }
            function showSelection() {
                const number = box.firstLine + index
                if (!box.hasSelection || number < box.startLine || number > box.endLine) {
                    selectedText = ""
                    if (highlight)
                        highlight.visible = false
                    return
                }
                const from = number === box.startLine ? Math.min(box.startChar, line.length) : 0
                const to = number === box.endLine ? Math.min(box.endChar, line.length) : line.length
                selectedText = line.substring(from, to)
                if (!highlight)
                    highlight = highlightComponent.createObject(lineItem)
                // A selection that goes on past this line takes its line break: the highlight runs to the edge.
                highlight.show(positionToRectangle(from), positionToRectangle(to), number < box.endLine)
            }
            function showSelectionLater() {
                if (box.hasSelection || selectedText.length > 0 || (highlight && highlight.visible))
                    Qt.callLater(showSelection)
            }
            Component.onCompleted: {
                if (box.hasSelection)
                    showSelection()
            }
            // A reused line shows its new row's part of the selection once its text has settled.
            onLineChanged: showSelectionLater()
            onIndexChanged: showSelectionLater()
            onWidthChanged: showSelectionLater()

            width: ListView.view.width
            text: line
            textFormat: Text.PlainText
            // Long words still break, but ordinary text wraps between words.
            wrapMode: Text.WrapAtWordBoundaryOrAnywhere
            font: Style.monoCaption
            color: Style.text
        }

        // Follows the end once per frame, however many lines arrived for it: the list takes in the rows
        // added to its model when it lays itself out for the next frame, and only then counts them.
        onCountChanged: {
            if (box.following)
                followLater()
        }
        property bool followPending: false
        function followLater() {
            if (!followPending) {
                followPending = true
                Qt.callLater(follow)
            }
        }
        function follow() {
            followPending = false
            if (box.following)
                positionViewAtEnd()
        }
        function noteUserScroll() {
            box.scrolledAway = !atYEnd
        }
        function scrollBy(dy) {
            const top = originY
            const bottom = Math.max(top, originY + contentHeight - height)
            contentY = Math.max(top, Math.min(bottom, contentY + dy))
        }
    }

    // Lays out one line at a time where a line needs the place of a character: its rows are those of the
    // line's own Text, which may space its rows differently, so rows are counted, not measured.
    TextEdit {
        id: layout
        visible: false
        textFormat: TextEdit.PlainText
        wrapMode: TextEdit.WrapAtWordBoundaryOrAnywhere
        font: Style.monoCaption
    }
    function layOut(text, width) {
        layout.width = width
        layout.text = text
        return layout.lineCount > 0 ? layout.contentHeight / layout.lineCount : 1
    }
    function characterRectangle(text, width, position, rowHeight) {
        const step = layOut(text, width)
        const rect = layout.positionToRectangle(position)
        return Qt.rect(rect.x, Math.round(rect.y / step) * rowHeight, rect.width, rowHeight)
    }
    function characterAt(text, width, x, row) {
        const step = layOut(text, width)
        return layout.positionAt(x, (Math.max(0, row) + 0.5) * step)
    }

    // The highlight of a selected line: the first row from where the selection starts, the rows between
    // whole, and the last row up to where it ends.
    Component {
        id: highlightComponent
        Item {
            anchors.fill: parent
            z: -1
            function show(from, to, toEdge) {
                const oneRow = from.y === to.y
                first.x = from.x
                first.y = from.y
                first.height = from.height
                first.width = (oneRow && !toEdge ? to.x : width) - from.x
                middle.y = from.y + from.height
                middle.height = Math.max(0, to.y - middle.y)
                last.visible = !oneRow
                last.y = to.y
                last.height = to.height
                last.width = toEdge ? width : to.x
                visible = true
            }
            Rectangle { id: first; color: Style.selection }
            Rectangle { id: middle; width: parent.width; color: Style.selection }
            Rectangle { id: last; color: Style.selection }
        }
    }

    MouseArea {
        id: mouse
        objectName: "logMouse"
        anchors.fill: list
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        preventStealing: true
        cursorShape: Qt.IBeamCursor

        property double lastDoubleClick: 0

        // Past an edge the view can still scroll towards, the pointer takes the line at that edge; past
        // the log's own top or end, its first or last character.
        function extendTo(x, y) {
            const clamped = (y < 0 && !list.atYBeginning) || (y >= height && !list.atYEnd)
            const at = box.positionAt(x, clamped ? Math.max(0, Math.min(height - 1, y)) : y)
            if (at && box.anchorLine >= 0)
                box.extendTo(at)
        }

        onPressed: event => {
            box.forceActiveFocus()
            const at = box.positionAt(event.x, event.y)
            if (event.button === Qt.RightButton) {
                // As in a Mac text view: outside the selection, the word under the pointer is selected.
                if (at && !box.holds(at))
                    box.selectWord(at)
                menu.popup()
                return
            }
            if (!at)
                return
            if (Date.now() - lastDoubleClick < Qt.styleHints.mouseDoubleClickInterval) {
                box.select(at.line, 0, at.line, box.lineText(at.line).length)
                lastDoubleClick = 0
            } else if ((event.modifiers & Qt.ShiftModifier) && box.anchorLine >= 0) {
                box.extendTo(at)
            } else {
                box.select(at.line, at.column, at.line, at.column)
            }
        }
        onPositionChanged: event => {
            if (pressedButtons & Qt.LeftButton)
                extendTo(event.x, event.y)
        }
        onDoubleClicked: event => {
            if (event.button !== Qt.LeftButton)
                return
            const at = box.positionAt(event.x, event.y)
            if (at) {
                box.selectWord(at)
                lastDoubleClick = Date.now()
            }
        }
        onWheel: event => {
            // Scrolling up leaves the end at once, before the flick moves the view; the list scrolls.
            if (event.angleDelta.y > 0 || event.pixelDelta.y > 0)
                box.scrolledAway = true
            else
                Qt.callLater(list.noteUserScroll)
            event.accepted = false
        }

        // Dragging past the top or bottom edge scrolls, faster the further out the pointer is.
        Timer {
            interval: 30
            repeat: true
            running: mouse.pressed && (mouse.pressedButtons & Qt.LeftButton)
                && (mouse.mouseY < 0 || mouse.mouseY > mouse.height)
            onTriggered: {
                const beyond = mouse.mouseY < 0 ? mouse.mouseY : mouse.mouseY - mouse.height
                list.scrollBy(Math.max(-60, Math.min(60, beyond)))
                mouse.extendTo(mouse.mouseX, mouse.mouseY)
            }
        }
    }

    Menu {
        id: menu
        objectName: "logMenu"
        // Copying with the keyboard goes on working once the menu is gone.
        onClosed: box.forceActiveFocus()
        MenuItem {
            objectName: "logMenuCopy"
            text: "Copy"
            enabled: box.hasSelection
            onTriggered: box.copy()
        }
        MenuItem {
            objectName: "logMenuSelectAll"
            text: "Select All"
            enabled: list.count > 0
            onTriggered: box.selectAll()
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
}
