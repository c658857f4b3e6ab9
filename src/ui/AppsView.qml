import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Layouts
import Tolvane

// Installs apps on a running phone, lists and removes the user's apps, takes screenshots. The tab scrolls
// when the window is too small for everything, so nothing is cut off.
ScrollView {
    id: view
    property PhoneStore store: TolvaneApp.store
    property ApkInstaller installer: TolvaneApp.installer
    property string selectedName
    property bool targeted: false

    // Our running phones and those started elsewhere, each a name and a serial.
    readonly property var running: store.runningTargets
    readonly property var target: {
        for (const runner of running) {
            if (runner.name === selectedName)
                return runner
        }
        return running.length > 0 ? running[0] : null
    }
    readonly property string serial: target ? target.serial : ""

    // The phone the latest install, uninstall or screenshot acted on, by its serial and the name it had
    // then: a fix for that action's failure acts there, never on whichever phone is picked by now. Once
    // the phone stops, its serial can come back as another phone.
    property string actedOnName
    // Refresh of the app's menu.
    function refresh() {
        if (serial !== "")
            installer.refreshPackages(serial)
    }
    function noteActedOn() {
        const runner = running.find(each => each.serial === installer.latestSerial)
        actedOnName = runner ? runner.name : ""
    }
    readonly property string fixUnavailable: {
        if (!running.some(each => each.serial === installer.latestSerial && each.name === actedOnName))
            return (actedOnName !== "" ? actedOnName : "The phone") + ", where this happened, is no longer running."
        if (installer.latestSerial !== serial)
            return "This happened on " + actedOnName + ". Pick " + actedOnName + " above to fix it there."
        return ""
    }

    // Dropped apps are installed one call each; any other file is copied to the phone's Download folder.
    function dropFiles(urls) {
        const others = []
        for (const url of urls) {
            if (String(url).toLowerCase().endsWith(".apk"))
                installer.install([url], serial)
            else
                others.push(url)
        }
        if (others.length > 0)
            phonePanel.transfer.push(others)
    }
    function chooseFiles(urls) {
        installer.install(urls, serial)
    }
    // The open dialog is made the first time it is needed, not when the window opens.
    property FileDialog openDialog: null
    function showOpenDialog() {
        if (!openDialog)
            openDialog = openDialogComponent.createObject(view)
        openDialog.open()
    }

    // A hidden tab lists nothing: coming on screen lists the target's apps anyway.
    onSerialChanged: {
        if (visible && serial !== "")
            installer.refreshPackages(serial)
    }
    onVisibleChanged: {
        if (visible && serial !== "")
            installer.refreshPackages(serial)
    }
    Component.onCompleted: {
        noteActedOn()
        if (visible && serial !== "")
            installer.refreshPackages(serial)
    }

    contentWidth: availableWidth
    clip: true

    ColumnLayout {
        width: view.availableWidth
        height: Math.max(view.availableHeight, implicitHeight)
        spacing: 10

        RowLayout {
            visible: view.target !== null
            spacing: Style.spacing
            Layout.fillWidth: true
            Layout.topMargin: 12
            Layout.leftMargin: 12
            Layout.rightMargin: 12
            Label { text: "Phone" }
            ComboBox {
                objectName: "phonePicker"
                model: view.running.map(runner => runner.name)
                currentIndex: view.target ? model.indexOf(view.target.name) : -1
                onActivated: index => view.selectedName = model[index]
                Layout.preferredWidth: 280
                Accessible.name: "Phone"
            }
            Button {
                objectName: "Take screenshot"
                text: "Take screenshot"
                enabled: !view.installer.busy
                onClicked: view.installer.screenshot(view.serial)
            }
            Item { Layout.fillWidth: true }
        }

        DropArea {
            id: dropZone
            objectName: "dropZone"
            visible: view.target !== null
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
            Layout.preferredHeight: Math.max(90, dropColumn.implicitHeight + 24)
            Accessible.role: Accessible.Grouping
            Accessible.name: "Drop .apk files here"
            Accessible.description: "Drop .apk files here to install them on " + (view.target ? view.target.name : "the phone")
            onEntered: drag => {
                view.targeted = true
                drag.accept(Qt.CopyAction)
            }
            onExited: view.targeted = false
            onDropped: drop => {
                view.targeted = false
                view.dropFiles(drop.urls)
                drop.accept(Qt.CopyAction)
            }

            // Painted on a canvas, which the scroll view clips like any item when the tab scrolls.
            Canvas {
                id: outline
                readonly property color fill: view.targeted ? Qt.rgba(Style.accent.r, Style.accent.g, Style.accent.b, 0.15)
                                                            : Qt.rgba(0.5, 0.5, 0.5, Style.dark ? 0.14 : 0.08)
                readonly property color stroke: view.targeted ? Style.accent : Style.secondary
                anchors.fill: parent
                onFillChanged: requestPaint()
                onStrokeChanged: requestPaint()
                onPaint: {
                    const context = getContext("2d")
                    context.reset()
                    context.beginPath()
                    context.roundedRect(0.75, 0.75, width - 1.5, height - 1.5, 8, 8)
                    context.fillStyle = fill
                    context.fill()
                    context.lineWidth = 1.5
                    context.setLineDash([8 / 1.5, 8 / 1.5])
                    context.strokeStyle = stroke
                    context.stroke()
                }
            }
            ColumnLayout {
                id: dropColumn
                anchors.centerIn: parent
                spacing: 8
                Label {
                    text: "Drop .apk files here to install them, or other files to copy them to the phone's Download folder"
                    wrapMode: Text.Wrap
                    horizontalAlignment: Text.AlignHCenter
                    Layout.maximumWidth: dropZone.width - 24
                    Layout.alignment: Qt.AlignHCenter
                    Accessible.ignored: true
                }
                Button {
                    objectName: "Choose APK..."
                    text: "Choose APK..."
                    enabled: !view.installer.busy
                    onClicked: view.showOpenDialog()
                    Layout.alignment: Qt.AlignHCenter
                }
            }
        }

        Connections {
            target: view.installer
            function onLatestSerialChanged() {
                view.noteActedOn()
            }
        }
        // Right under the drop zone the install came from, so that the hint and its fix are in view without
        // scrolling.
        FailureHint {
            objectName: "outputHint"
            text: view.installer.latestOutput
            serial: view.installer.latestSerial
            phone: view.actedOnName
            fixUnavailable: view.fixUnavailable
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
        }
        // Where the fix was offered, what it did.
        Label {
            objectName: "fixOutcome"
            visible: text !== ""
            text: view.installer.fixOutcome
            textFormat: Text.PlainText
            font.weight: Font.DemiBold
            color: Style.green
            wrapMode: Text.Wrap
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
        }

        PhonePanel {
            id: phonePanel
            objectName: "phonePanel"
            visible: view.target !== null
            serial: view.serial
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
        }

        RowLayout {
            visible: view.target !== null
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
            Label {
                text: "Installed apps"
                font: Style.headline
            }
            Item { Layout.fillWidth: true }
            Button {
                objectName: "Refresh"
                text: "Refresh"
                onClicked: view.refresh()
            }
        }
        // A listing that failed leaves the earlier list in place, marked as what it is.
        Label {
            objectName: "packagesOutOfDate"
            visible: view.target !== null && view.installer.packagesOutOfDate && view.installer.packages.length > 0
            text: "The list could not be read just now: these are the apps listed before, and may be out of date."
            color: Style.orange
            wrapMode: Text.Wrap
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
        }
        Label {
            objectName: "packagesNote"
            visible: view.target !== null && view.installer.packagesNote !== undefined
            text: view.installer.packagesNote !== undefined ? view.installer.packagesNote : ""
            textFormat: Text.PlainText
            font: Style.caption
            color: Style.secondary
            wrapMode: Text.Wrap
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
        }
        FailureHint {
            objectName: "packagesHint"
            visible: view.target !== null && explained.what !== undefined
            text: view.installer.packagesNote !== undefined ? view.installer.packagesNote : ""
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
        }
        ListView {
            objectName: "packageList"
            visible: view.target !== null
            model: view.installer.packages
            spacing: Style.spacing
            clip: true
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.minimumHeight: 120
            Layout.leftMargin: 12
            Layout.rightMargin: 12
            ScrollBar.vertical: ScrollBar {}
            delegate: RowLayout {
                required property string modelData
                width: ListView.view.width
                spacing: Style.spacing
                Label {
                    objectName: "package " + modelData
                    text: modelData
                    font: Style.mono
                    // Dimmed while the list may be out of date; its buttons still act on the phone.
                    opacity: view.installer.packagesOutOfDate ? 0.5 : 1
                    elide: Text.ElideRight
                    Layout.fillWidth: true
                }
                Button {
                    objectName: "showLog " + modelData
                    text: "Show log"
                    onClicked: ApplicationWindow.window.showLogcat(view.serial, modelData)
                    Accessible.name: "Show the log of " + modelData
                }
                Button {
                    objectName: "uninstall " + modelData
                    text: "Uninstall"
                    enabled: !view.installer.busy
                    onClicked: view.installer.uninstall(modelData, view.serial)
                    Accessible.name: "Uninstall " + modelData
                }
            }
        }

        Label {
            objectName: "noPhoneRunning"
            visible: view.target === null
            text: "No phone is running. Start a phone on the Phones tab and wait until it says Running, then come back here to install apps."
            color: Style.secondary
            wrapMode: Text.Wrap
            Layout.fillWidth: true
            Layout.topMargin: 12
            Layout.leftMargin: 12
            Layout.rightMargin: 12
        }
        Item {
            visible: view.target === null
            Layout.fillHeight: true
        }

        Label {
            text: "adb output"
            font: Style.headline
            Layout.leftMargin: 12
        }
        Rectangle {
            radius: 6
            color: Style.terminal
            Layout.fillWidth: true
            Layout.preferredHeight: 110
            Layout.leftMargin: 12
            Layout.rightMargin: 12
            Layout.bottomMargin: 12
            Flickable {
                id: outputFlick
                anchors.fill: parent
                anchors.margins: 6
                clip: true
                contentWidth: width
                contentHeight: output.contentHeight
                boundsBehavior: Flickable.StopAtBounds
                ScrollBar.vertical: ScrollBar {}
                onContentHeightChanged: contentY = Math.max(0, contentHeight - height)
                TextEdit {
                    id: output
                    objectName: "adbOutput"
                    width: outputFlick.width
                    text: view.installer.output.length > 0 ? view.installer.output : "Nothing yet."
                    textFormat: TextEdit.PlainText
                    readOnly: true
                    selectByMouse: true
                    // The keyboard reaches the text too, to select and copy it.
                    activeFocusOnTab: true
                    selectByKeyboard: true
                    FocusRing { shown: parent.activeFocus; outset: -1 }
                    // At word boundaries where it can: a path or a package name breaks only where it must.
                    wrapMode: TextEdit.Wrap
                    font: Style.mono
                    color: view.installer.output.length > 0 ? Style.terminalText : Style.terminalPlaceholder
                    selectionColor: Style.accent
                    Accessible.role: Accessible.EditableText
                    Accessible.name: "adb output"
                    Accessible.readOnly: true
                }
            }
        }

        Component {
            id: openDialogComponent
            FileDialog {
                objectName: "openDialog"
                title: "Choose APK files"
                fileMode: FileDialog.OpenFiles
                nameFilters: ["Android apps (*.apk)"]
                onAccepted: view.chooseFiles(selectedFiles)
            }
        }
    }
}
