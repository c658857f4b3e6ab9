import QtQuick

// The Mac's focus ring: drawn around a control while the keyboard has brought it focus. Made a child of
// the control it rings.
Rectangle {
    property bool shown: parent ? parent.visualFocus === true : false
    // How far the ring stands out of the control; negative draws it inside, where a neighbour or the
    // edge of a bar would cover it.
    property real outset: 3

    objectName: "focusRing"
    visible: shown
    anchors.fill: parent
    anchors.margins: -outset
    z: 100
    radius: 5
    color: "transparent"
    border.width: 3
    border.color: Style.focusRing
}
