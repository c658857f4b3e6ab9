import QtQuick
import Tolvane

TolvaneTestCase {
    id: root
    name: "LogsView"
    width: 640
    height: 420

    Component {
        id: logsComponent
        LogsView { anchors.fill: parent }
    }

    Component {
        id: detailsComponent
        DetailsBox { width: 400; summary: "Something failed."; open: true }
    }

    // The details take only the height of their text, up to the area's 120 points.
    function test_detailsFitTheirText_data() {
        return [
            { tag: "one line", details: "The emulator exited before it finished starting.", full: false },
            { tag: "no text", details: "", full: false },
            { tag: "long", details: Array(40).fill("a line of the emulator's output").join("\n"), full: true },
        ]
    }

    function test_detailsFitTheirText(data) {
        const box = createTemporaryObject(detailsComponent, root, { details: data.details })
        waitForRendering(box)
        const area = findChild(box, "detailsScroller")
        const text = findChild(box, "detailsText")
        compare(area.height, data.full ? 120 : text.implicitHeight)
        verify(area.contentItem.contentHeight >= area.height)
    }

    function test_noPhones() {
        const view = createTemporaryObject(logsComponent, root, { store: sim.freshStore() })
        verify(findChild(view, "noPhones").visible)
        verify(!findChild(view, "phonePicker").visible)
    }

    function test_failedPhone() {
        sim.makeReady()
        sim.createPhone("Crashing_Phone")
        sim.setBehaviour("emulator.crash")
        const view = createTemporaryObject(logsComponent, root)
        const runner = store.runner("Crashing_Phone")
        startPhone("Crashing_Phone")
        tryVerify(() => runner.failure !== undefined, 20000)
        compare(runner.state, EmulatorProcess.Stopped)
        compare(findChild(view, "stateLine").text, "State: Stopped")
        const box = findChild(view, "detailsSummary")
        verify(box)
        compare(box.text, "Crashing_Phone reported a problem.")

        compare(findChild(view, "logList").count, runner.lines.length)
    }

    // What the Apps tab's "Show log" asks for: the phone's log in its tab, filtered to the app, with the
    // app's crash one press away.
    function test_showLogcatForAnApp() {
        runningPhone("Pixel_Log")
        const view = createTemporaryObject(logsComponent, root)
        view.showLogcat("emulator-5554", "com.example.notes")
        const body = findChild(view, "logcatBody")
        verify(body.visible)
        tryVerify(() => body.log !== null && body.log.count === 7 && !body.log.filtering, 20000)
        compare(findChild(body, "appPicker").currentText, "com.example.notes")
        mouseClick(findChild(body, "nextCrash"))
        const list = findChild(body, "logcatList")
        compare(list.currentIndex, 4)
        // The keyboard moves through the entries and copies the one it is on.
        list.forceActiveFocus(Qt.TabFocusReason)
        verify(findChild(list, "focusRing").visible)
        keyClick(Qt.Key_Down)
        compare(list.currentIndex, 5)
        TolvaneApp.copyToClipboard("")
        keySequence(StandardKey.Copy)
        compare(sim.clipboardText(), list.currentItem.asText())
        verify(/^\S+ \S+ \d+ [VDIWEF] \S+: ./.test(sim.clipboardText()), sim.clipboardText())
    }
}
