import QtQuick
import Tolvane

// Known failures, printed by the simulated tools in the real tools' words, are explained on each surface
// that shows failures, with the fixes the app can carry out. tst_knownfailures tries every wording.
TolvaneTestCase {
    id: root
    name: "FailureHints"
    height: 900

    readonly property string phone: "Hint_Phone"
    // The Apps tab the last failure on it was shown in.
    property var appsView: null

    Component { id: setupComponent; SetupView { anchors.fill: parent } }
    Component { id: phonesComponent; PhonesView { anchors.fill: parent } }
    Component { id: appsComponent; AppsView { anchors.fill: parent } }

    // Shows the failure on its surface and returns the hint beside it: the licences need no switch (a full
    // disk is met once they are accepted), the phone's failures come from its folder.
    function failOn(surface, failure) {
        if (surface === "setup") {
            sim.installBrew()
            sim.installJava()
            sim.installCommandLineTools()
            if (failure === "disk-full") {
                sim.acceptLicenses()
                sim.setBehaviour("known-failure", failure)
            }
            const view = createTemporaryObject(setupComponent, root)
            TolvaneApp.setup.installEmulator()
            tryVerify(() => !TolvaneApp.setup.job.isRunning && TolvaneApp.setup.message !== undefined, 20000)
            return findChild(view, "setupHint")
        }
        sim.makeReady()
        sim.createPhone(phone)
        TolvaneApp.setup.refresh()
        if (surface === "store") {
            sim.setBehaviour("known-failure", failure)
            const view = createTemporaryObject(phonesComponent, root)
            tryVerify(() => store.errorSummary !== undefined, 20000)
            return findChild(view, "storeHint")
        }
        if (surface === "phone") {
            if (failure === "system-image-missing")
                sim.setBehaviour("emulator.script", "ANDROID_SDK_ROOT=$ANDROID_SDK_ROOT/gone")
            else if (failure === "stale-lock")
                sim.writeFile(".android/avd/" + phone + ".avd/multiinstance.lock", "")
            const view = listedView(phonesComponent)
            startPhone(phone)
            tryVerify(() => store.runner(phone).failure !== undefined
                      && store.runner(phone).state === EmulatorProcess.Stopped, 30000)
            return findChild(view, "failureHint")
        }
        startPhone(phone)
        tryCompare(store.runner(phone), "state", EmulatorProcess.Running, 30000)
        const view = createTemporaryObject(appsComponent, root)
        appsView = view
        // Installed once, so that the next install is refused as one signed by someone else.
        const app = sim.writeApk("com.example.hint.apk")
        installer.install([app], "emulator-5554")
        tryVerify(() => !installer.busy && installer.latestOutput.endsWith("Success"), 20000)
        sim.setBehaviour("known-failure", failure)
        if (surface === "packages") {
            installer.refreshPackages("emulator-5554")
            tryVerify(() => installer.packagesNote !== undefined && installer.packagesNote.startsWith("Could not list apps: adb server"), 20000)
            return findChild(view, "packagesHint")
        }
        installer.install([app], "emulator-5554")
        tryVerify(() => !installer.busy && installer.latestOutput.split("\n").length > 1, 20000)
        return findChild(view, "outputHint")
    }

    // The failures with fixes of their own are shown, and fixed, by the tests below.
    function test_explained_data() {
        return [
            { tag: "adb-version", surface: "packages", what: "Another program runs its own adb", todo: "Quit Android Studio", fix: "" },
            { tag: "java-too-old", surface: "store", what: "The Android command line tools need Java 17", todo: "Install Java (OpenJDK 17)", fix: "" },
            { tag: "disk-full", surface: "setup", what: "The Mac's disk is too full.", todo: "The emulator and platform tools need about 1 GB.", fix: "" },
            { tag: "licences-not-accepted", surface: "setup", what: "Google's SDK licences have not been accepted", todo: "Read and accept the SDK licences", fix: "" },
            { tag: "stale-lock", surface: "phone", what: "The phone is still marked as in use", todo: "If no emulator window", fix: "Remove lock and start" },
        ]
    }

    function test_explained(data) {
        const hint = failOn(data.surface, data.tag)
        verify(hint.visible, "no hint for " + data.tag + " in: " + hint.text)
        compare(hint.explained.name, data.tag)
        verify(findChild(hint, "hintWhat").text.startsWith(data.what), findChild(hint, "hintWhat").text)
        verify(findChild(hint, "hintTodo").text.startsWith(data.todo), findChild(hint, "hintTodo").text)
        const fix = findChild(hint, "hintFix")
        compare(fix.visible ? fix.text : "", data.fix)
    }

    // The phone's own system image is installed from its row, and the install's log shows there. Until the
    // images are read again the fix waits and says so; then the hint says what happened and offers the start.
    function test_installMissingImageFromTheRow() {
        const hint = failOn("phone", "system-image-missing")
        sim.clearBehaviour("emulator.script")
        sim.setBehaviour("sdkmanager.script", "case \"$*\" in *--list*) sleep 1 ;; esac")
        const fix = findChild(hint, "hintFix")
        mouseClick(fix)
        tryVerify(() => store.imageJob.lines.length > 0, 20000)
        verify(store.imageJob.lines[0].endsWith(" system-images;android-34;google_apis;arm64-v8a"), store.imageJob.lines[0])
        verify(findChild(hint, "cancelJob") !== null)
        tryVerify(() => !store.imageJob.isRunning, 30000)
        compare(findChild(hint, "hintStep").text, "Checking whether the system image is installed now...")
        verify(findChild(hint, "hintStep").visible)
        verify(!fix.enabled)
        const outcome = findChild(hint, "hintOutcome")
        tryVerify(() => outcome.visible, 20000)
        compare(outcome.text, "System image installed. Start " + phone + " now.")
        // The failed start's box goes: what it blamed has been fixed.
        compare(findChild(hint.parent, "startFailure"), null)
        verify(findChild(hint, "jobHeading").text.startsWith("Installed Android 14"), findChild(hint, "jobHeading").text)
        verify(!fix.visible)
        verify(!findChild(hint, "hintStep").visible)
        mouseClick(findChild(hint, "hintStart"))
        tryCompare(store.runner(phone), "state", EmulatorProcess.Running, 30000)
        verify(!hint.visible)
    }

    // A crashed emulator's locks: its row offers to remove them and start, and hides the offer once it runs.
    function test_staleLockRow() {
        sim.createPhone(phone)
        sim.setBehaviour("emulator.die")
        const view = readyView(phonesComponent)
        startPhone(phone)
        tryVerify(() => store.runner(phone).failure !== undefined, 30000)
        const hint = findChild(view, "lockHint")
        tryVerify(() => hint.visible, 20000)
        compare(findChild(hint, "hintWhat").text, phone + " was not shut down cleanly: its emulator left lock files in the phone's folder.")
        sim.clearBehaviour("emulator.die")
        const fix = findChild(hint, "hintFix")
        compare(fix.text, "Remove lock and start")
        // While it asks adb whether something else runs the phone, the fix waits and says so.
        sim.setBehaviour("adb.script", "if [ \"$1\" = devices ]; then sleep 1; fi")
        mouseClick(fix)
        compare(findChild(hint, "hintStep").text, "Checking that no emulator runs " + phone + "...")
        verify(!fix.enabled)
        tryCompare(store.runner(phone), "state", EmulatorProcess.Running, 30000)
        verify(!hint.visible)
    }

    // Uninstalling the app signed by someone else, confirmed, installs the new one, on the phone the
    // install failed on: with another phone picked, or once that phone stops, the fix is withdrawn.
    function test_reinstallAfterConfirmation() {
        const hint = failOn("apps", "update-incompatible")
        const fix = findChild(hint, "hintFix")
        const unavailable = findChild(hint, "hintUnavailable")
        verify(fix.visible && !unavailable.visible)
        sim.createPhone("Hint_Other")
        sim.startPhone("Hint_Other", 5556)
        store.refresh()
        tryVerify(() => store.runningTargets.length === 2, 20000)
        appsView.selectedName = "Hint_Other"
        compare(appsView.serial, "emulator-5556")
        verify(!fix.visible)
        compare(unavailable.text, "This happened on Hint_Phone. Pick Hint_Phone above to fix it there.")
        appsView.selectedName = phone
        verify(fix.visible && !unavailable.visible)

        mouseClick(fix)
        const dialog = findChild(hint, "reinstallDialog")
        tryCompare(dialog, "opened", true)
        compare(dialog.message, "Uninstall com.example.hint from Hint_Phone and install com.example.hint.apk again? Its data on the phone is deleted.")
        mouseClick(findChild(dialog, "confirm"))
        tryVerify(() => installer.latestOutput.startsWith("Uninstalling com.example.hint...\nSuccess\nInstalling com.example.hint.apk...\nPerforming Streamed Install\nSuccess"), 20000)
        compare(installer.latestSerial, "emulator-5554")
        // Where the hint stood, what the fix did; until the next action.
        const outcome = findChild(appsView, "fixOutcome")
        tryCompare(outcome, "text", "Uninstalled com.example.hint and installed com.example.hint.apk.")
        verify(outcome.visible && !hint.visible)

        installer.install([sim.writeApk("com.example.hint.apk")], "emulator-5554")
        tryVerify(() => fix.visible, 20000)
        verify(!outcome.visible)
        store.runner(phone).stop()
        tryVerify(() => !fix.visible, 30000)
        compare(unavailable.text, "Hint_Phone, where this happened, is no longer running.")
    }
}
