import QtQuick
import QtQuick.Controls

// The Mac's switch: a rounded track, grey when off and in the accent colour when on, with a white knob.
// Drawn here, so the off track shows in dark as well as in light.
Switch {
    id: control

    indicator: Rectangle {
        implicitWidth: 32
        implicitHeight: 18
        x: control.leftPadding
        y: control.topPadding + Math.round((control.availableHeight - height) / 2)
        radius: height / 2
        color: control.checked ? Style.accent : Style.switchOff
        opacity: control.enabled ? 1 : 0.5

        Rectangle {
            width: parent.height - 2
            height: width
            radius: width / 2
            x: control.checked ? parent.width - width - 1 : 1
            y: 1
            color: "#ffffff"
            border.color: Qt.rgba(0, 0, 0, 0.15)
            Behavior on x {
                NumberAnimation { duration: 100 }
            }
        }
        FocusRing { shown: control.visualFocus }
    }
}
