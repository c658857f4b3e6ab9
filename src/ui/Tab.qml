import QtQuick
import QtQuick.Controls

// A tab of a tab bar. The selected one is drawn here as a raised segment, so it stands out in dark as
// well as in light.
TabButton {
    id: tab

    background: Rectangle {
        implicitHeight: 24
        radius: 5
        color: tab.checked ? Style.selectedTab : "transparent"
        border.color: tab.checked ? Style.panelEdge : "transparent"
    }
    FocusRing { outset: -1 }
}
