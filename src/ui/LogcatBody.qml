import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Layouts
import Tolvane

// A running phone's own log: what Android and its apps print, live, filtered and searchable. Only the
// rows on screen are laid out, however many the log holds.
ColumnLayout {
    id: body
    property Logcat log

    readonly property var levelNames: ["Verbose", "Debug", "Info", "Warning", "Error", "Fatal"]
    // The apps to pick from: the phone's, and the one picked even when the list does not have it yet.
    readonly property var apps: {
        const packages = log ? log.packages.slice() : []
        if (log && log.app !== "" && packages.indexOf(log.app) < 0)
            packages.unshift(log.app)
        return ["All apps"].concat(packages)
    }
    // The view follows the newest entry until the user scrolls away or goes to a crash.
    property bool following: true

    function showRow(row) {
        if (row < 0)
            return
        following = false
        list.currentIndex = row
        list.positionViewAtIndex(row, ListView.Beginning)
    }
    function previousCrash() {
        showRow(log.previousCrash(list.currentIndex < 0 ? list.count : list.currentIndex))
    }
    function nextCrash() {
        showRow(log.nextCrash(list.currentIndex))
    }

    spacing: 6
    onLogChanged: {
        following = true
        if (log)
            log.refreshPackages()
    }

    Label {
        objectName: "logcatState"
        text: body.log ? body.log.stateText : ""
        color: body.log && body.log.state === Logcat.Stopped ? Style.orange : Style.secondary
        font: Style.caption
    }
    RowLayout {
        Layout.fillWidth: true
        ComboBox {
            objectName: "levelPicker"
            model: body.levelNames
            currentIndex: body.log ? body.log.minimumLevel - 1 : 0
            onActivated: index => body.log.minimumLevel = index + 1
            Accessible.name: "Lowest level shown"
        }
        ComboBox {
            objectName: "appPicker"
            model: body.apps
            currentIndex: body.log && body.log.app !== "" ? body.apps.indexOf(body.log.app) : 0
            onActivated: index => body.log.app = index === 0 ? "" : body.apps[index]
            onPressedChanged: {
                if (pressed && body.log)
                    body.log.refreshPackages()
            }
            Layout.preferredWidth: 220
            Accessible.name: "App"
        }
        TextField {
            objectName: "logcatSearch"
            placeholderText: "Search"
            text: body.log ? body.log.text : ""
            onTextEdited: body.log.text = text
            Layout.fillWidth: true
            Accessible.name: "Search the log"
        }
        CheckBox {
            objectName: "regularExpression"
            text: "Regular expression"
            checked: body.log !== null && body.log.regularExpression
            onToggled: body.log.regularExpression = checked
            FocusRing {}
        }
    }
    RowLayout {
        Layout.fillWidth: true
        Button {
            objectName: "pauseLogcat"
            text: body.log && body.log.paused ? "Resume" : "Pause"
            onClicked: body.log.paused = !body.log.paused
        }
        Button {
            objectName: "previousCrash"
            text: "Previous crash"
            enabled: body.log !== null && body.log.crashCount > 0
            onClicked: body.previousCrash()
        }
        Button {
            objectName: "nextCrash"
            text: "Next crash"
            enabled: body.log !== null && body.log.crashCount > 0
            onClicked: body.nextCrash()
        }
        Button {
            objectName: "clearLogcat"
            text: "Clear…"
            onClicked: clearQuestion.open()
        }
        Button {
            objectName: "saveLogcat"
            text: "Save…"
            enabled: body.log !== null && body.log.count > 0
            onClicked: {
                if (!saveDialog.item)
                    saveDialog.active = true
                saveDialog.item.open()
            }
        }
        Item { Layout.fillWidth: true }
        Label {
            objectName: "logcatCounts"
            text: !body.log ? ""
                : body.log.filtering ? "Filtering…"
                : body.log.count + " of " + body.log.held + " entries"
                  + (body.log.paused && body.log.waiting > 0 ? ", " + body.log.waiting + " new while paused" : "")
                  + (body.log.crashCount > 0 ? ", " + body.log.crashCount + (body.log.crashCount === 1 ? " crash" : " crashes") : "")
            color: Style.secondary
            font: Style.caption
        }
    }
    Label {
        objectName: "filterError"
        visible: body.log !== null && body.log.filterError !== undefined
        text: visible ? body.log.filterError : ""
        color: Style.red
        wrapMode: Text.Wrap
        Layout.fillWidth: true
    }

    Rectangle {
        radius: 6
        color: Style.logBackground
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.minimumHeight: 80

        ListView {
            id: list
            objectName: "logcatList"
            anchors.fill: parent
            anchors.margins: 6
            clip: true
            model: body.log
            currentIndex: -1
            boundsBehavior: Flickable.StopAtBounds
            reuseItems: true
            highlightFollowsCurrentItem: false
            ScrollBar.vertical: ScrollBar {}
            // The keyboard reaches the log too: the arrow keys pick an entry, Copy copies it.
            activeFocusOnTab: true
            Keys.onPressed: event => {
                if (event.matches(StandardKey.Copy) && currentItem) {
                    TolvaneApp.copyToClipboard(currentItem.asText())
                    event.accepted = true
                }
            }
            onCurrentIndexChanged: {
                if (currentIndex >= 0)
                    body.following = false
            }
            FocusRing { shown: list.activeFocus; outset: 5 }
            onMovementStarted: body.following = false
            onMovementEnded: body.following = atYEnd
            onCountChanged: {
                if (body.following && !followTimer.running)
                    followTimer.start()
            }
            function follow() {
                if (body.following)
                    positionViewAtEnd()
            }
            // Following the end lays out a page of new rows. While a phone floods its log that happens
            // at once and then at most every 50 ms, not for every frame, which leaves the frames to reading.
            Timer {
                id: followTimer
                interval: 50
                triggeredOnStart: true
                onTriggered: Qt.callLater(list.follow)
            }
            Connections {
                target: body.log
                function onModelReset() {
                    list.currentIndex = -1
                    if (body.following)
                        Qt.callLater(list.follow)
                }
            }

            // One tap handler for the list, not a mouse area in every row: a flood makes rows by the hundred.
            TapHandler {
                onTapped: eventPoint => {
                    const row = list.indexAt(eventPoint.position.x + list.contentX,
                        eventPoint.position.y + list.contentY)
                    if (row >= 0) {
                        list.currentIndex = row
                        // Also when the row was already picked and the view has since followed the end.
                        body.following = false
                        list.forceActiveFocus(Qt.MouseFocusReason)
                    }
                }
            }

            // Three texts a row, the fewest that keep the columns and their colours: rows are laid out
            // by the hundred while a phone floods its log.
            delegate: Rectangle {
                id: entry
                required property int index
                required property string time
                required property int level
                required property string letter
                required property string tag
                required property int pid
                required property string message
                required property bool crash
                readonly property color levelColor: Style.logLevel(level)
                // As logcat prints it; made only when copied, not for every row of a flood.
                function asText() {
                    return level === 0 ? message : time + " " + pid + " " + letter + " " + tag + ": " + message
                }

                width: ListView.view.width
                height: Math.max(messageText.implicitHeight, 14) + 2
                color: ListView.isCurrentItem ? Style.selection : crash ? Style.failureBox : "transparent"
                Accessible.role: Accessible.ListItem
                Accessible.name: (crash ? "Crash. " : "") + letter + " " + tag + ": " + message

                Rectangle {
                    // A crash is marked along its whole height.
                    visible: entry.crash
                    width: 3
                    height: parent.height
                    color: Style.red
                }
                Text {
                    x: 6
                    width: 168
                    visible: entry.level !== 0
                    text: entry.time + (entry.pid > 0 ? String(entry.pid).padStart(6) : "")
                    font: Style.monoCaption
                    color: Style.secondary
                }
                Text {
                    x: 178
                    width: 124
                    visible: entry.level !== 0
                    text: entry.letter + " " + entry.tag
                    elide: Text.ElideRight
                    font: Style.monoCaption
                    color: entry.levelColor
                }
                Text {
                    id: messageText
                    x: entry.level === 0 ? 6 : 306
                    width: entry.width - x
                    text: entry.message
                    textFormat: Text.PlainText
                    wrapMode: Text.WrapAtWordBoundaryOrAnywhere
                    font: Style.monoCaption
                    color: entry.level === 0 ? Style.secondary : entry.levelColor
                }
            }
        }
        Label {
            visible: list.count === 0
            anchors.left: parent.left
            anchors.top: parent.top
            anchors.margins: 6
            text: body.log && body.log.held > 0 ? "No entry matches the filter." : "No log yet."
            font: Style.monoCaption
            color: Style.secondary
        }
    }
    Label {
        objectName: "logcatNote"
        visible: body.log !== null && body.log.note !== undefined
        text: visible ? body.log.note : ""
        color: Style.secondary
        font: Style.caption
        wrapMode: Text.Wrap
        Layout.fillWidth: true
    }

    ConfirmDialog {
        id: clearQuestion
        objectName: "clearLogcatQuestion"
        message: "Clear this phone's log? Tolvane forgets the entries it holds, and the phone empties its own log."
        confirmText: "Clear"
        onConfirmed: body.log.clear()
    }
    // The save dialog is made the first time the log is saved.
    Loader {
        id: saveDialog
        active: false
        sourceComponent: FileDialog {
            title: "Save Log"
            fileMode: FileDialog.SaveFile
            acceptLabel: "Save"
            nameFilters: ["Text file (*.txt)"]
            defaultSuffix: "txt"
            currentFolder: TolvaneApp.saveChooser.proposedFolder()
            onAccepted: body.log.save(selectedFile)
        }
    }
}
