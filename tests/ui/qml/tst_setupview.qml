import QtQuick
import Tolvane

TolvaneTestCase {
    id: root
    name: "SetupView"
    height: 900

    readonly property SetupController setup: TolvaneApp.setup

    Component {
        id: setupComponent
        SetupView { anchors.fill: parent }
    }

    function init() {
        tryVerify(() => !setup.job.isRunning, 20000)
        sim.reset()
        setup.hideLicenseText()
    }

    function test_homebrewMissing() {
        const view = createTemporaryObject(setupComponent, root)
        setup.refresh()
        verify(button(view, "Get Homebrew").visible)
        verify(button(view, "Get Homebrew").enabled)
        for (const text of ["Install Java", "Install tools"]) {
            verify(button(view, text).visible, text)
            verify(!button(view, text).enabled, text)
        }
        // The steps are numbered without a gap when the licence card is not shown.
        verify(!findChild(view, "licenseCard").visible)
        compare(findChild(view, "emulatorHeading").text, "2. Emulator")
        verify(!button(view, "Install the emulator").enabled)
        compare(findChild(view, "sdkFolder").text, "SDK folder in use: " + sim.sdkRoot())
    }

    // A failed install says so below the steps; the next try installs Java and the buttons move on.
    function test_installJavaThroughTheButton() {
        sim.installBrew()
        sim.setBehaviour("brew.fail")
        const view = createTemporaryObject(setupComponent, root)
        setup.refresh()
        verify(button(view, "Install Java").enabled)
        compare(findChild(view, "emulatorHeading").text, "2. Emulator")
        const icon = findChild(view, "status Java (OpenJDK 17)")
        compare(icon.Accessible.name, "Java (OpenJDK 17): not found")
        press(view, "Install Java")
        tryVerify(() => setup.message !== undefined, 20000)
        const message = findChild(view, "setupMessage")
        verify(message.visible)
        compare(message.text, "Java install failed. See the log for details.")
        const heading = findChild(view, "jobHeading")
        compare(heading.text, "Installing Java (OpenJDK 17) failed")
        verify(!findChild(view, "setupNext").visible)
        sim.clearBehaviour("brew.fail")
        press(view, "Install Java")
        tryVerify(() => setup.javaReady, 20000)
        verify(!message.visible)
        // The finished job looks finished, and the next step is named.
        compare(heading.text, "Installed Java (OpenJDK 17)")
        verify(!findChild(view, "jobProgress").visible)
        verify(findChild(view, "setupNext").visible)
        compare(findChild(view, "setupNext").text, "Next: press Install tools.")
        compare(icon.Accessible.name, "Java (OpenJDK 17): found")
        verify(!button(view, "Install Java").visible)
        verify(button(view, "Install tools").enabled)
    }

    function test_buttonsDisabledWhileAJobRuns() {
        sim.installBrew()
        sim.setTimeScale(1.0)
        const view = createTemporaryObject(setupComponent, root)
        setup.refresh()
        press(view, "Install tools")
        tryVerify(() => setup.job.isRunning)
        verify(!button(view, "Install Java").enabled)
        verify(!button(view, "Install tools").enabled)
        const cancel = findChild(view, "cancelJob")
        verify(cancel.visible)
        mouseClick(cancel)
        tryVerify(() => !setup.job.isRunning, 20000)
        compare(setup.job.lines[setup.job.lines.length - 1], "Cancelled.")
        compare(findChild(view, "jobHeading").text, "Cancelled: Installing Android command line tools")
        verify(!findChild(view, "jobProgress").visible)
        verify(!cancel.visible)
        verify(button(view, "Install tools").enabled)
        verify(setup.message === undefined)
    }

    function test_licenceCardFlow() {
        sim.installBrew()
        sim.installJava()
        sim.installCommandLineTools()
        const view = createTemporaryObject(setupComponent, root)
        setup.refresh()
        const card = findChild(view, "licenseCard")
        verify(card.visible)
        compare(findChild(view, "emulatorHeading").text, "3. Emulator")

        press(view, "Show license text")
        tryVerify(() => setup.licenseText !== undefined, 20000)
        verify(findChild(view, "licenseText").text.length > 0)
        verify(!button(view, "Show license text").visible)
        verify(button(view, "Hide").enabled)

        press(view, "Hide")
        verify(setup.licenseText === undefined)
        verify(button(view, "Show license text").visible)
        verify(!setup.licensesAccepted)

        press(view, "Show license text")
        tryVerify(() => setup.licenseText !== undefined, 20000)
        press(view, "I accept these licenses")
        tryVerify(() => setup.licensesAccepted, 20000)
        verify(!card.visible)
        compare(findChild(view, "emulatorHeading").text, "2. Emulator")
        press(view, "Install the emulator")
        tryVerify(() => setup.emulatorReady && setup.platformToolsReady, 20000)
        verify(!button(view, "Install the emulator").visible)
    }
}
