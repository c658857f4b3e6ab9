import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// Where the disk went: what the phones and the system images take together, and what is left.
Label {
    id: line
    property PhoneStore store

    readonly property PhoneDiskUse disk: store.diskUse

    objectName: "diskUseLine"
    visible: store.phones.length > 0 || disk.installedImages.length > 0
    text: "Phones take " + disk.formatBytes(disk.phonesBytes) + " and system images "
          + disk.formatBytes(disk.imagesBytes) + " on disk"
          + (disk.freeBytes !== undefined ? "; " + disk.formatBytes(disk.freeBytes) + " is free." : ".")
    color: disk.lowDisk ? Style.orange : Style.secondary
    font: Style.caption
    wrapMode: Text.Wrap
    Layout.fillWidth: true
}
