import QtQuick
import QtQuick.Controls
import QtQuick.Shapes

// The Mac's disclosure control: a triangle that points right when closed and down when open, then its label.
AbstractButton {
    id: control
    checkable: true
    padding: 2
    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.checkable: true
    Accessible.checked: checked

    FocusRing {}

    contentItem: Row {
        spacing: 5
        Shape {
            width: 9
            height: 9
            anchors.verticalCenter: parent.verticalCenter
            rotation: control.checked ? 90 : 0
            Behavior on rotation {
                NumberAnimation { duration: 120 }
            }
            ShapePath {
                fillColor: Style.secondary
                strokeColor: "transparent"
                startX: 1.5
                startY: 0.5
                PathLine { x: 8.5; y: 4.5 }
                PathLine { x: 1.5; y: 8.5 }
                PathLine { x: 1.5; y: 0.5 }
            }
        }
        Text {
            text: control.text
            font: Style.body
            color: control.down ? Style.secondary : Style.text
        }
    }
}
