import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// One phone: its name and image, its state, and what can be done with it now.
ColumnLayout {
    id: row
    property var phone
    property PhoneStore store
    property var options
    property var wipeOptions
    readonly property EmulatorProcess runner: store.runner(phone.name)
    // A deleted phone's runner goes before the list that still shows the phone is refreshed.
    readonly property int state: runner ? runner.state : EmulatorProcess.Stopped
    readonly property bool stopped: state === EmulatorProcess.Stopped
    readonly property bool busy: state === EmulatorProcess.Starting || state === EmulatorProcess.Booting
                                 || state === EmulatorProcess.Stopping
    // Asked again whenever the row redraws for a change of state or of the setup checks.
    readonly property bool emulatorMissing: stopped && TolvaneApp.setup.emulatorReady !== null
                                            && !TolvaneApp.emulatorInstalled()

    spacing: 6

    RowLayout {
        Layout.fillWidth: true
        Layout.topMargin: 4
        Layout.bottomMargin: 4
        spacing: 8

        ColumnLayout {
            spacing: 2
            Layout.fillWidth: true
            Label {
                objectName: "phoneName"
                text: row.phone.name
                font: Style.headline
                elide: Text.ElideRight
                Layout.fillWidth: true
            }
            Label {
                visible: row.phone.basedOn.length > 0
                text: row.phone.basedOn
                font: Style.caption
                color: Style.secondary
                elide: Text.ElideRight
                Layout.fillWidth: true
            }
            Label {
                visible: row.phone.error.length > 0
                text: "Problem: " + row.phone.error
                font: Style.caption
                color: Style.red
                wrapMode: Text.Wrap
                Layout.fillWidth: true
            }
        }
        BusyIndicator {
            visible: row.busy
            running: visible
            Layout.preferredWidth: 18
            Layout.preferredHeight: 18
        }
        Label {
            objectName: "statusLabel"
            text: row.runner ? row.runner.stateName : "Stopped"
            color: row.state === EmulatorProcess.Running ? Style.green : Style.secondary
        }
        Button {
            objectName: "Start"
            text: "Start"
            enabled: row.stopped && !row.emulatorMissing
            onClicked: row.store.start(row.phone.name, row.options)
        }
        Button {
            objectName: "Stop"
            text: "Stop"
            enabled: !row.stopped && row.state !== EmulatorProcess.Stopping
            onClicked: row.store.runner(row.phone.name).stop()
        }
        Button {
            objectName: "Wipe data"
            text: "Wipe data"
            enabled: row.stopped && !row.emulatorMissing
            onClicked: wipeDialog.open()
        }
        Button {
            objectName: "Delete"
            text: "Delete"
            enabled: row.stopped
            onClicked: deleteDialog.open()
        }
    }
    Loader {
        active: row.runner !== null && row.runner.failure !== undefined
        visible: active
        Layout.fillWidth: true
        sourceComponent: DetailsBox {
            objectName: "startFailure"
            summary: row.phone.name + " did not start cleanly."
            details: row.runner.failure !== undefined ? row.runner.failure : ""
        }
    }
    FailureHint {
        id: failureHint
        objectName: "failureHint"
        text: row.runner && row.runner.failure !== undefined ? row.runner.failure : ""
        phone: row.phone.name
        startOptions: row.options
        fixEnabled: row.stopped && !row.emulatorMissing
        Layout.fillWidth: true
    }
    FailureHint {
        objectName: "lockHint"
        explained: row.stopped && failureHint.fix !== "removeLock" && row.store.lockedPhones.includes(row.phone.name)
                   ? KnownFailures.staleLock(row.phone.name) : ({})
        phone: row.phone.name
        startOptions: row.options
        fixEnabled: row.stopped && !row.emulatorMissing
        Layout.fillWidth: true
    }

    ConfirmDialog {
        id: deleteDialog
        objectName: "deleteDialog"
        title: "Delete " + row.phone.name + "?"
        message: "This removes the phone and all its data. It cannot be undone."
        confirmText: "Delete"
        onConfirmed: row.store.deletePhone(row.phone.name)
    }
    ConfirmDialog {
        id: wipeDialog
        objectName: "wipeDialog"
        title: "Wipe data on " + row.phone.name + "?"
        message: "All apps and data on this phone are erased. The phone starts with the factory reset (emulator -wipe-data)."
        confirmText: "Wipe and start"
        onConfirmed: row.store.start(row.phone.name, row.wipeOptions)
    }
}
