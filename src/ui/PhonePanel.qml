import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// What can be done to the picked running phone itself: record its screen, turn it, move it, change its
// battery and network, copy files to it and open links on it.
ColumnLayout {
    id: panel
    property string serial
    readonly property FileTransfer transfer: fileTransfer
    readonly property ScreenRecorder recorder: screenRecorder
    readonly property PhoneControls controls: phoneControls

    spacing: 8

    FileTransfer { id: fileTransfer; serial: panel.serial }
    ScreenRecorder { id: screenRecorder; serial: panel.serial; chooser: TolvaneApp.saveChooser }
    PhoneControls { id: phoneControls; serial: panel.serial }

    function clock(seconds) {
        return Math.floor(seconds / 60) + ":" + String(seconds % 60).padStart(2, "0")
    }

    Label { text: "Phone controls"; font: Style.headline }

    GridLayout {
        columns: 3
        columnSpacing: 8
        rowSpacing: 6
        Layout.fillWidth: true

        Label { text: "Screen" }
        RowLayout {
            Button {
                objectName: "Record"
                text: panel.recorder.recording ? "Stop" : "Record"
                onClicked: panel.recorder.recording ? panel.recorder.stop() : panel.recorder.start()
                Accessible.name: panel.recorder.recording ? "Stop recording" : "Record the screen"
            }
            Label {
                objectName: "recordingTime"
                visible: panel.recorder.recording
                text: "● " + panel.clock(panel.recorder.elapsedSeconds) + " of " + panel.clock(panel.recorder.limitSeconds)
                color: Style.red
            }
            Button { text: "Rotate left"; enabled: !panel.controls.busy; onClicked: panel.controls.rotate(true) }
            Button { text: "Rotate right"; enabled: !panel.controls.busy; onClicked: panel.controls.rotate(false) }
        }
        Label { text: panel.controls.lastSet.rotation ?? ""; color: Style.secondary; Layout.fillWidth: true }

        Label { text: "Location" }
        RowLayout {
            ComboBox {
                id: place
                objectName: "place"
                model: panel.controls.places.map(each => each.name)
                Layout.preferredWidth: 220
                Accessible.name: "Place"
            }
            Button {
                text: "Go there"
                enabled: !panel.controls.busy
                onClicked: {
                    const chosen = panel.controls.places[place.currentIndex]
                    panel.controls.setLocation(chosen.latitude, chosen.longitude, chosen.name)
                }
            }
            TextField { id: latitude; placeholderText: "Latitude"; Layout.preferredWidth: 90 }
            TextField { id: longitude; placeholderText: "Longitude"; Layout.preferredWidth: 90 }
            Button {
                text: "Set"
                enabled: !panel.controls.busy && latitude.text !== "" && longitude.text !== ""
                onClicked: panel.controls.setLocation(Number(latitude.text), Number(longitude.text), "")
                Accessible.name: "Set latitude and longitude"
            }
        }
        Label { text: panel.controls.lastSet.location ?? ""; color: Style.secondary; elide: Text.ElideRight; Layout.fillWidth: true }

        Label { text: "Battery" }
        RowLayout {
            SpinBox { id: level; from: 0; to: 100; value: 50; editable: true; Accessible.name: "Battery level" }
            Button { text: "Set level"; enabled: !panel.controls.busy; onClicked: panel.controls.setBatteryLevel(level.value) }
            CheckBox {
                text: "Charger connected"
                checked: true
                onToggled: panel.controls.setCharger(checked)
                FocusRing {}
            }
        }
        Label {
            text: [panel.controls.lastSet.battery, panel.controls.lastSet.charger].filter(each => each).join(", ")
            color: Style.secondary
            Layout.fillWidth: true
        }

        Label { text: "Network" }
        RowLayout {
            ComboBox {
                objectName: "speed"
                // As wide as its longest choice, so no choice is cut short.
                implicitContentWidthPolicy: ComboBox.WidestText
                model: panel.controls.speeds.map(each => each.label + " speed")
                onActivated: index => panel.controls.setNetworkSpeed(panel.controls.speeds[index].value)
                Accessible.name: "Network speed"
            }
            ComboBox {
                objectName: "delay"
                implicitContentWidthPolicy: ComboBox.WidestText
                model: panel.controls.delays.map(each => each.value === "none" ? "No added latency" : each.label + " latency")
                onActivated: index => panel.controls.setNetworkDelay(panel.controls.delays[index].value)
                Accessible.name: "Network latency"
            }
        }
        Label {
            text: [panel.controls.lastSet.speed, panel.controls.lastSet.delay].filter(each => each).join(", ")
            color: Style.secondary
            Layout.fillWidth: true
        }

        Label { text: "Link" }
        RowLayout {
            TextField {
                id: link
                objectName: "link"
                placeholderText: "https://example.com"
                Layout.preferredWidth: 300
                onAccepted: panel.transfer.openLink(text)
                Accessible.name: "Link to open"
            }
            Button {
                objectName: "Open link on phone"
                text: "Open link on phone"
                enabled: link.text.trim() !== ""
                onClicked: panel.transfer.openLink(link.text)
            }
        }
        Item { Layout.fillWidth: true }
    }

    RowLayout {
        objectName: "pushProgress"
        visible: panel.transfer.currentFile !== ""
        Layout.fillWidth: true
        Label { text: "Copying " + panel.transfer.currentFile }
        ProgressBar { from: 0; to: 100; value: panel.transfer.percent; Layout.fillWidth: true }
        Label { text: panel.transfer.percent + " %" }
    }

    Repeater {
        model: [panel.recorder, panel.controls, panel.transfer]
        Label {
            required property var modelData
            visible: modelData.message !== ""
            text: modelData.message
            textFormat: Text.PlainText
            color: modelData.failed ? Style.orange : Style.secondary
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
    }
}
