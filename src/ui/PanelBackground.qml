import QtQuick

// The panel of a sheet or an alert, whose edge shows against the dimmed window in light and dark.
Rectangle {
    color: Style.panel
    border.color: Style.panelEdge
    radius: 8
}
