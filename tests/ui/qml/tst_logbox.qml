import QtQuick
import Tolvane

TolvaneTestCase {
    id: root
    name: "LogBox"
    width: 640
    height: 420

    Component {
        id: boxComponent
        LogBox { width: 600; height: 300 }
    }

    readonly property string fox: "the quick brown fox"

    // Shows the log of a phone whose emulator runs `script`, once it has printed `count` lines in all.
    function showLog(script, count) {
        sim.makeReady()
        sim.createPhone("Log_Phone")
        sim.setBehaviour("emulator.script", "at_start() { " + script + " }")
        const runner = store.runner("Log_Phone")
        startPhone("Log_Phone")
        const box = createTemporaryObject(boxComponent, root, { lines: runner.lineModel })
        const log = { runner: runner, box: box, list: findChild(box, "logList"), mouse: findChild(box, "logMouse") }
        tryCompare(log.list, "count", count, 20000)
        tryVerify(() => log.list.atYEnd && log.list.itemAtIndex(count - 3) !== null)
        return log
    }
    function rows(count, word) {
        return "i=1; while [ $i -le " + count + " ]; do echo \"" + word + " $i: " + fox + "\"; i=$((i+1)); done;"
    }
    // The point of a character of a row, in the box's mouse area.
    function at(log, cell) {
        const item = log.list.itemAtIndex(cell[0])
        const rect = item.positionToRectangle(cell[1])
        return item.mapToItem(log.mouse, rect.x + 1, rect.y + rect.height / 2)
    }
    function drag(log, from, to) {
        mousePress(log.mouse, from.x, from.y)
        mouseMove(log.mouse, (from.x + to.x) / 2, (from.y + to.y) / 2, -1, Qt.LeftButton)
        mouseMove(log.mouse, to.x, to.y, -1, Qt.LeftButton)
        wait(100)
        mouseRelease(log.mouse, to.x, to.y)
    }
    // Right-clicks a character of a row and takes an item of the menu.
    function menuItem(log, index, cell) {
        const point = at(log, cell)
        mouseClick(log.mouse, point.x, point.y, Qt.RightButton)
        const menu = findChild(log.box, "logMenu")
        tryVerify(() => menu.opened)
        mouseClick(menu.itemAt(index))
        tryVerify(() => !menu.visible)
    }
    function copied(log, menuAt) {
        TolvaneApp.copyToClipboard("")
        menuAt ? menuItem(log, 0, menuAt) : keySequence(StandardKey.Copy)
        return sim.clipboardText()
    }

    // A line item that re-entered its own updates would blow the stack, and only say so in a warning.
    function init() {
        sim.reset()
        failOnWarning(/RangeError/)
    }

    function test_select_data() {
        const three = fox + "\nrow 38: " + fox + "\nrow 39:"
        return [
            { tag: "drag down", drag: [[37, 8], [39, 7]], text: three },
            { tag: "drag up, copied from the menu", drag: [[39, 7], [37, 8]], text: three, menuCopy: [38, 9] },
            { tag: "right-click takes the word under it", menuCopy: [38, 14], text: "quick" },
            { tag: "drag past the end", drag: [[38, 8], [40, 8]], below: 30, text: fox + "\nrow 39: " + fox + "\nrow 40: " + fox },
            { tag: "shift-click extends", drag: [[37, 8], [37, 8]], shift: [38, 11], text: fox + "\nrow 38: the" },
            { tag: "double-click takes a word", clicks: 2, text: "quick" },
            { tag: "triple-click takes a line", clicks: 3, text: "row 38: " + fox },
            { tag: "select all", all: "keys" },
            { tag: "select all from the menu", all: "menu" },
        ]
    }
    function test_select(data) {
        const log = showLog(rows(40, "row") + " exit 1;", 41)
        tryVerify(() => log.runner.failure !== undefined, 20000)
        if (data.drag) {
            const to = at(log, data.drag[1])
            drag(log, at(log, data.drag[0]), data.below ? Qt.point(to.x, log.mouse.height + data.below) : to)
        }
        if (data.shift)
            mouseClick(log.mouse, at(log, data.shift).x, at(log, data.shift).y, Qt.LeftButton, Qt.ShiftModifier)
        if (data.clicks) {
            const word = at(log, [38, 14])
            mouseDoubleClickSequence(log.mouse, word.x, word.y)
            if (data.clicks === 3)
                mouseClick(log.mouse, word.x, word.y)
        }
        if (data.all === "keys") {
            mouseClick(log.mouse, 5, 5)
            keySequence(StandardKey.SelectAll)
        } else if (data.all === "menu") {
            menuItem(log, 1, [38, 14])
        }
        compare(copied(log, data.menuCopy), data.text !== undefined ? data.text : log.runner.lines.join("\n"))
    }

    // A held selection stays on its text and in its place on screen while lines arrive and the oldest
    // are dropped, losing only the part that lay on them; once it is cleared, the box follows the end again.
    function test_selectionThroughFlood_data() {
        return [ { tag: "below the trim" }, { tag: "cut by the trim", all: true } ]
    }
    function test_selectionThroughFlood(data) {
        const log = showLog(rows(3000, "old") + " while [ ! -f \"$SIM_STATE/behaviour/more\" ]; do sleep 0.05; done; "
            + rows(1500, "new") + " exit 1;", 3001)
        if (data.all) {
            mouseClick(log.mouse, 5, 5)
            keySequence(StandardKey.SelectAll)
        } else {
            drag(log, at(log, [2998, 4]), at(log, [2999, 13]))
        }
        const kept = data.all ? log.runner.lines.slice(1000).join("\n") : "2998: " + fox + "\nold 2999: the"
        if (!data.all) {
            compare(copied(log), kept)
            compare(log.list.itemAtIndex(2999).selectedText, "old 2999: the")
        }
        const shownAt = log.list.itemAtIndex(2998).mapToItem(log.box, 0, 0).y

        sim.setBehaviour("more")
        tryVerify(() => log.runner.failure !== undefined, 20000)
        const dropped = log.runner.lineModel.dropped
        compare(dropped, 1000, "the log dropped its oldest lines")
        wait(100)
        compare(copied(log), kept)
        if (!data.all) {
            compare(log.list.itemAtIndex(2998 - dropped).selectedText, "2998: " + fox)
            compare(log.list.itemAtIndex(2998 - dropped).mapToItem(log.box, 0, 0).y, shownAt)
        }

        mouseClick(log.mouse, 5, 5)
        compare(copied(log), "")
        tryVerify(() => log.list.atYEnd && log.list.itemAtIndex(log.list.count - 1) !== null)
    }
}
