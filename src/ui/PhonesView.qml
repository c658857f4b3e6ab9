import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// The user's phones: create, start with the chosen options, stop, wipe and delete.
Item {
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
    // Names of the phones whose deletion is under way.
    property var deleting: []

    // New Phone and Refresh of the app's menu.
    function newPhone() {
        if (newPhoneButton.enabled)
            showNew = true
    }
    function refresh() {
        if (sheet)
            sheet.refresh()
        else
            store.refresh()
    }

    function options(wipeData) {
        return TolvaneApp.startOptions(coldBoot, noSnapshot, wipeData, scale, gpu)
    }
    function confirmWipe(name) {
        wipeDialog.phoneName = name
        wipeDialog.open()
    }
    function confirmDelete(name) {
        deleteDialog.phoneName = name
        deleteDialog.open()
    }
    function deletePhone(name) {
        deleting = deleting.concat([name])
        store.deletePhone(name)
    }

    // The rows follow the store's list by name: a row is added, moved, updated in place or removed,
    // never rebuilt, so what a row has open stays open while other phones come and go.
    function syncRows() {
        const phones = store.phones
        const names = phones.map(phone => phone.name)
        for (let i = rows.count - 1; i >= 0; --i) {
            if (!names.includes(rows.get(i).name))
                rows.remove(i)
        }
        for (let i = 0; i < phones.length; ++i) {
            const phone = phones[i]
            const fields = { name: phone.name, path: phone.path, basedOn: phone.basedOn, summary: phone.summary,
                             error: phone.error }
            let at = -1
            for (let j = i; j < rows.count; ++j) {
                if (rows.get(j).name === phone.name) {
                    at = j
                    break
                }
            }
            if (at < 0) {
                rows.insert(i, fields)
                continue
            }
            if (at !== i)
                rows.move(at, i, 1)
            rows.set(i, fields)
        }
    }

    ListModel { id: rows }
    Connections {
        target: view.store
        function onPhonesChanged() { view.syncRows() }
        function onDeleteFinished(name) { view.deleting = view.deleting.filter(other => other !== name) }
    }

    // Each time the tab comes on screen, including the first.
    onVisibleChanged: {
        if (visible)
            store.refresh()
    }
    Component.onCompleted: {
        syncRows()
        if (visible)
            store.refresh()
    }

    ColumnLayout {
        id: column
        anchors.fill: parent
        anchors.margins: 12
        spacing: 10

        // Notices about the setup.
        Label {
            objectName: "toolsNotice"
            visible: !view.setup.cmdlineReady || !view.setup.javaReady
            text: "The Android command line tools and Java are not installed yet. Use the Setup tab."
            color: Style.orange
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        Label {
            objectName: "emulatorNotice"
            visible: !view.setup.emulatorReady
            text: "The emulator is not installed yet, so phones can be created but not started. Use the Setup tab."
            color: Style.orange
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }

        // Actions on the whole list.
        RowLayout {
            objectName: "actionRow"
            Layout.fillWidth: true
            spacing: 8
            Button {
                id: newPhoneButton
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
            Spinner {
                objectName: "phonesLoading"
                visible: view.store.isLoading
                label: "Reading the phone list"
            }
            Item { Layout.fillWidth: true }
        }
        DiskUseLine { store: view.store }
        Label {
            objectName: "elsewhereProblem"
            visible: view.store.phones.length > 0 && view.store.elsewhere.problem !== undefined
            text: visible ? "Tolvane cannot tell which phones run outside it: " + view.store.elsewhere.problem : ""
            textFormat: Text.PlainText
            color: Style.orange
            font: Style.caption
            wrapMode: Text.Wrap
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
        }

        GroupBox {
            objectName: "startOptions"
            title: "Start options"
            Layout.fillWidth: true
            RowLayout {
                anchors.fill: parent
                spacing: 8
                ToggleSwitch {
                    objectName: "coldBoot"
                    text: "Cold boot"
                    checked: view.coldBoot
                    onToggled: view.coldBoot = checked
                }
                ToggleSwitch {
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
                    Layout.preferredWidth: 190
                    Layout.minimumWidth: 100
                    Layout.fillWidth: true
                    Layout.maximumWidth: 190
                    Accessible.name: "Window scale"
                }
                Label { text: "GPU" }
                ComboBox {
                    objectName: "gpu"
                    model: ["auto", "host", "swiftshader_indirect"]
                    currentIndex: model.indexOf(view.gpu)
                    onActivated: index => view.gpu = model[index]
                    Layout.preferredWidth: 190
                    Layout.minimumWidth: 100
                    Layout.fillWidth: true
                    Layout.maximumWidth: 190
                    Accessible.name: "GPU"
                }
                Item { Layout.fillWidth: true }
            }
        }

        // Problems with the list.
        RowLayout {
            visible: view.store.errorSummary !== undefined
            Layout.fillWidth: true
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
        FailureHint {
            objectName: "storeHint"
            text: view.store.errorSummary !== undefined ? view.store.errorSummary + "\n" + view.store.errorDetails : ""
            Layout.fillWidth: true
        }
        ColumnLayout {
            objectName: "rawListing"
            visible: view.store.rawPhoneListing !== undefined
            Layout.fillWidth: true
            Label {
                text: "The phone list could not be understood, so this is avdmanager's raw text:"
                color: Style.orange
                wrapMode: Text.Wrap
                Layout.fillWidth: true
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
                    // The keyboard reaches the text too, to select and copy it.
                    activeFocusOnTab: true
                    selectByKeyboard: true
                    FocusRing { shown: parent.activeFocus; outset: -1 }
                    font: Style.monoCaption
                    color: Style.text
                    selectionColor: Style.accent
                    Accessible.role: Accessible.EditableText
                    Accessible.name: "avdmanager's raw text"
                    Accessible.readOnly: true
                }
            }
        }
        Label {
            objectName: "noPhonesHint"
            visible: view.store.phones.length === 0 && view.store.rawPhoneListing === undefined && !view.store.isLoading
            text: "No phones yet. Press New phone to create one."
            color: Style.secondary
            Layout.topMargin: 8
        }

        // The phones, one row each, keyed by name.
        ListView {
            id: list
            objectName: "phoneList"
            model: rows
            clip: true
            spacing: 0
            // Every row stays built, so a row's open box or running indicator survives scrolling.
            cacheBuffer: 100000
            boundsBehavior: Flickable.StopAtBounds
            Layout.fillWidth: true
            Layout.fillHeight: true
            ScrollBar.vertical: ScrollBar {}
            Accessible.role: Accessible.List
            Accessible.name: "Phones"
            delegate: PhoneRow {
                required property int index
                required property string name
                required property string path
                required property string basedOn
                required property string summary
                required property string error
                width: ListView.view.width
                phone: ({ name: name, path: path, basedOn: basedOn, summary: summary, error: error })
                store: view.store
                options: view.options(false)
                deleting: view.deleting.includes(name)
                separator: index > 0
                onWipeRequested: view.confirmWipe(name)
                onDeleteRequested: view.confirmDelete(name)
            }
        }
    }

    // Confirmations, centred on the window.
    ConfirmDialog {
        id: deleteDialog
        objectName: "deleteDialog"
        property string phoneName
        title: "Delete " + phoneName + "?"
        message: "This removes the phone and all its data. It cannot be undone."
        confirmText: "Delete"
        onConfirmed: view.deletePhone(phoneName)
    }
    ConfirmDialog {
        id: wipeDialog
        objectName: "wipeDialog"
        property string phoneName
        title: "Wipe data on " + phoneName + "?"
        message: "All apps and data on this phone are erased. The phone starts with the factory reset (emulator -wipe-data)."
        confirmText: "Wipe and start"
        onConfirmed: view.store.start(phoneName, view.options(true))
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
