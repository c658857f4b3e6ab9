import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// A phone's snapshots under a disclosure: of a running phone, saved, loaded and deleted through its
// console; of a stopped one, those in its folder with their size, each a way to start it.
ColumnLayout {
    id: box
    property var phone
    property PhoneStore store
    property var options
    // The running phone's serial; empty while it is stopped.
    property string serial
    property bool startable: false

    readonly property Snapshots live: liveSnapshots
    readonly property SavedSnapshots saved: savedSnapshots
    readonly property bool running: serial !== ""

    spacing: 4

    Snapshots {
        id: liveSnapshots
        serial: disclosure.checked ? box.serial : ""
        onSerialChanged: if (serial !== "") refresh()
    }
    SavedSnapshots {
        id: savedSnapshots
        phoneFolder: disclosure.checked && !box.running ? box.phone.path : ""
    }

    function startFrom(name) {
        const options = box.options
        options.snapshot = name
        box.store.start(box.phone.name, options)
    }

    DisclosureButton {
        id: disclosure
        objectName: "snapshots " + box.phone.name
        text: "Snapshots"
        onCheckedChanged: if (checked && !box.running) box.saved.refresh()
    }

    RowLayout {
        visible: disclosure.checked && box.running
        Layout.leftMargin: 16
        TextField {
            id: newName
            objectName: "snapshotName"
            placeholderText: "Snapshot name"
            Layout.preferredWidth: 200
            Accessible.name: "Snapshot name"
        }
        Button {
            text: "Save snapshot"
            enabled: !box.live.busy && newName.text !== ""
            onClicked: box.live.save(newName.text)
        }
    }

    Repeater {
        model: !disclosure.checked ? [] : box.running ? box.live.names.map(name => ({ name: name }))
                                                       : box.saved.snapshots
        RowLayout {
            required property var modelData
            Layout.leftMargin: 16
            Layout.fillWidth: true
            Label { text: modelData.name; font: Style.mono; Layout.fillWidth: true; elide: Text.ElideRight }
            Label {
                visible: !box.running
                text: box.running ? "" : box.store.diskUse.formatBytes(modelData.bytes)
                color: Style.secondary
            }
            Button {
                visible: box.running
                text: "Load"
                enabled: !box.live.busy
                onClicked: box.live.load(modelData.name)
                Accessible.name: "Load snapshot " + modelData.name
            }
            Button {
                visible: box.running
                text: "Delete"
                enabled: !box.live.busy
                onClicked: box.live.remove(modelData.name)
                Accessible.name: "Delete snapshot " + modelData.name
            }
            Button {
                visible: !box.running
                text: "Start from snapshot"
                enabled: box.startable
                onClicked: box.startFrom(modelData.name)
                Accessible.name: "Start " + box.phone.name + " from snapshot " + modelData.name
            }
        }
    }
    Label {
        visible: disclosure.checked && (box.running ? box.live.names.length === 0 && !box.live.busy : box.saved.snapshots.length === 0)
        text: "No snapshots saved yet."
        color: Style.secondary
        Layout.leftMargin: 16
    }
    Label {
        visible: disclosure.checked && box.running && box.live.message !== ""
        text: box.live.message
        textFormat: Text.PlainText
        color: box.live.failed ? Style.orange : Style.secondary
        wrapMode: Text.Wrap
        Layout.fillWidth: true
        Layout.leftMargin: 16
    }
}
