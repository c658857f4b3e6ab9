import QtQuick
import Tolvane

TolvaneTestCase {
    id: root
    name: "AppsView"

    Component {
        id: appsComponent
        AppsView { anchors.fill: parent }
    }
    Component {
        id: contentComponent
        ContentView { anchors.fill: parent }
    }

    // In the smallest window, what went wrong with an install and its fix show without scrolling.
    function test_installHintInView() {
        runningPhone("Pixel_Hint")
        const content = createTemporaryObject(contentComponent, root)
        findChild(content, "tabs").currentIndex = 2
        tryVerify(() => findChild(content, "appsView") !== null && findChild(content, "appsView").visible, 5000)
        const view = findChild(content, "appsView")
        const app = sim.writeApk("com.example.hint.apk")
        installer.install([app], view.serial)
        tryVerify(() => !installer.busy && installer.latestOutput.endsWith("Success"), 20000)
        sim.setBehaviour("known-failure", "update-incompatible")
        installer.install([app], view.serial)
        const hint = findChild(view, "outputHint")
        const fix = findChild(hint, "hintFix")
        tryVerify(() => fix.visible && !installer.busy, 20000)
        waitForRendering(content)
        compare(view.contentItem.contentY, 0)
        for (const item of [findChild(hint, "hintWhat"), fix]) {
            const corner = item.mapToItem(root, item.width, item.height)
            verify(corner.y <= root.height && corner.x <= root.width, item.objectName + " ends at " + corner.y)
        }
    }

    function test_phoneStartedElsewhereIsATarget() {
        sim.makeReady()
        sim.createPhone("Pixel_Outside")
        const serial = sim.startPhone("Pixel_Outside", 5556)
        store.refresh()
        tryVerify(() => String(store.elsewhere.phones["Pixel_Outside"]) === serial, 20000)
        const view = createTemporaryObject(appsComponent, root)
        compare(view.serial, serial)
        compare(findChild(view, "phonePicker").currentText, "Pixel_Outside")
        view.chooseFiles([sim.writeApk("com.example.outside.apk")])
        tryVerify(() => installer.packages.join() === "com.example.outside", 30000, installer.output)
        store.elsewhere.stop("Pixel_Outside")
        tryVerify(() => store.runningTargets.length === 0, 20000)
        verify(findChild(view, "noPhoneRunning").visible)
    }

    // An empty log says so; with no phone running, the box still shows what was logged before.
    function test_noPhoneRunning() {
        const fresh = sim.freshInstaller()
        const view = createTemporaryObject(appsComponent, root, { installer: fresh })
        verify(findChild(view, "noPhoneRunning").visible)
        verify(!findChild(view, "dropZone").visible)
        compare(findChild(view, "adbOutput").text, "Nothing yet.")
        fresh.install([], "")
        compare(findChild(view, "adbOutput").text, "Only .apk files can be installed.")
    }

    // A hidden tab lists nothing; shown, it lists the phone's apps, and a phone without any says so.
    function test_listsOnlyWhenShown() {
        sim.makeReady()
        sim.createPhone("Pixel_Hidden")
        const fresh = sim.freshInstaller()
        const view = createTemporaryObject(appsComponent, root, { visible: false, installer: fresh })
        startPhone("Pixel_Hidden")
        tryCompare(store.runner("Pixel_Hidden"), "state", EmulatorProcess.Running, 30000)
        tryCompare(view, "serial", "emulator-5554")
        // A listing of its own, started later, ends after any the hidden tab would have started.
        const probe = sim.freshInstaller()
        probe.refreshPackages(view.serial)
        tryVerify(() => probe.packagesNote !== undefined, 20000)
        compare(fresh.packagesNote, undefined)
        view.visible = true
        tryCompare(fresh, "packagesNote", "No apps installed by you yet.", 20000)
    }

    function test_installUninstallAndScreenshot() {
        runningPhone("Pixel_Apps")
        const view = createTemporaryObject(appsComponent, root)
        verify(findChild(view, "dropZone").visible)
        const before = installer.output.length
        view.dropFiles([sim.writeApk("com.example.one.apk"), sim.writeApk("com.example.two.apk"), sim.writeApk("com.example.three.apk")])
        // While it installs, only listing and dropping stay offered.
        verify(installer.busy)
        for (const name of ["Take screenshot", "Choose APK..."])
            verify(!findChild(view, name).enabled, name)
        verify(findChild(view, "Refresh").enabled)
        tryVerify(() => installer.packages.length === 3 && !installer.busy, 30000, installer.output)
        const added = installer.output.slice(before).split("\n")
        compare(added.filter(line => line.startsWith("Installing ")).length, 3)
        compare(added.filter(line => line === "Success").length, 3)
        mouseClick(findChild(view, "uninstall com.example.two"))
        tryVerify(() => installer.packages.join() === "com.example.one,com.example.three", 30000, installer.output)
        verify(installer.output.endsWith("Success"))
        // A listing that fails keeps the list, dimmed, and says it may be out of date.
        sim.setBehaviour("adb.pm.fail", "1")
        mouseClick(findChild(view, "Refresh"))
        const outOfDate = findChild(view, "packagesOutOfDate")
        tryVerify(() => outOfDate.visible, 20000)
        compare(installer.packages.join(), "com.example.one,com.example.three")
        verify(findChild(view, "package com.example.one").opacity < 1)
        verify(findChild(view, "packagesNote").text.startsWith("Could not list apps: "))
        sim.clearBehaviour("adb.pm.fail")
        mouseClick(findChild(view, "Refresh"))
        tryVerify(() => !outOfDate.visible, 20000)
        compare(findChild(view, "package com.example.one").opacity, 1)

        // The screenshot is saved where the save dialog's chooser says.
        const target = sim.root() + "/Shot.png"
        const answer = proposed => {
            compare(proposed, "Android Screenshot.png")
            TolvaneApp.saveChooser.accept("file://" + target)
        }
        TolvaneApp.saveChooser.saveRequested.connect(answer)
        mouseClick(findChild(view, "Take screenshot"))
        tryVerify(() => installer.output.endsWith("Saved screenshot to Shot.png."), 30000)
        TolvaneApp.saveChooser.saveRequested.disconnect(answer)
        verify(sim.isPng(target))
    }
}
