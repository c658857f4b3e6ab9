import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// Shown instead of the tabs on a Mac without Apple silicon.
Rectangle {
    implicitHeight: column.implicitHeight + 24
    radius: 8
    color: Style.notice
    Accessible.role: Accessible.Grouping
    Accessible.name: "This Mac is not an Apple silicon Mac."

    ColumnLayout {
        id: column
        anchors.fill: parent
        anchors.margins: 12
        spacing: 8

        Label {
            text: "This Mac is not an Apple silicon Mac."
            font: Style.headline
        }
        Label {
            text: "Tolvane sets up the arm64 Android emulator, which needs an Apple silicon Mac (M1 or newer). Nothing can be installed or started on this Mac, so the app stops here."
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
    }
}
