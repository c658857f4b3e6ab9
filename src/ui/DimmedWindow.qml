import QtQuick

// What shows of the window behind a sheet or an alert.
Rectangle {
    color: Style.dim
}
