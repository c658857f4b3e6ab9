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
    Component {
        id: jobComponent
        JobLogView { width: 600 }
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

            // The log is one text: a selection spans every line, and the usual copy key takes it.
            const text = findChild(view, "logText")
            compare(text.text, runner.lines.join("\n"))
            tryVerify(() => text.parent.parent.atYEnd)
            compare(text.selectedText, "")
            text.forceActiveFocus()
            text.selectAll()
            keySequence(StandardKey.Copy)
            compare(sim.clipboardText(), runner.lines.join("\n"))
        }

        // The text mirrors the log through appends, trims from the front and redrawn progress lines.
        function test_textFollowsTheLog() {
            sim.makeReady()
            sim.createPhone("Chatty_Phone")
            sim.setBehaviour("emulator.script",
                "at_start() { awk 'BEGIN { for (i = 1; i <= 4500; i++) print \"line \" i }'; exit 1; }")
            const store = TolvaneApp.store
            const view = createTemporaryObject(logsComponent, root)
            const runner = store.runner("Chatty_Phone")
            store.start("Chatty_Phone", TolvaneApp.startOptions(false, false, false, "Default", "auto"))
            tryVerify(() => runner.failure !== undefined, 20000)
            verify(runner.lines.length < 4500)
            compare(findChild(view, "logText").text, runner.lines.join("\n"))

            sim.reset()
            sim.installBrew()
            sim.installJava()
            sim.installCommandLineTools()
            sim.acceptLicenses()
            const setup = TolvaneApp.setup
            const job = createTemporaryObject(jobComponent, root, { job: setup.job })
            setup.installEmulator()
            tryVerify(() => !setup.job.isRunning && setup.job.lines.length > 1, 20000)
            verify(setup.job.lines.some(line => line.indexOf("100%") >= 0))
            compare(findChild(job, "logText").text, setup.job.lines.join("\n"))
        }
    }
}
