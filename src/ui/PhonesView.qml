import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// The user's phones: create, start with the chosen options, stop, wipe and delete.
ColumnLayout {
    id: view
    property SetupController setup: TolvaneApp.setup
    property PhoneStore store: TolvaneApp.store
    // The start options live as long as this tab; a row's wipe applies to that one start only.
    property bool coldBoot: false
    property bool noSnapshot: false
    property string scale: "Default"
    property string gpu: "auto"
    property bool showNew: false
    readonly property var sheet: sheetLoader.item

    function options(wipeData) {
        return TolvaneApp.startOptions(coldBoot, noSnapshot, wipeData, scale, gpu)
    }

    spacing: 10
    // Each time the tab comes on screen, including the first.
    onVisibleChanged: {
        if (visible)
            store.refresh()
    }
    Component.onCompleted: {
        if (visible)
            store.refresh()
    }

    Label {
        objectName: "toolsNotice"
        visible: !view.setup.cmdlineReady || !view.setup.javaReady
        text: "The Android command line tools and Java are not installed yet. Use the Setup tab."
        color: Style.orange
        wrapMode: Text.Wrap
        Layout.fillWidth: true
        Layout.topMargin: 12
        Layout.leftMargin: 12
        Layout.rightMargin: 12
    }
    Label {
        objectName: "emulatorNotice"
        visible: !view.setup.emulatorReady
        text: "The emulator is not installed yet, so phones can be created but not started. Use the Setup tab."
        color: Style.orange
        wrapMode: Text.Wrap
        Layout.fillWidth: true
        Layout.leftMargin: 12
        Layout.rightMargin: 12
    }
    RowLayout {
        Layout.fillWidth: true
        Layout.topMargin: view.setup.emulatorReady && view.setup.cmdlineReady && view.setup.javaReady ? 12 : 0
        Layout.leftMargin: 12
        Layout.rightMargin: 12
        Button {
            objectName: "New phone..."
            text: "New phone..."
            enabled: view.setup.cmdlineReady && view.setup.javaReady && view.setup.licensesAccepted
            onClicked: view.showNew = true
        }
        Button {
            objectName: "Refresh"
            text: "Refresh"
            onClicked: view.store.refresh()
        }
        BusyIndicator {
            objectName: "phonesLoading"
            visible: view.store.isLoading
            running: visible
            Layout.preferredWidth: 20
            Layout.preferredHeight: 20
        }
        Item { Layout.fillWidth: true }
    }
    DiskUseLine { store: view.store }
    GroupBox {
        title: "Start options"
        Layout.fillWidth: true
        Layout.leftMargin: 12
        Layout.rightMargin: 12
        RowLayout {
            anchors.fill: parent
            Switch {
                objectName: "coldBoot"
                text: "Cold boot"
                checked: view.coldBoot
                onToggled: view.coldBoot = checked
            }
            Switch {
                objectName: "noSnapshot"
                text: "No snapshot"
                checked: view.noSnapshot
                onToggled: view.noSnapshot = checked
            }
            Label { text: "Window scale" }
            ComboBox {
                objectName: "scale"
                model: ["Default", "0.5", "0.75", "1.0"]
                currentIndex: model.indexOf(view.scale)
                onActivated: index => view.scale = model[index]
                Layout.preferredWidth: 100
            }
            Label { text: "GPU" }
            ComboBox {
                objectName: "gpu"
                model: ["auto", "host", "swiftshader_indirect"]
                currentIndex: model.indexOf(view.gpu)
                onActivated: index => view.gpu = model[index]
                Layout.preferredWidth: 190
            }
            Item { Layout.fillWidth: true }
        }
    }
    RowLayout {
        visible: view.store.errorSummary !== undefined
        Layout.fillWidth: true
        Layout.leftMargin: 12
        Layout.rightMargin: 12
        Loader {
            // A new error gets a new box, closed at first.
            active: view.store.errorSummary !== undefined
            Layout.fillWidth: true
            Layout.alignment: Qt.AlignTop
            sourceComponent: DetailsBox {
                objectName: "storeError"
                summary: view.store.errorSummary !== undefined ? view.store.errorSummary : ""
                details: view.store.errorDetails
            }
        }
        Button {
            objectName: "Dismiss"
            text: "Dismiss"
            onClicked: view.store.dismissError()
            Layout.alignment: Qt.AlignTop
        }
    }
    ColumnLayout {
        objectName: "rawListing"
        visible: view.store.rawPhoneListing !== undefined
        Layout.fillWidth: true
        Layout.leftMargin: 12
        Layout.rightMargin: 12
        Label {
            text: "The phone list could not be understood, so this is avdmanager's raw text:"
            color: Style.orange
        }
        ScrollView {
            Layout.fillWidth: true
            Layout.preferredHeight: 100
            clip: true
            TextEdit {
                text: view.store.rawPhoneListing !== undefined ? view.store.rawPhoneListing : ""
                textFormat: TextEdit.PlainText
                readOnly: true
                selectByMouse: true
                font: Style.monoCaption
            }
        }
    }
    Label {
        objectName: "noPhonesHint"
        visible: view.store.phones.length === 0 && view.store.rawPhoneListing === undefined && !view.store.isLoading
        text: "No phones yet. Press New phone to create one."
        color: Style.secondary
        Layout.topMargin: 8
        Layout.leftMargin: 12
    }
    ListView {
        objectName: "phoneList"
        model: view.store.phones
        clip: true
        spacing: 0
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.leftMargin: 12
        Layout.rightMargin: 12
        ScrollBar.vertical: ScrollBar {}
        delegate: PhoneRow {
            required property var modelData
            width: ListView.view.width
            phone: modelData
            store: view.store
            options: view.options(false)
            wipeOptions: view.options(true)
        }
    }
    Loader {
        id: sheetLoader
        active: view.showNew
        sourceComponent: NewPhoneSheet {
            objectName: "newPhoneSheet"
            store: view.store
            setup: view.setup
            onClosed: view.showNew = false
        }
    }
}
