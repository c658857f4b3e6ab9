import QtQuick
import QtQuick.Layouts

// A grey rounded panel holding a column of items.
Rectangle {
    id: card
    default property alias content: column.data
    property alias spacing: column.spacing

    implicitHeight: column.implicitHeight + 24
    radius: 8
    color: Style.card

    ColumnLayout {
        id: column
        anchors.fill: parent
        anchors.margins: 12
        spacing: 12
    }
}
