import QtQuick
import QtQuick.Controls

// A window of this app. Its controls take the system's palette, so they follow the light or dark
// appearance as the Mac switches it, like every colour of our own (Style).
ApplicationWindow {
    SystemPalette {
        id: active
        colorGroup: SystemPalette.Active
    }
    SystemPalette {
        id: disabled
        colorGroup: SystemPalette.Disabled
    }

    palette.active.window: active.window
    palette.active.windowText: active.windowText
    palette.active.base: active.base
    palette.active.alternateBase: active.alternateBase
    palette.active.text: active.text
    palette.active.placeholderText: active.placeholderText
    palette.active.button: active.button
    palette.active.buttonText: active.buttonText
    palette.active.light: active.light
    palette.active.midlight: active.midlight
    palette.active.mid: active.mid
    palette.active.dark: active.dark
    palette.active.shadow: active.shadow
    palette.active.highlight: active.highlight
    palette.active.highlightedText: active.highlightedText
    palette.inactive.window: active.window
    palette.inactive.windowText: active.windowText
    palette.inactive.base: active.base
    palette.inactive.alternateBase: active.alternateBase
    palette.inactive.text: active.text
    palette.inactive.placeholderText: active.placeholderText
    palette.inactive.button: active.button
    palette.inactive.buttonText: active.buttonText
    palette.inactive.light: active.light
    palette.inactive.midlight: active.midlight
    palette.inactive.mid: active.mid
    palette.inactive.dark: active.dark
    palette.inactive.shadow: active.shadow
    palette.inactive.highlight: active.highlight
    palette.inactive.highlightedText: active.highlightedText
    palette.disabled.window: disabled.window
    palette.disabled.windowText: disabled.windowText
    palette.disabled.base: disabled.base
    palette.disabled.alternateBase: disabled.alternateBase
    palette.disabled.text: disabled.text
    palette.disabled.placeholderText: disabled.placeholderText
    palette.disabled.button: disabled.button
    palette.disabled.buttonText: disabled.buttonText
    palette.disabled.light: disabled.light
    palette.disabled.midlight: disabled.midlight
    palette.disabled.mid: disabled.mid
    palette.disabled.dark: disabled.dark
    palette.disabled.shadow: disabled.shadow
    palette.disabled.highlight: disabled.highlight
    palette.disabled.highlightedText: disabled.highlightedText
}
