import QtQuick
import Tolvane

// Each known failure, printed by the simulated tools in the real tools' words, is explained where it
// is shown, with the fix the app can carry out.
TolvaneTestCase {
    id: root
    name: "FailureHints"
    height: 900

    readonly property string phone: "Hint_Phone"

    Component { id: setupComponent; SetupView { anchors.fill: parent } }
    Component { id: phonesComponent; PhonesView { anchors.fill: parent } }
    Component { id: appsComponent; AppsView { anchors.fill: parent } }

    // Shows the failure on its surface and returns the hint beside it.
    function failOn(surface, failure) {
        if (surface === "setup") {
            sim.installBrew()
            sim.installJava()
            sim.installCommandLineTools()
            if (failure !== "licences-not-accepted")
                sim.acceptLicenses()
            sim.setBehaviour("known-failure", failure)
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
            else
                sim.setBehaviour("known-failure", failure)
            const view = listedView(phonesComponent)
            startPhone(phone)
            tryVerify(() => store.runner(phone).failure !== undefined
                      && store.runner(phone).state === EmulatorProcess.Stopped, 30000)
            return findChild(view, "failureHint")
        }
        startPhone(phone)
        tryCompare(store.runner(phone), "state", EmulatorProcess.Running, 30000)
        const view = createTemporaryObject(appsComponent, root)
        const app = sim.writeApk(failure === "not-an-apk" ? "broken.apk" : "com.example.hint.apk")
        if (failure === "update-incompatible") {
            installer.install([app], "emulator-5554")
            tryVerify(() => !installer.busy && installer.latestOutput.endsWith("Success"), 20000)
        }
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

    function test_explained_data() {
        return [
            { tag: "no-matching-abis", surface: "apps", what: "The app has native code only", todo: "Ask the app's maker", fix: "" },
            { tag: "update-incompatible", surface: "apps", what: "The phone already has this app signed", todo: "Uninstall the installed version", fix: "Uninstall and install again" },
            { tag: "version-downgrade", surface: "apps", what: "The phone already has a newer version", todo: "Uninstall the app in the list", fix: "" },
            { tag: "insufficient-storage", surface: "apps", what: "The phone has no room", todo: "Uninstall apps you do not need", fix: "" },
            { tag: "not-an-apk", surface: "apps", what: "Android could not read this file", todo: "Download the .apk again", fix: "" },
            { tag: "adb-version", surface: "packages", what: "Another program runs its own adb", todo: "Quit Android Studio", fix: "" },
            { tag: "java-too-old", surface: "store", what: "The Android command line tools need Java 17", todo: "Install Java (OpenJDK 17)", fix: "" },
            { tag: "java-missing", surface: "setup", what: "The Android command line tools found no Java", todo: "Install Java (OpenJDK 17)", fix: "" },
            { tag: "licences-not-accepted", surface: "setup", what: "Google's SDK licences have not been accepted", todo: "Read and accept the SDK licences", fix: "" },
            { tag: "disk-full", surface: "setup", what: "The Mac's disk is full.", todo: "Free some space", fix: "" },
            { tag: "system-image-missing", surface: "phone", what: "The Android system image this phone", todo: "Install the system image again", fix: "Install the system image" },
            { tag: "x86-phone", surface: "phone", what: "This phone was made with an Intel", todo: "Create a new phone", fix: "" },
            { tag: "hypervisor", surface: "phone", what: "macOS did not let the emulator", todo: "Quit other virtual machines", fix: "" },
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

    // Every entry of the table is fed through its surface above.
    function test_everyEntryIsCovered() {
        const tags = test_explained_data().map(row => row.tag)
        compare(KnownFailures.explain("Success").name, undefined)
        compare(tags.length, KnownFailures.names().length)
        for (const name of KnownFailures.names())
            verify(tags.includes(name), name)
    }

    // The phone's own system image is installed from its row, and the install's log shows there.
    function test_installMissingImageFromTheRow() {
        const hint = failOn("phone", "system-image-missing")
        mouseClick(findChild(hint, "hintFix"))
        tryVerify(() => store.imageJob.lines.length > 0, 20000)
        verify(store.imageJob.lines[0].endsWith(" system-images;android-34;google_apis;arm64-v8a"), store.imageJob.lines[0])
        verify(findChild(hint, "cancelJob") !== null)
        tryVerify(() => !store.imageJob.isRunning, 30000)
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
        mouseClick(fix)
        tryCompare(store.runner(phone), "state", EmulatorProcess.Running, 30000)
        verify(!hint.visible)
    }

    // Uninstalling the app signed by someone else, confirmed, installs the new one.
    function test_reinstallAfterConfirmation() {
        const hint = failOn("apps", "update-incompatible")
        const fix = findChild(hint, "hintFix")
        mouseClick(fix)
        const dialog = findChild(hint, "reinstallDialog")
        tryCompare(dialog, "opened", true)
        verify(dialog.message.includes("com.example.hint.apk"))
        mouseClick(findChild(dialog, "confirm"))
        tryVerify(() => installer.latestOutput.startsWith("Uninstalling com.example.hint...\nSuccess\nInstalling com.example.hint.apk...\nPerforming Streamed Install\nSuccess"), 20000)
    }
}
