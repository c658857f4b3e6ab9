import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// One requirement: its status, its name over a line of explanation, and while unmet the button that meets it.
// Anchored rather than laid out: the row's parts must follow the button appearing and going at once.
Item {
    id: row
    property string name
    property string detail
    property bool ok: false
    property string buttonText
    property bool buttonEnabled: true
    signal activated

    implicitHeight: Math.max(texts.implicitHeight, button.visible ? button.implicitHeight : 0, icon.implicitHeight)
    Layout.fillWidth: true

    StatusIcon {
        id: icon
        objectName: "status " + row.name
        ok: row.ok
        label: row.name
        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
    }
    Column {
        id: texts
        spacing: 2
        anchors.left: icon.right
        anchors.leftMargin: 10
        anchors.right: button.visible ? button.left : parent.right
        anchors.rightMargin: button.visible ? 10 : 0
        anchors.verticalCenter: parent.verticalCenter
        Label {
            text: row.name
            width: parent.width
        }
        Label {
            text: row.detail
            font: Style.caption
            color: Style.secondary
            wrapMode: Text.Wrap
            width: parent.width
        }
    }
    Button {
        id: button
        objectName: row.buttonText
        visible: !row.ok
        text: row.buttonText
        enabled: row.buttonEnabled
        onClicked: row.activated()
        Accessible.name: text
        Accessible.description: row.name + ": " + row.detail
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
    }
}
