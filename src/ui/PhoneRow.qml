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
    // True from the confirmed deletion until the store has finished with it.
    property bool deleting: false
    // A thin line above every row but the first.
    property bool separator: false
    signal wipeRequested
    signal deleteRequested

    readonly property EmulatorProcess runner: store.runner(phone.name)
    // A deleted phone's runner goes before the list that still shows the phone is refreshed.
    readonly property int state: runner ? runner.state : EmulatorProcess.Stopped
    readonly property bool stopped: state === EmulatorProcess.Stopped && !deleting
    readonly property bool busy: deleting || state === EmulatorProcess.Starting || state === EmulatorProcess.Booting
                                 || state === EmulatorProcess.Stopping
    // Started by another program; its emulator is not ours to start, wipe or delete.
    readonly property var elsewhereSerials: store.elsewhere.phones[phone.name]
    readonly property bool elsewhere: stopped && elsewhereSerials !== undefined
    readonly property bool stoppingElsewhere: elsewhere && store.elsewhere.stopping.indexOf(phone.name) >= 0
    readonly property string status: deleting ? "Deleting" : stoppingElsewhere ? "Stopping"
                                   : elsewhere ? "Running" : runner ? runner.stateName : "Stopped"
    // Asked again whenever the row redraws for a change of state or of the setup checks.
    readonly property bool emulatorMissing: stopped && TolvaneApp.setup.emulatorReady !== null
                                            && !TolvaneApp.emulatorInstalled()

    spacing: 6

    Rectangle {
        visible: row.separator
        color: Style.separator
        Layout.fillWidth: true
        Layout.preferredHeight: 1
    }
    RowLayout {
        objectName: "phoneLine"
        Layout.fillWidth: true
        Layout.topMargin: 4
        Layout.bottomMargin: row.runner !== null && row.runner.failure !== undefined ? 0 : 4
        spacing: 8

        // The phone: its name, then its image and any problem, each wrapping rather than cut.
        ColumnLayout {
            objectName: "phoneTexts"
            spacing: 2
            Layout.fillWidth: true
            Layout.alignment: Qt.AlignTop
            Label {
                objectName: "phoneName"
                text: row.phone.name
                font: Style.headline
                elide: Text.ElideRight
                Layout.fillWidth: true
            }
            Label {
                objectName: "basedOn"
                visible: text.length > 0
                text: row.phone.summary
                textFormat: Text.PlainText
                font: Style.caption
                color: Style.secondary
                wrapMode: Text.Wrap
                Layout.fillWidth: true
            }
            Label {
                objectName: "elsewhereNote"
                visible: row.elsewhere
                text: !row.elsewhere ? ""
                      : row.elsewhereSerials.length > 1
                      ? "Running outside Tolvane in " + row.elsewhereSerials.length + " emulators (" + row.elsewhereSerials.join(", ") + "): another program started them."
                      : "Running outside Tolvane: another program started its emulator."
                font: Style.caption
                color: Style.secondary
                wrapMode: Text.Wrap
                Layout.fillWidth: true
            }
            Label {
                objectName: "diskSize"
                visible: row.store.diskUse.phoneSizes[row.phone.name] !== undefined
                text: visible ? "Takes " + row.store.diskUse.formatBytes(row.store.diskUse.phoneSizes[row.phone.name]) + " on disk" : ""
                font: Style.caption
                color: Style.secondary
            }
            Label {
                visible: row.phone.error.length > 0
                text: "Problem: " + row.phone.error
                textFormat: Text.PlainText
                font: Style.caption
                color: Style.red
                wrapMode: Text.Wrap
                Layout.fillWidth: true
            }
        }
        // The status, in a fixed width so that the texts beside it do not move as it changes, and with the
        // time a start has taken under it, beside the phone's texts, so the row keeps its height.
        ColumnLayout {
            spacing: 2
            Layout.preferredWidth: 110
            Layout.alignment: Qt.AlignTop
            Layout.topMargin: 3
            RowLayout {
                objectName: "status"
                spacing: 4
                Layout.fillWidth: true
                Layout.preferredHeight: 16
                Item { Layout.fillWidth: true }
                Spinner {
                    objectName: "statusBusy"
                    visible: row.busy || row.stoppingElsewhere
                    label: row.phone.name + ": " + row.status
                }
                Label {
                    objectName: "statusLabel"
                    text: row.status
                    color: (row.state === EmulatorProcess.Running && !row.deleting) || (row.elsewhere && !row.stoppingElsewhere)
                           ? Style.green : Style.secondary
                    Accessible.role: Accessible.StaticText
                    Accessible.name: row.phone.name + ": " + text
                }
            }
            Label {
                objectName: "bootTime"
                visible: (row.state === EmulatorProcess.Starting || row.state === EmulatorProcess.Booting)
                         && row.runner.secondsSoFar !== undefined
                text: visible ? "for " + row.runner.secondsSoFar + " s" : ""
                font: Style.caption
                color: Style.secondary
                Layout.alignment: Qt.AlignRight
            }
        }
        // What can be done with the phone now.
        RowLayout {
            objectName: "phoneActions"
            spacing: 6
            Layout.alignment: Qt.AlignTop
            Button {
                objectName: "Start"
                text: "Start"
                enabled: row.stopped && !row.emulatorMissing && !row.elsewhere
                onClicked: row.store.start(row.phone.name, row.options)
                Accessible.name: "Start " + row.phone.name
            }
            Button {
                objectName: "Stop"
                text: "Stop"
                enabled: (!row.deleting && row.state !== EmulatorProcess.Stopped && row.state !== EmulatorProcess.Stopping)
                         || (row.elsewhere && !row.stoppingElsewhere)
                onClicked: row.elsewhere ? row.store.elsewhere.stop(row.phone.name) : row.store.runner(row.phone.name).stop()
                Accessible.name: "Stop " + row.phone.name
            }
            Button {
                objectName: "Wipe data"
                text: "Wipe data"
                enabled: row.stopped && !row.emulatorMissing && !row.elsewhere
                onClicked: row.wipeRequested()
                Accessible.name: "Wipe data on " + row.phone.name
            }
            Button {
                objectName: "Delete"
                text: "Delete"
                enabled: row.stopped && !row.elsewhere
                onClicked: row.deleteRequested()
                Accessible.name: "Delete " + row.phone.name
            }
        }
    }
    Label {
        objectName: "refusal"
        visible: text !== ""
        text: row.store.refusals[row.phone.name] !== undefined ? row.store.refusals[row.phone.name] : ""
        textFormat: Text.PlainText
        color: Style.orange
        wrapMode: Text.Wrap
        Layout.fillWidth: true
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
        // Once a fix has removed the cause, the hint below says so and what is next instead.
        active: row.runner !== null && row.runner.failure !== undefined && failureHint.outcome === undefined
        visible: active
        Layout.fillWidth: true
        Layout.bottomMargin: 4
        sourceComponent: DetailsBox {
            objectName: "startFailure"
            // Named by the emulator's own error line when it printed one.
            summary: row.runner.failureCause !== "" ? row.phone.name + " did not start cleanly: " + row.runner.failureCause
                                                   : row.phone.name + " did not start cleanly."
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
    SnapshotsBox {
        phone: row.phone
        store: row.store
        options: row.options
        serial: row.runner && row.state === EmulatorProcess.Running ? row.runner.serial
              : row.elsewhere ? row.elsewhereSerials[0] : ""
        startable: row.stopped && !row.elsewhere && !row.emulatorMissing
        Layout.fillWidth: true
    }
}
