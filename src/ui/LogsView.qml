import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// The logs window's content: pick a phone, read its emulator's output or, while it runs, its own log.
ColumnLayout {
    id: view
    property PhoneStore store: TolvaneApp.store
    property string selected
    // The serial each phone last ran under, so a phone's log stays readable after it stops.
    property var lastSerials: ({})
    // Untyped: Qt 6.4's compiled bindings cannot hand on the log an invokable returns.
    readonly property var logcats: TolvaneApp.logcats

    readonly property var runners: store.allRunners
    readonly property var names: runners.map(runner => runner.name)
    readonly property EmulatorProcess shown: {
        const index = names.indexOf(selected)
        return runners.length === 0 ? null : runners[index >= 0 ? index : 0]
    }

    readonly property string shownSerial: {
        if (!shown)
            return ""
        for (const target of store.runningTargets) {
            if (target.name === shown.name)
                return target.serial
        }
        return lastSerials[shown.name] || ""
    }
    onShownSerialChanged: {
        if (shown && shownSerial !== "")
            lastSerials[shown.name] = shownSerial
    }

    // The Apps tab's "Show log": the phone's log, filtered to one app.
    function showLogcat(serial, app) {
        for (const target of store.runningTargets) {
            if (target.serial === serial)
                selected = target.name
        }
        logTabs.currentIndex = 1
        logcats.forSerial(serial).app = app
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
    TabBar {
        id: logTabs
        objectName: "logTabs"
        background: Rectangle { radius: 6; color: Style.card }
        visible: view.shown !== null
        Tab {
            text: "Emulator output"
            width: implicitWidth
        }
        Tab {
            objectName: "logcatTab"
            text: "Logcat"
            width: implicitWidth
        }
    }
    EmulatorLogBody {
        visible: view.shown !== null && logTabs.currentIndex === 0
        runner: view.shown
        Layout.fillWidth: true
        Layout.fillHeight: true
    }
    LogcatBody {
        objectName: "logcatBody"
        visible: view.shown !== null && logTabs.currentIndex === 1 && view.shownSerial !== ""
        // Made only once the tab is open: an empty serial gives no log.
        log: view.logcats.forSerial(visible ? view.shownSerial : "")
        Layout.fillWidth: true
        Layout.fillHeight: true
    }
    Label {
        objectName: "logcatNotRunning"
        visible: view.shown !== null && logTabs.currentIndex === 1 && view.shownSerial === ""
        text: "This phone is not running. Start it to read what Android and its apps print."
        color: Style.secondary
        wrapMode: Text.Wrap
        Layout.fillWidth: true
    }
    Item {
        visible: view.shown === null || (logTabs.currentIndex === 1 && view.shownSerial === "")
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
