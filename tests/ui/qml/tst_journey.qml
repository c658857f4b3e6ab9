import QtQuick
import QtQuick.Controls
import QtTest
import Tolvane

// A whole first day, through the views alone: a fresh Mac with Homebrew, made ready on the Setup tab,
// a new phone, started, an app installed, a screenshot, stopped and deleted.
Item {
    id: root
    width: 780
    height: 900

    Component {
        id: contentComponent
        ContentView { anchors.fill: parent }
    }

    TestCase {
        name: "Journey"
        when: windowShown

        function click(parent, name) {
            const found = findChild(parent, name)
            verify(found, name)
            tryVerify(() => found.visible && found.enabled, 30000, name + " should be usable")
            waitForRendering(root)
            mouseClick(found)
        }

        function test_freshMacToScreenshot() {
            sim.reset()
            sim.installBrew()
            const content = createTemporaryObject(contentComponent, root)
            const tabs = findChild(content, "tabs")
            const setup = TolvaneApp.setup

            click(content, "Install Java")
            tryVerify(() => setup.javaReady, 30000)
            click(content, "Install tools")
            tryVerify(() => setup.cmdlineReady, 30000)
            click(content, "Show license text")
            tryVerify(() => setup.licenseText !== undefined, 30000)
            click(content, "I accept these licenses")
            tryVerify(() => setup.licensesAccepted, 30000)
            click(content, "Install the emulator")
            tryVerify(() => setup.emulatorReady && setup.platformToolsReady, 30000)

            tabs.currentIndex = 1
            click(content, "New phone...")
            const phones = findChild(content, "phonesView")
            tryVerify(() => phones.sheet !== null)
            const sheet = phones.sheet
            tryVerify(() => sheet.chosenImage !== undefined && sheet.chosenDevice !== undefined, 30000)
            click(sheet, "Install it")
            tryVerify(() => sheet.chosenImage.installed, 30000)
            click(sheet, "Create")
            tryVerify(() => phones.sheet === null, 30000)

            const list = findChild(phones, "phoneList")
            tryVerify(() => list.count === 1 && list.itemAtIndex(0) !== null, 30000)
            const row = list.itemAtIndex(0)
            click(row, "Start")
            tryCompare(findChild(row, "statusLabel"), "text", "Running", 30000)

            tabs.currentIndex = 2
            const apps = findChild(content, "appsView")
            tryVerify(() => findChild(apps, "dropZone").visible)
            apps.dropFiles([sim.writeApk("com.example.journey.apk")])
            tryVerify(() => TolvaneApp.installer.packages.indexOf("com.example.journey") >= 0, 30000)

            const target = sim.root() + "/Journey.png"
            const answer = () => TolvaneApp.saveChooser.accept("file://" + target)
            TolvaneApp.saveChooser.saveRequested.connect(answer)
            click(apps, "Take screenshot")
            tryVerify(() => TolvaneApp.installer.output.endsWith("Saved screenshot to Journey.png."), 30000)
            TolvaneApp.saveChooser.saveRequested.disconnect(answer)
            verify(sim.isPng(target))

            tabs.currentIndex = 1
            click(row, "Stop")
            tryCompare(findChild(row, "statusLabel"), "text", "Stopped", 30000)
            click(row, "Delete")
            const dialog = findChild(phones, "deleteDialog")
            tryVerify(() => dialog.opened)
            mouseClick(findChild(dialog, "confirm"))
            tryVerify(() => TolvaneApp.store.phones.length === 0, 30000)
        }
    }
}
