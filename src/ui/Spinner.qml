import QtQuick
import QtQuick.Shapes

// A small indeterminate progress indicator, as the Mac draws one beside a button or a status.
Item {
    id: spinner
    property bool running: visible
    property real size: 16
    property string label: "In progress"

    implicitWidth: size
    implicitHeight: size
    Accessible.role: Accessible.ProgressBar
    Accessible.name: label

    Shape {
        anchors.fill: parent
        RotationAnimator on rotation {
            from: 0
            to: 360
            duration: 900
            loops: Animation.Infinite
            running: spinner.running && spinner.visible
        }
        ShapePath {
            fillColor: "transparent"
            strokeColor: Style.secondary
            strokeWidth: Math.max(2, spinner.size / 8)
            capStyle: ShapePath.RoundCap
            PathAngleArc {
                centerX: spinner.width / 2
                centerY: spinner.height / 2
                radiusX: spinner.width / 2 - 2
                radiusY: spinner.height / 2 - 2
                startAngle: -90
                sweepAngle: 270
            }
        }
    }
}
