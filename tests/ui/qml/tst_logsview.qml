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
}
