import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// The main window's content: header, notice, and the three tabs (or the Intel notice instead).
ColumnLayout {
    id: content
    property SetupController setup: TolvaneApp.setup
    signal logsRequested

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
        visible: content.setup.isAppleSilicon
        Layout.fillWidth: true
        TabButton { text: "Setup" }
        TabButton { text: "Phones" }
        TabButton { text: "Apps" }
    }
    StackLayout {
        visible: content.setup.isAppleSilicon
        currentIndex: tabs.currentIndex
        Layout.fillWidth: true
        Layout.fillHeight: true
        // Each tab's content is made when the tab is first shown, so the window comes up with only what
        // it shows; once made, a tab keeps its state while another is shown.
        TabContent { tab: 0; sourceComponent: SetupView { objectName: "setupView" } }
        TabContent { tab: 1; sourceComponent: PhonesView { objectName: "phonesView" } }
        TabContent { tab: 2; sourceComponent: AppsView { objectName: "appsView" } }
    }

    component TabContent: Loader {
        required property int tab
        readonly property bool shown: content.setup.isAppleSilicon && tabs.currentIndex === tab
        active: false
        onShownChanged: if (shown) active = true
        Component.onCompleted: if (shown) active = true
    }
}
