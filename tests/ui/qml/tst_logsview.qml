import QtQuick
import QtQuick.Controls
import QtTest
import Tolvane

Item {
    id: root
    width: 640
    height: 420

    Component {
        id: logsComponent
        LogsView { anchors.fill: parent }
    }

    TestCase {
        name: "LogsView"
        when: windowShown

        function init() {
            sim.reset()
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
            const store = TolvaneApp.store
            const view = createTemporaryObject(logsComponent, root)
            const runner = store.runner("Crashing_Phone")
            store.start("Crashing_Phone", TolvaneApp.startOptions(false, false, false, "Default", "auto"))
            tryVerify(() => runner.failure !== undefined, 20000)
            compare(runner.state, EmulatorProcess.Stopped)
            compare(findChild(view, "stateLine").text, "State: Stopped")
            const box = findChild(view, "detailsSummary")
            verify(box)
            compare(box.text, "Crashing_Phone reported a problem.")

            compare(findChild(view, "logList").count, runner.lines.length)
        }
    }
}
