pragma Singleton
import QtQuick

// The few fonts and colours the views share, nearest to the Mac's own. Every colour follows the system's
// light or dark appearance, read from the window colour of the application's palette.
QtObject {
    readonly property SystemPalette palette: SystemPalette {
        colorGroup: SystemPalette.Active
    }
    readonly property bool dark: palette.window.hslLightness < 0.5

    readonly property int spacing: 8
    readonly property font caption: Qt.font({ pixelSize: 11 })
    readonly property font body: Qt.font({ pixelSize: 13 })
    readonly property font headline: Qt.font({ pixelSize: 13, bold: true })
    readonly property font title2: Qt.font({ pixelSize: 22, bold: true })
    readonly property font title3: Qt.font({ pixelSize: 20, bold: true })
    readonly property font monoCaption: Qt.font({ family: "monospace", pixelSize: 11 })
    readonly property font mono: Qt.font({ family: "monospace", pixelSize: 12 })

    // Plain text items (TextEdit, Text) take these; controls follow the palette on their own.
    readonly property color text: palette.windowText
    readonly property color secondary: dark ? "#98989d" : "#6e6e73"
    readonly property color green: dark ? "#32d74b" : "#1f8a38"
    readonly property color orange: dark ? "#ff9f0a" : "#b85c00"
    readonly property color red: dark ? "#ff6961" : "#d70015"
    readonly property color accent: dark ? "#0a84ff" : "#0a64d8"
    readonly property color purple: dark ? "#da8fff" : "#8e3fc0"
    // Sheets and alerts: the window dimmed behind them, and their own panel with an edge that shows.
    readonly property color dim: dark ? Qt.rgba(0, 0, 0, 0.5) : Qt.rgba(0, 0, 0, 0.2)
    readonly property color panel: palette.window
    readonly property color panelEdge: dark ? Qt.rgba(1, 1, 1, 0.25) : Qt.rgba(0, 0, 0, 0.22)
    // A switch's track when off, and the selected tab.
    readonly property color switchOff: dark ? "#5b5b60" : "#d9d9de"
    readonly property color selectedTab: dark ? "#636366" : "#ffffff"
    // Around the control the keyboard acts on.
    readonly property color focusRing: dark ? Qt.rgba(0.04, 0.52, 1, 0.7) : Qt.rgba(0.04, 0.39, 0.85, 0.55)
    readonly property color separator: dark ? Qt.rgba(1, 1, 1, 0.12) : Qt.rgba(0, 0, 0, 0.1)

    // Backgrounds: panels, failure boxes, notices, and the wells that hold logs and long texts.
    readonly property color card: Qt.rgba(0.5, 0.5, 0.5, dark ? 0.18 : 0.1)
    readonly property color failureBox: dark ? Qt.rgba(1, 0.27, 0.23, 0.16) : Qt.rgba(0.84, 0, 0.08, 0.08)
    readonly property color notice: dark ? Qt.rgba(1, 0.62, 0.04, 0.2) : Qt.rgba(0.88, 0.48, 0, 0.15)
    readonly property color logBackground: dark ? Qt.rgba(1, 1, 1, 0.07) : Qt.rgba(0, 0, 0, 0.06)
    readonly property color terminal: dark ? Qt.rgba(0, 0, 0, 0.45) : Qt.rgba(0, 0, 0, 0.75)
    readonly property color terminalText: "#f2f2f2"
    readonly property color terminalPlaceholder: "#a0a0a0"
    // The colour of a phone log's entry by its level: none, verbose, debug, info, warning, error, fatal.
    function logLevel(level) {
        return [secondary, secondary, text, green, orange, red, purple][level] || text
    }

    // Behind selected text that keeps its own colour. The Mac's highlight is made for that; a platform
    // whose highlight expects light text on it gets a see-through one.
    readonly property color selection: Qt.colorEqual(palette.highlightedText, palette.text)
        ? palette.highlight : Qt.rgba(palette.highlight.r, palette.highlight.g, palette.highlight.b, 0.4)
}
