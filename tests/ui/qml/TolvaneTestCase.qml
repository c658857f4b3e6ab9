import QtQuick
import QtTest
import Tolvane

// A test case in the smallest main window over a fresh simulated Mac, with the steps the view tests share.
// Every test leaves no phone running, no install busy and no error shown.
TestCase {
    id: testCase
    visible: true
    width: 780
    height: 640
    when: windowShown

    readonly property PhoneStore store: TolvaneApp.store
    readonly property ApkInstaller installer: TolvaneApp.installer

    function init() {
        sim.reset()
    }

    function cleanup() {
        for (const runner of store.allRunners) {
            if (runner.state !== EmulatorProcess.Stopped)
                runner.stop()
        }
        tryVerify(() => store.allRunners.every(runner => runner.state === EmulatorProcess.Stopped), 30000)
        tryVerify(() => !installer.busy, 20000)
        store.dismissError()
    }

    function startPhone(name) {
        store.start(name, TolvaneApp.startOptions(false, false, false, "Default", "auto"))
    }

    // A ready Mac with this phone running.
    function runningPhone(name) {
        sim.makeReady()
        sim.createPhone(name)
        startPhone(name)
        tryCompare(store.runner(name), "state", EmulatorProcess.Running, 30000)
    }

    // The view, on a Mac made ready, once the phones are listed.
    function readyView(component) {
        sim.makeReady()
        return listedView(component)
    }

    function listedView(component, properties) {
        TolvaneApp.setup.refresh()
        const view = createTemporaryObject(component, testCase, properties)
        tryVerify(() => !store.isLoading, 20000)
        return view
    }

    // The phone's row in the view's list, once it shows.
    function rowFor(view, name) {
        const list = findChild(view, "phoneList")
        const row = () => {
            for (let i = 0; i < list.count; ++i) {
                const item = list.itemAtIndex(i)
                if (item && item.phone.name === name)
                    return item
            }
            return null
        }
        tryVerify(() => row() !== null, 20000, name)
        return row()
    }

    function button(view, text) {
        const found = findChild(view, text)
        verify(found, "button " + text)
        return found
    }

    // Waits until the button can be pressed and sits where it is drawn, then presses it.
    function press(view, text) {
        const found = button(view, text)
        tryVerify(() => found.visible && found.enabled, 20000, text)
        waitForRendering(view)
        mouseClick(found)
    }

    function typeText(text) {
        for (const c of text)
            keyClick(c === " " ? Qt.Key_Space : c)
    }
}
