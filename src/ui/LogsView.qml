import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// The logs window's content: pick a phone, read its emulator's output.
ColumnLayout {
    id: view
    property PhoneStore store: TolvaneApp.store
    property string selected

    readonly property var runners: store.allRunners
    readonly property var names: runners.map(runner => runner.name)
    readonly property EmulatorProcess shown: {
        const index = names.indexOf(selected)
        return runners.length === 0 ? null : runners[index >= 0 ? index : 0]
    }

    spacing: 10

    Label {
        text: "The emulator's own output. The emulator window and its sound are Google's."
        font: Style.caption
        color: Style.secondary
        wrapMode: Text.Wrap
        Layout.fillWidth: true
    }
    Label {
        objectName: "noPhones"
        visible: view.runners.length === 0
        text: "No phones yet."
        color: Style.secondary
    }
    RowLayout {
        visible: view.runners.length > 0
        Label { text: "Phone" }
        ComboBox {
            objectName: "phonePicker"
            model: view.names
            currentIndex: view.shown ? view.names.indexOf(view.shown.name) : -1
            onActivated: index => view.selected = view.names[index]
            Layout.preferredWidth: 300
        }
    }
    EmulatorLogBody {
        visible: view.shown !== null
        runner: view.shown
        Layout.fillWidth: true
        Layout.fillHeight: true
    }
    Item {
        visible: view.shown === null
        Layout.fillHeight: true
    }
    Loader {
        active: view.store.errorSummary !== undefined
        visible: active
        Layout.fillWidth: true
        sourceComponent: DetailsBox {
            summary: view.store.errorSummary !== undefined ? view.store.errorSummary : ""
            details: view.store.errorDetails
        }
    }
}
