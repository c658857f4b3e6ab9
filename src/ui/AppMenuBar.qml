import Qt.labs.platform
import Tolvane

// The app's menu bar, where the platform draws one (the Mac's). Made without a window, so it is the menu
// bar of every window of the app. Its items call the commands of the main window, which also gives them
// their shortcuts; the Mac moves About and Quit into the app's own menu.
MenuBar {
    id: bar
    required property var commands

    Menu {
        title: "File"
        MenuItem {
            text: "New Phone..."
            shortcut: bar.commands.keys.newPhone
            onTriggered: bar.commands.newPhone()
        }
        MenuSeparator {}
        MenuItem {
            text: "Close Window"
            shortcut: bar.commands.keys.closeWindow
            onTriggered: bar.commands.closeWindow()
        }
        MenuItem {
            text: "About Tolvane"
            role: MenuItem.AboutRole
            onTriggered: bar.commands.showAbout()
        }
        MenuItem {
            text: "Quit Tolvane"
            role: MenuItem.QuitRole
            shortcut: bar.commands.keys.quit
            onTriggered: bar.commands.quit()
        }
    }
    Menu {
        title: "View"
        MenuItem {
            text: "Refresh"
            shortcut: bar.commands.keys.refresh
            onTriggered: bar.commands.refresh()
        }
    }
    Menu {
        title: "Window"
        MenuItem {
            text: "Minimize"
            shortcut: bar.commands.keys.minimize
            onTriggered: bar.commands.minimize()
        }
        MenuSeparator {}
        MenuItem {
            text: "Show Logs"
            onTriggered: bar.commands.openLogs()
        }
    }
}
