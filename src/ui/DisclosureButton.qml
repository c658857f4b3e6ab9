import QtQuick
import QtQuick.Controls

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
        // Painted, turn included, on a canvas: every scene graph backend draws one, the software one too.
        Canvas {
            objectName: "disclosureTriangle"
            readonly property color fill: Style.secondary
            // Degrees clockwise from pointing right.
            property real turn: control.checked ? 90 : 0
            width: 9
            height: 9
            anchors.verticalCenter: parent.verticalCenter
            Behavior on turn {
                NumberAnimation { duration: 120 }
            }
            onFillChanged: requestPaint()
            onTurnChanged: requestPaint()
            onPaint: {
                const context = getContext("2d")
                context.reset()
                context.translate(width / 2, height / 2)
                context.rotate(turn * Math.PI / 180)
                context.fillStyle = fill
                context.beginPath()
                context.moveTo(-3, -4)
                context.lineTo(4, 0)
                context.lineTo(-3, 4)
                context.closePath()
                context.fill()
            }
        }
        Text {
            text: control.text
            font: Style.body
            color: control.down ? Style.secondary : Style.text
        }
    }
}
