import QtQuick
import Tolvane

TolvaneTestCase {
    id: root
    name: "PhonesView"

    Component {
        id: phonesComponent
        PhonesView { anchors.fill: parent }
    }

    function test_phoneStartedElsewhere() {
        sim.createPhone("Pixel_Outside")
        sim.startPhone("Pixel_Outside")
        const view = readyView(phonesComponent)
        const row = rowFor(view, "Pixel_Outside")
        tryCompare(findChild(row, "statusLabel"), "text", "Running", 20000)
        verify(findChild(row, "elsewhereNote").visible)
        verify(findChild(row, "diskSize").text.endsWith(" MB on disk"))
        verify(findChild(view, "diskUseLine").visible)
        for (const button of ["Start", "Wipe data", "Delete"])
            verify(!findChild(row, button).enabled, button)
        // A start asked for anyway is refused, and the row says why.
        store.start("Pixel_Outside", view.options(false))
        compare(findChild(row, "refusal").text, "Pixel_Outside is already running outside Tolvane (emulator-5554).")
        mouseClick(findChild(row, "Stop"))
        tryCompare(findChild(row, "statusLabel"), "text", "Stopped", 20000)
        verify(findChild(row, "Start").enabled)
    }

    function test_noticesAndNoPhonesHint() {
        const view = listedView(phonesComponent)
        verify(findChild(view, "toolsNotice").visible)
        verify(findChild(view, "emulatorNotice").visible)
        verify(!findChild(view, "New phone...").enabled)
        verify(findChild(view, "noPhonesHint").visible)
        // Java and the tools are not enough: sdkmanager installs nothing before the licences are accepted.
        sim.installJava()
        sim.installCommandLineTools()
        TolvaneApp.setup.refresh()
        verify(TolvaneApp.setup.cmdlineReady && TolvaneApp.setup.javaReady)
        verify(!findChild(view, "New phone...").enabled)
    }

    function test_startWatchesTheLabelAndWipeAppliesToOneStart() {
        sim.createPhone("Pixel_Start")
        const view = readyView(phonesComponent)
        verify(!findChild(view, "toolsNotice").visible)
        verify(!findChild(view, "emulatorNotice").visible)
        const row = rowFor(view, "Pixel_Start")
        const label = findChild(row, "statusLabel")
        compare(label.text, "Stopped")
        compare(label.Accessible.name, "Pixel_Start: Stopped")
        const seen = []
        const record = () => { if (seen[seen.length - 1] !== label.text) seen.push(label.text) }
        label.textChanged.connect(record)
        // The row says what the phone is in words, and keeps its height while the phone starts.
        verify(/^Pixel 7, Android [0-9.]+, Google APIs$/.test(findChild(row, "basedOn").text))
        // The phone's size is read on another thread and adds its line when it comes; the start must not.
        tryVerify(() => findChild(row, "diskSize").visible, 20000)
        const heights = []
        const jump = () => heights.push(row.height)
        row.heightChanged.connect(jump)
        mouseClick(findChild(row, "Start"))
        tryCompare(label, "text", "Running", 30000)
        compare(label.Accessible.name, "Pixel_Start: Running")
        label.textChanged.disconnect(record)
        row.heightChanged.disconnect(jump)
        compare(seen, ["Starting", "Booting", "Running"])
        compare(heights, [])
        verify(!findChild(row, "Start").enabled)
        verify(findChild(row, "Stop").enabled)
        verify(!findChild(row, "Delete").enabled)
        mouseClick(findChild(row, "Stop"))
        compare(label.text, "Stopping")
        verify(!findChild(row, "Stop").enabled)
        tryCompare(label, "text", "Stopped", 30000)

        // Wiping applies to the one start it makes.
        mouseClick(findChild(row, "Wipe data"))
        const dialog = findChild(view, "wipeDialog")
        tryVerify(() => dialog.opened)
        compare(dialog.title, "Wipe data on Pixel_Start?")
        // In the middle of the window, not under the row.
        const centre = dialog.contentItem.mapToItem(root, dialog.contentItem.width / 2, 0)
        fuzzyCompare(centre.x, root.width / 2, 1)
        fuzzyCompare(dialog.y + dialog.height / 2, root.height / 2, 1)
        mouseClick(findChild(dialog, "confirm"))
        const runner = store.runner("Pixel_Start")
        tryVerify(() => runner.lines.length > 0 && runner.lines[0].indexOf("-wipe-data") > 0, 20000)
        compare(runner.lines[0], "$ emulator -avd Pixel_Start -port 5554 -wipe-data -gpu auto")
        verify(!findChild(view, "coldBoot").checked)
        tryCompare(findChild(row, "statusLabel"), "text", "Running", 30000)
        runner.stop()
        tryCompare(findChild(row, "statusLabel"), "text", "Stopped", 30000)
        mouseClick(findChild(row, "Start"))
        tryVerify(() => runner.lines.length > 0 && runner.lines[0].indexOf("-wipe-data") < 0, 20000)
        tryCompare(runner, "state", EmulatorProcess.Running, 30000)
    }

    // Another phone going away leaves a row as it was: its open details and an open question stay.
    function test_rowsSurviveOtherPhonesGoing() {
        sim.createPhone("Pixel_A")
        sim.createPhone("Pixel_B")
        sim.setBehaviour("emulator.crash")
        const view = readyView(phonesComponent)
        const row = rowFor(view, "Pixel_A")
        mouseClick(findChild(row, "Start"))
        tryVerify(() => findChild(row, "startFailure") !== null, 30000)
        const box = findChild(row, "startFailure")
        // The summary names the emulator's own first error line.
        compare(findChild(box, "detailsSummary").text,
                "Pixel_A did not start cleanly: ERROR | Failed to initialize the graphics backend: could not create an OpenGL context")
        compare(findChild(row, "statusLabel").text, "Stopped")
        mouseClick(findChild(box, "showDetails"))
        verify(box.open)

        // Deleting asks first; the row says what is happening and offers nothing until the phone is gone.
        const other = rowFor(view, "Pixel_B")
        const deleteDialog = findChild(view, "deleteDialog")
        mouseClick(findChild(other, "Delete"))
        tryVerify(() => deleteDialog.opened)
        compare(deleteDialog.title, "Delete Pixel_B?")
        mouseClick(findChild(deleteDialog, "cancel"))
        tryVerify(() => !deleteDialog.visible)
        compare(rowFor(view, "Pixel_B"), other)
        mouseClick(findChild(other, "Delete"))
        tryVerify(() => deleteDialog.opened)
        mouseClick(findChild(deleteDialog, "confirm"))
        compare(findChild(other, "statusLabel").text, "Deleting")
        verify(findChild(other, "statusBusy").visible)
        for (const button of ["Start", "Stop", "Wipe data", "Delete"])
            verify(!findChild(other, button).enabled, button)
        tryVerify(() => !deleteDialog.visible)
        mouseClick(findChild(row, "Wipe data"))
        const wipeDialog = findChild(view, "wipeDialog")
        tryVerify(() => wipeDialog.opened)
        tryVerify(() => store.phones.length === 1 && !store.isLoading, 20000)
        waitForRendering(view)
        compare(rowFor(view, "Pixel_A"), row)
        verify(findChild(row, "startFailure").open)
        verify(wipeDialog.opened)
        compare(wipeDialog.title, "Wipe data on Pixel_A?")
        mouseClick(findChild(wipeDialog, "cancel"))
    }
}
