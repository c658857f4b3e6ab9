import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// One phone's emulator: its state, its output as it arrives, and what went wrong last.
ColumnLayout {
    id: body
    property EmulatorProcess runner

    spacing: 8

    Label {
        objectName: "stateLine"
        text: "State: " + (body.runner ? body.runner.stateName : "")
    }
    LogBox {
        lines: body.runner ? body.runner.lineModel : null
        accessibleName: (body.runner ? body.runner.name + ": " : "") + "emulator output"
        placeholder: "No output yet. Start this phone to see the emulator's output."
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.minimumHeight: 80
    }
    Loader {
        // A new failure gets a new box, closed at first.
        active: body.runner !== null && body.runner.failure !== undefined
        visible: active
        Layout.fillWidth: true
        sourceComponent: DetailsBox {
            summary: body.runner.name + " reported a problem."
            details: body.runner.failure !== undefined ? body.runner.failure : ""
        }
    }
}
