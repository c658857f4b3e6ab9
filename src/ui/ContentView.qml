import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// The main window's content: header, notice, and the three tabs (or the Intel notice instead).
ColumnLayout {
    id: content
    property SetupController setup: TolvaneApp.setup
    // While true, no tab's content is made yet: the main window holds them back until its first frame
    // is drawn, so it appears as fast as an empty window does.
    property bool holdTabs: false
    signal logsRequested

    // Opens the new-phone sheet on the Phones tab, where the setup allows it.
    function newPhone() {
        if (!setup.isAppleSilicon)
            return
        tabs.currentIndex = 1
        if (phonesTab.item)
            phonesTab.item.newPhone()
        else
            phonesTab.newPhoneAsked = true
    }
    // Reads again what the shown tab shows: the Setup tab's checks, the phones, the apps.
    function refresh() {
        const view = [null, phonesTab, appsTab][tabs.currentIndex]
        if (view && view.item && setup.isAppleSilicon)
            view.item.refresh()
        else
            setup.refresh()
    }

    spacing: 8

    RowLayout {
        Layout.fillWidth: true
        Label {
            text: "Tolvane"
            font: Style.title2
        }
        Item { Layout.fillWidth: true }
        Button {
            objectName: "logsButton"
            text: "Logs"
            onClicked: content.logsRequested()
        }
    }
    Label {
        text: "This app only drives Google's own command line tools. The emulator opens in its own window, and that window and its sound belong to Google's Android Emulator, not to this app."
        font: Style.caption
        color: Style.secondary
        wrapMode: Text.Wrap
        Layout.fillWidth: true
    }
    IntelNotice {
        objectName: "intelNotice"
        visible: !content.setup.isAppleSilicon
        Layout.fillWidth: true
    }
    Item {
        visible: !content.setup.isAppleSilicon
        Layout.fillHeight: true
    }
    TabBar {
        id: tabs
        objectName: "tabs"
        background: Rectangle { radius: 6; color: Style.card }
        visible: content.setup.isAppleSilicon
        Layout.fillWidth: true
        Tab { text: "Setup" }
        Tab { text: "Phones" }
        Tab { text: "Apps" }
    }
    StackLayout {
        visible: content.setup.isAppleSilicon
        currentIndex: tabs.currentIndex
        Layout.fillWidth: true
        Layout.fillHeight: true
        // Each tab's content is made when the tab is first shown, so the window comes up with only what
        // it shows; once made, a tab keeps its state while another is shown. The views are named by file,
        // not by type, so not even their code is loaded before they are needed.
        TabContent { tab: 0; view: "SetupView.qml"; name: "setupView" }
        TabContent {
            id: phonesTab
            property bool newPhoneAsked: false
            tab: 1
            view: "PhonesView.qml"
            name: "phonesView"
            onLoaded: {
                if (newPhoneAsked)
                    item.newPhone()
                newPhoneAsked = false
            }
        }
        TabContent { id: appsTab; tab: 2; view: "AppsView.qml"; name: "appsView" }
    }

    component TabContent: Loader {
        required property int tab
        required property string view
        required property string name
        readonly property bool shown: !content.holdTabs && content.setup.isAppleSilicon && tabs.currentIndex === tab
        function make() {
            if (shown && !item)
                setSource(view, { objectName: name })
        }
        // Made just after, not while the change is being told: a new view checks the machine, which
        // can change what this binding reads.
        onShownChanged: if (shown) Qt.callLater(make)
        Component.onCompleted: make()
    }
}
