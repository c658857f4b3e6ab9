import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// The checklist that makes the Mac ready. Nothing is installed unless its button is pressed.
ScrollView {
    id: view
    property SetupController setup: TolvaneApp.setup
    readonly property bool jobRunning: setup.job.isRunning
    // The licences are a numbered step only while their card is shown: the steps after it count on from it.
    readonly property bool licenseStep: setup.cmdlineReady && setup.javaReady && !setup.licensesAccepted
    readonly property bool emulatorOk: setup.emulatorReady && setup.platformToolsReady
    readonly property string emulatorDetail: {
        if (emulatorOk)
            return "Installed"
        if (!setup.cmdlineReady || !setup.javaReady)
            return "Finish the requirements first."
        if (setup.licensesAccepted)
            return "Runs sdkmanager for emulator and platform-tools. sdkmanager does not report the download size beforehand; expect several hundred MB."
        return "Accept the SDK licenses first."
    }

    contentWidth: availableWidth
    clip: true
    // Each time the tab comes on screen, including the first.
    onVisibleChanged: {
        if (visible)
            setup.refresh()
    }
    Component.onCompleted: {
        if (visible)
            setup.refresh()
    }

    ColumnLayout {
        width: view.availableWidth
        spacing: 16

        Card {
            Layout.fillWidth: true
            Layout.topMargin: 12
            Layout.leftMargin: 12
            Layout.rightMargin: 12
            Label {
                text: "1. Requirements"
                font: Style.headline
            }
            Label {
                text: "Nothing is installed without you pressing its button. Installs run Homebrew and stream its output below."
                font: Style.caption
                color: Style.secondary
                wrapMode: Text.Wrap
                Layout.fillWidth: true
            }
            RequirementRow {
                name: "Homebrew"
                ok: view.setup.brewReady
                detail: ok ? "Found" : "Not found. This app never installs Homebrew itself."
                buttonText: "Get Homebrew"
                onActivated: TolvaneApp.openHomebrewSite()
            }
            RequirementRow {
                name: "Java (OpenJDK 17)"
                ok: view.setup.javaReady
                detail: ok ? "Found" : view.setup.javaNote !== "" ? view.setup.javaNote
                                                                   : "Needed by sdkmanager and avdmanager. Installs with: brew install openjdk@17"
                buttonText: "Install Java"
                buttonEnabled: view.setup.brewReady && !view.jobRunning
                onActivated: view.setup.installJava()
            }
            RequirementRow {
                name: "Android command line tools"
                ok: view.setup.cmdlineReady
                detail: ok ? "Found sdkmanager and avdmanager" : "Installs with: brew install --cask android-commandlinetools"
                buttonText: "Install tools"
                buttonEnabled: view.setup.brewReady && !view.jobRunning
                onActivated: view.setup.installCommandLineTools()
            }
        }

        Card {
            objectName: "licenseCard"
            visible: view.licenseStep
            spacing: 8
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
            Label {
                text: "2. SDK licenses"
                font: Style.headline
            }
            Label {
                text: "Google requires you to accept the Android SDK licenses before anything can be installed. Read them first."
                font: Style.caption
                color: Style.secondary
                wrapMode: Text.Wrap
                Layout.fillWidth: true
            }
            Rectangle {
                visible: view.setup.licenseText !== undefined
                radius: 6
                color: Style.logBackground
                Layout.fillWidth: true
                Layout.preferredHeight: 200
                ScrollView {
                    anchors.fill: parent
                    anchors.margins: 6
                    clip: true
                    TextEdit {
                        objectName: "licenseText"
                        width: parent.width
                        text: view.setup.licenseText !== undefined ? view.setup.licenseText : ""
                        textFormat: TextEdit.PlainText
                        readOnly: true
                        selectByMouse: true
                        wrapMode: TextEdit.Wrap
                        font: Style.monoCaption
                        color: Style.text
                        selectionColor: Style.accent
                        Accessible.role: Accessible.EditableText
                        Accessible.name: "Android SDK license text"
                        Accessible.readOnly: true
                    }
                }
            }
            RowLayout {
                visible: view.setup.licenseText !== undefined
                Button {
                    objectName: "I accept these licenses"
                    text: "I accept these licenses"
                    enabled: !view.jobRunning
                    onClicked: view.setup.acceptLicenses()
                }
                Button {
                    objectName: "Hide"
                    text: "Hide"
                    onClicked: view.setup.hideLicenseText()
                }
            }
            RowLayout {
                visible: view.setup.licenseText === undefined
                Button {
                    objectName: "Show license text"
                    text: "Show license text"
                    enabled: !view.setup.licenseLoading && !view.jobRunning
                    onClicked: view.setup.loadLicenseText()
                }
                Spinner {
                    objectName: "licenseLoading"
                    visible: view.setup.licenseLoading
                    label: "Loading the license text"
                }
            }
        }

        Card {
            spacing: 8
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
            Label {
                objectName: "emulatorHeading"
                text: (view.licenseStep ? "3" : "2") + ". Emulator"
                font: Style.headline
            }
            RequirementRow {
                name: "Emulator and platform tools (adb)"
                ok: view.emulatorOk
                detail: view.emulatorDetail
                buttonText: "Install the emulator"
                buttonEnabled: view.setup.cmdlineReady && view.setup.javaReady && view.setup.licensesAccepted
                               && !view.jobRunning
                onActivated: view.setup.installEmulator()
            }
        }

        Label {
            objectName: "setupMessage"
            visible: view.setup.message !== undefined
            text: view.setup.message !== undefined ? view.setup.message : ""
            textFormat: Text.PlainText
            color: Style.red
            wrapMode: Text.Wrap
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
        }

        // Once a step has ended, what the Mac still needs, as checked again just now.
        Label {
            objectName: "setupNext"
            visible: !view.jobRunning && view.setup.job.lineModel.count > 0 && view.setup.message === undefined
            text: view.setup.nextStep
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
        }
        JobLogView {
            job: view.setup.job
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
        }
        FailureHint {
            id: setupHint
            objectName: "setupHint"
            text: (view.setup.message !== undefined ? view.setup.message + "\n" : "") + setupHint.failedJobText(view.setup.job)
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
        }

        TextEdit {
            objectName: "sdkFolder"
            text: "SDK folder in use: " + view.setup.sdkRoot
            readOnly: true
            selectByMouse: true
            font: Style.caption
            color: Style.secondary
            selectionColor: Style.accent
            wrapMode: TextEdit.WrapAnywhere
            Accessible.role: Accessible.StaticText
            Accessible.name: text
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
            Layout.bottomMargin: 12
        }
    }
}
