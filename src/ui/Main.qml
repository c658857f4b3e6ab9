import QtQuick
import QtQuick.Controls
import Tolvane

AppWindow {
    id: window
    title: "Tolvane"
    minimumWidth: 780
    minimumHeight: 640
    width: 780
    height: 640
    visible: true

    // The logs window and the save dialog are named by file, so neither they nor the dialogs module are
    // loaded before they are first needed.
    property Window logsWindow: null

    // There is one logs window: opening it again brings it forward.
    function openLogs() {
        if (!logsWindow)
            logsWindow = Qt.createComponent("LogsWindow.qml").createObject(null)
        logsWindow.show()
        logsWindow.raise()
        logsWindow.requestActivate()
    }
    function showLogcat(serial, app) {
        openLogs()
        logsWindow.showLogcat(serial, app)
    }

    // The app's commands. Ctrl in a shortcut is the Command key on the Mac.
    readonly property var keys: ({
        newPhone: "Ctrl+N",
        refresh: "Ctrl+R",
        closeWindow: "Ctrl+W",
        minimize: "Ctrl+M",
        quit: "Ctrl+Q"
    })
    function newPhone() {
        window.show()
        window.raise()
        content.newPhone()
    }
    function refresh() {
        content.refresh()
    }
    // The window in front: the logs window when it is the active one.
    function frontWindow() {
        return logsWindow && logsWindow.active ? logsWindow : window
    }
    function closeWindow() {
        frontWindow().close()
    }
    function minimize() {
        frontWindow().showMinimized()
    }
    property Dialog aboutBox: null
    function showAbout() {
        if (!aboutBox)
            aboutBox = Qt.createComponent("AboutBox.qml").createObject(window)
        aboutBox.open()
    }
    function quit() {
        Qt.quit()
    }
    // Drawn by the platform where it can; elsewhere the shortcuts below carry the commands.
    property QtObject platformMenuBar: null
    component Command: Shortcut {
        context: Qt.ApplicationShortcut
        enabled: !TolvaneApp.nativeMenuBar
    }
    Command { sequence: window.keys.newPhone; onActivated: window.newPhone() }
    Command { sequence: window.keys.refresh; onActivated: window.refresh() }
    Command { sequence: window.keys.closeWindow; onActivated: window.closeWindow() }
    Command { sequence: window.keys.minimize; onActivated: window.minimize() }
    Command { sequence: window.keys.quit; onActivated: window.quit() }

    onVisibleChanged: {
        if (visible)
            TolvaneApp.setup.refresh()
    }
    Component.onCompleted: {
        TolvaneApp.setup.refresh()
        if (TolvaneApp.nativeMenuBar)
            platformMenuBar = Qt.createComponent("AppMenuBar.qml").createObject(null, { commands: window })
    }

    ContentView {
        id: content
        anchors.fill: parent
        holdTabs: !TolvaneApp.mainWindowDrawn
        anchors.margins: 16
        onLogsRequested: window.openLogs()
    }

    // The save dialog is made the first time a screenshot or a recording is saved, not when the window opens.
    property QtObject saveDialog: null
    Connections {
        target: TolvaneApp.saveChooser
        function onSaveRequested(proposedName) {
            if (!window.saveDialog)
                window.saveDialog = Qt.createComponent("ScreenshotDialog.qml").createObject(window)
            const movie = proposedName.endsWith(".mp4")
            window.saveDialog.title = movie ? "Save Screen Recording" : "Save Screenshot"
            window.saveDialog.nameFilters = movie ? ["MPEG-4 movie (*.mp4)"] : ["PNG image (*.png)"]
            window.saveDialog.defaultSuffix = movie ? "mp4" : "png"
            const folder = TolvaneApp.saveChooser.proposedFolder(proposedName)
            window.saveDialog.currentFolder = folder
            window.saveDialog.selectedFile = folder + "/" + encodeURIComponent(proposedName)
            window.saveDialog.open()
        }
    }
}
