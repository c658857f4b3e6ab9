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
    // Started by another program; its emulator is not ours to start, wipe or delete.
    readonly property bool elsewhere: stopped && store.elsewhere[phone.name] !== undefined
    readonly property bool stoppingElsewhere: elsewhere && store.stoppingElsewhere.indexOf(phone.name) >= 0
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
                objectName: "diskSize"
                visible: row.store.phoneSizes[row.phone.name] !== undefined
                text: visible ? "Takes " + row.store.formatBytes(row.store.phoneSizes[row.phone.name]) + " on disk" : ""
                font: Style.caption
                color: Style.secondary
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
            visible: row.busy || row.stoppingElsewhere
            running: visible
            Layout.preferredWidth: 18
            Layout.preferredHeight: 18
        }
        Label {
            objectName: "statusLabel"
            text: row.stoppingElsewhere ? "Stopping" : row.elsewhere ? "Running outside Tolvane"
                                                                : row.runner ? row.runner.stateName : "Stopped"
            color: row.state === EmulatorProcess.Running || (row.elsewhere && !row.stoppingElsewhere) ? Style.green : Style.secondary
        }
        Label {
            objectName: "bootTime"
            visible: (row.state === EmulatorProcess.Starting || row.state === EmulatorProcess.Booting)
                     && row.runner.secondsSoFar !== undefined
            text: visible ? row.runner.secondsSoFar + " s" : ""
            color: Style.secondary
        }
        Button {
            objectName: "Start"
            text: "Start"
            enabled: row.stopped && !row.emulatorMissing && !row.elsewhere
            onClicked: row.store.start(row.phone.name, row.options)
        }
        Button {
            objectName: "Stop"
            text: "Stop"
            enabled: (!row.stopped && row.state !== EmulatorProcess.Stopping) || (row.elsewhere && !row.stoppingElsewhere)
            onClicked: row.elsewhere ? row.store.stopElsewhere(row.phone.name) : row.store.runner(row.phone.name).stop()
        }
        Button {
            objectName: "Wipe data"
            text: "Wipe data"
            enabled: row.stopped && !row.emulatorMissing && !row.elsewhere
            onClicked: wipeDialog.open()
        }
        Button {
            objectName: "Delete"
            text: "Delete"
            enabled: row.stopped && !row.elsewhere
            onClicked: deleteDialog.open()
        }
    }
    RowLayout {
        objectName: "slowBoot"
        visible: row.runner !== null && row.runner.slowBoot
        Layout.fillWidth: true
        Label {
            text: "This is taking longer than usual. The logs window shows what the emulator is doing."
            color: Style.orange
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        Button {
            text: "Show logs"
            onClicked: {
                const window = ApplicationWindow.window
                if (window && typeof window.openLogs === "function")
                    window.openLogs()
            }
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
