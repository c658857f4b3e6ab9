import QtQuick
import QtQuick.Controls

ApplicationWindow {
    title: "Tolvane"
    minimumWidth: 780
    minimumHeight: 640
    width: 780
    height: 640
    visible: true
}
