import QtQuick

// A green filled check mark when the requirement is met, an orange outlined exclamation mark when not.
Rectangle {
    id: icon
    property bool ok: false
    // What the requirement is called; a screen reader says it with the state ("Homebrew: found").
    property string label

    implicitWidth: 20
    implicitHeight: 20
    radius: width / 2
    color: ok ? Style.green : "transparent"
    border.width: ok ? 0 : 1.5
    border.color: Style.orange
    Accessible.role: Accessible.Graphic
    Accessible.name: (label.length > 0 ? label + ": " : "") + (ok ? "found" : "not found")

    Text {
        anchors.centerIn: parent
        text: icon.ok ? "\u2713" : "!"
        color: icon.ok ? "white" : Style.orange
        font.pixelSize: 13
        font.bold: true
        Accessible.ignored: true
    }
}
