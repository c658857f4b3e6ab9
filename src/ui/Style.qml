pragma Singleton
import QtQuick

// The few fonts and colours the views share, nearest to the Mac's own.
QtObject {
    readonly property int spacing: 8
    readonly property font caption: Qt.font({ pixelSize: 11 })
    readonly property font body: Qt.font({ pixelSize: 13 })
    readonly property font headline: Qt.font({ pixelSize: 13, bold: true })
    readonly property font title2: Qt.font({ pixelSize: 22, bold: true })
    readonly property font title3: Qt.font({ pixelSize: 20, bold: true })
    readonly property font monoCaption: Qt.font({ family: "monospace", pixelSize: 11 })
    readonly property font mono: Qt.font({ family: "monospace", pixelSize: 12 })

    readonly property color secondary: "#6e6e73"
    readonly property color green: "#28a745"
    readonly property color orange: "#e07b00"
    readonly property color red: "#d70015"
    readonly property color accent: "#0a64d8"
}
