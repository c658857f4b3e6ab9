import QtQuick
import QtQuick.Controls
import QtTest
import Tolvane

Item {
    id: root
    width: 640
    height: 420

    Component {
        id: boxComponent
        LogBox { width: 600; height: 300 }
    }

    TestCase {
        name: "LogBox"
        when: windowShown

        readonly property PhoneStore store: TolvaneApp.store

        // Starts a phone whose emulator prints what `script` prints, then shows its log in a box.
        function showEmulatorLog(script) {
            sim.reset()
            sim.makeReady()
            sim.createPhone("Log_Phone")
            sim.setBehaviour("emulator.script", "at_start() { " + script + " }")
            const runner = store.runner("Log_Phone")
            store.start("Log_Phone", TolvaneApp.startOptions(false, false, false, "Default", "auto"))
            const box = createTemporaryObject(boxComponent, root, { lines: runner.lineModel })
            return { runner: runner, box: box, list: findChild(box, "logList"), mouse: findChild(box, "logMouse") }
        }

        function rows(count, word) {
            return "i=1; while [ $i -le " + count + " ]; do echo \"" + word + " $i: the quick brown fox\"; i=$((i+1)); done;"
        }

        // The point of a column of a log row, in the box's mouse area.
        function pointOf(log, row, column) {
            const item = log.list.itemAtIndex(row)
            verify(item, "row " + row + " is laid out")
            const rect = item.positionToRectangle(column)
            return item.mapToItem(log.mouse, rect.x + 1, rect.y + rect.height / 2)
        }

        function copied() {
            TolvaneApp.copyToClipboard("")
            keySequence(StandardKey.Copy)
            return sim.clipboardText()
        }

        function cleanup() {
            for (const runner of store.allRunners) {
                if (runner.state !== EmulatorProcess.Stopped)
                    runner.stop()
            }
            tryVerify(() => store.allRunners.every(runner => runner.state === EmulatorProcess.Stopped), 30000)
        }

        function test_select_data() {
            const quick = "the quick brown fox"
            return [
                { tag: "drag down", press: [37, 8], to: [39, 7], text: quick + "\nrow 38: " + quick + "\nrow 39:" },
                { tag: "drag up", press: [39, 7], to: [37, 8], text: quick + "\nrow 38: " + quick + "\nrow 39:" },
                { tag: "shift-click extends", press: [37, 8], shift: [38, 11], text: quick + "\nrow 38: the" },
                { tag: "drag past the bottom", press: [38, 8], below: true,
                  text: quick + "\nrow 39: " + quick + "\nrow 40: " + quick },
                { tag: "double-click takes a word", double: [38, 14], text: "quick" },
                { tag: "triple-click takes a line", triple: [38, 14], text: "row 38: " + quick },
                { tag: "select all", all: "keys", text: "whole" },
                { tag: "menu select all", all: "menu", text: "whole" },
            ]
        }

        function test_select(data) {
            // The emulator prints 40 rows after its command line, then exits.
            const log = showEmulatorLog(rows(40, "row") + " exit 1;")
            tryVerify(() => log.runner.failure !== undefined, 20000)
            tryCompare(log.list, "count", 41)
            tryVerify(() => log.list.atYEnd && log.list.itemAtIndex(37) !== null)
            wait(50)

            if (data.press) {
                const from = pointOf(log, data.press[0], data.press[1])
                mousePress(log.mouse, from.x, from.y)
                if (data.to) {
                    const to = pointOf(log, data.to[0], data.to[1])
                    mouseMove(log.mouse, (from.x + to.x) / 2, (from.y + to.y) / 2, -1, Qt.LeftButton)
                    mouseMove(log.mouse, to.x, to.y, -1, Qt.LeftButton)
                    mouseRelease(log.mouse, to.x, to.y)
                } else if (data.below) {
                    mouseMove(log.mouse, from.x, log.mouse.height + 30, -1, Qt.LeftButton)
                    wait(300)
                    mouseRelease(log.mouse, from.x, log.mouse.height + 30)
                } else {
                    mouseRelease(log.mouse, from.x, from.y)
                }
                if (data.shift) {
                    const to = pointOf(log, data.shift[0], data.shift[1])
                    mouseClick(log.mouse, to.x, to.y, Qt.LeftButton, Qt.ShiftModifier)
                }
            } else if (data.double || data.triple) {
                const cell = data.double || data.triple
                const at = pointOf(log, cell[0], cell[1])
                mouseDoubleClickSequence(log.mouse, at.x, at.y)
                if (data.triple)
                    mouseClick(log.mouse, at.x, at.y)
            } else if (data.all === "keys") {
                mouseClick(log.mouse, 5, 5)
                keySequence(StandardKey.SelectAll)
            } else {
                mouseClick(log.mouse, 5, 5, Qt.RightButton)
                const menu = findChild(log.box, "logMenu")
                tryVerify(() => menu.opened)
                mouseClick(menu.itemAt(1))
                tryVerify(() => !menu.visible)
            }

            const expected = data.text === "whole" ? log.runner.lines.join("\n") : data.text
            compare(copied(), expected)
        }

        // A held selection stays on its text and on screen while lines arrive and the oldest are dropped;
        // once it is cleared, the box follows the end again.
        function test_selectionThroughFlood() {
            const log = showEmulatorLog(rows(3000, "old")
                + " while [ ! -f \"$SIM_STATE/behaviour/more\" ]; do sleep 0.05; done; "
                + rows(1500, "new") + " exit 1;")
            tryCompare(log.list, "count", 3001, 20000)
            tryVerify(() => log.list.atYEnd && log.list.itemAtIndex(2998) !== null)
            wait(50)
            const from = pointOf(log, 2998, 4)
            const to = pointOf(log, 2999, 13)
            mousePress(log.mouse, from.x, from.y)
            mouseMove(log.mouse, to.x, to.y, -1, Qt.LeftButton)
            mouseRelease(log.mouse, to.x, to.y)
            const selected = "2998: the quick brown fox\nold 2999: the"
            compare(copied(), selected)
            const shownAt = log.list.itemAtIndex(2998).mapToItem(log.box, 0, 0).y

            sim.setBehaviour("more")
            tryVerify(() => log.runner.failure !== undefined, 20000)
            const dropped = log.runner.lineModel.dropped
            verify(dropped >= 1000, "the log dropped its oldest lines")
            compare(log.runner.lines[2998 - dropped], "old 2998: the quick brown fox")
            wait(100)
            compare(copied(), selected)
            const item = log.list.itemAtIndex(2998 - dropped)
            verify(item, "the selected line is still laid out")
            compare(item.selectedText, "2998: the quick brown fox")
            compare(item.mapToItem(log.box, 0, 0).y, shownAt)

            mouseClick(log.mouse, 5, 5)
            compare(copied(), "")
            tryVerify(() => log.list.atYEnd)
            verify(log.list.itemAtIndex(log.list.count - 1) !== null)
        }
    }
}
