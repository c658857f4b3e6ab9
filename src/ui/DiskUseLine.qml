import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// Where the disk went: what the phones and the system images take together, and what is left.
Label {
    id: line
    property PhoneStore store

    objectName: "diskUseLine"
    visible: store.phones.length > 0 || store.installedImages.length > 0
    text: "Phones take " + store.formatBytes(store.phonesBytes) + " and system images "
          + store.formatBytes(store.imagesBytes) + " on disk"
          + (store.freeBytes !== undefined ? "; " + store.formatBytes(store.freeBytes) + " is free." : ".")
    color: store.lowDisk ? Style.orange : Style.secondary
    font: Style.caption
    wrapMode: Text.Wrap
    Layout.fillWidth: true
    Layout.leftMargin: 12
    Layout.rightMargin: 12
}
