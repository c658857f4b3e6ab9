import QtQuick
import Tolvane

TolvaneTestCase {
    id: root
    name: "ContentView"

    Component {
        id: contentComponent
        ContentView { anchors.fill: parent }
    }

    Component {
        id: phonesComponent
        PhonesView { anchors.fill: parent }
    }
    Component {
        id: detailsComponent
        DetailsBox { width: 300; summary: "Something failed." }
    }
    Component {
        id: logComponent
        LogBox { width: 300; height: 100 }
    }

    // The control the keyboard is on shows a ring.
    function test_focusRing_data() {
        return [
            { tag: "tab", component: contentComponent, control: view => findChild(view, "tabs").itemAt(1) },
            { tag: "switch", component: phonesComponent, control: view => findChild(view, "coldBoot") },
            { tag: "Show Details", component: detailsComponent, control: view => findChild(view, "showDetails") },
            { tag: "log", component: logComponent, control: view => view }
        ]
    }
    function test_focusRing(data) {
        const view = createTemporaryObject(data.component, root)
        const control = data.control(view)
        const ring = findChild(control, "focusRing")
        verify(!ring.visible)
        control.forceActiveFocus(Qt.TabFocusReason)
        verify(ring.visible)
    }

    // The Mac's menu bar, made here as the Mac makes it: every item reaches its command, with its shortcut.
    Component {
        id: menuBarComponent
        AppMenuBar {}
    }
    QtObject {
        id: commands
        property string called
        readonly property var keys: ({ newPhone: "Ctrl+N", refresh: "Ctrl+R", closeWindow: "Ctrl+W", minimize: "Ctrl+M", quit: "Ctrl+Q" })
        function newPhone() { called = "newPhone" }
        function refresh() { called = "refresh" }
        function closeWindow() { called = "closeWindow" }
        function minimize() { called = "minimize" }
        function showAbout() { called = "showAbout" }
        function quit() { called = "quit" }
        function openLogs() { called = "openLogs" }
    }
    function test_menuBar() {
        const bar = createTemporaryObject(menuBarComponent, root, { commands: commands })
        const found = []
        for (let m = 0; m < bar.menus.length; ++m) {
            const menu = bar.menus[m]
            for (let i = 0; i < menu.items.length; ++i) {
                const item = menu.items[i]
                if (item.separator)
                    continue
                item.triggered()
                found.push([menu.title, item.text, String(item.shortcut), commands.called])
            }
        }
        compare(found, [
            ["File", "New Phone...", "Ctrl+N", "newPhone"],
            ["File", "Close Window", "Ctrl+W", "closeWindow"],
            ["File", "About Tolvane", "undefined", "showAbout"],
            ["File", "Quit Tolvane", "Ctrl+Q", "quit"],
            ["View", "Refresh", "Ctrl+R", "refresh"],
            ["Window", "Minimize", "Ctrl+M", "minimize"],
            ["Window", "Show Logs", "undefined", "openLogs"],
        ])
    }

    // The disclosure says what pressing it does, and its triangle is drawn whatever the renderer (these tests
    // run on the software one).
    function test_detailsDisclosure_data() {
        return [
            { tag: "closed", open: false, text: "Show Details", turn: 0 },
            { tag: "open", open: true, text: "Hide Details", turn: 90 }
        ]
    }
    function test_detailsDisclosure(data) {
        const box = createTemporaryObject(detailsComponent, root, { open: data.open })
        const toggle = findChild(box, "showDetails")
        compare(toggle.text, data.text)
        const triangle = findChild(toggle, "disclosureTriangle")
        tryCompare(triangle, "turn", data.turn)
        // Its pixels in the secondary colour, once painted. A grab takes the place an item has in its parent,
        // so the box is grabbed whole.
        const drawn = () => {
            const image = grabImage(box)
            const at = triangle.mapToItem(box, 0, 0)
            let count = 0
            for (let x = at.x; x < at.x + triangle.width; ++x) {
                for (let y = at.y; y < at.y + triangle.height; ++y) {
                    const pixel = image.pixel(x, y)
                    if (Math.abs(pixel.r - Style.secondary.r) + Math.abs(pixel.g - Style.secondary.g) + Math.abs(pixel.b - Style.secondary.b) < 0.1)
                        ++count
                }
            }
            return count
        }
        tryVerify(() => drawn() >= 10, 5000, "the triangle is drawn")
    }

    function test_intelNoticeAlone() {
        const view = createTemporaryObject(contentComponent, root, { setup: sim.intelSetup() })
        verify(findChild(view, "intelNotice").visible)
        verify(!findChild(view, "tabs").visible)
        verify(findChild(view, "logsButton").visible)
    }

    // The tabs wait until they are released; each view is made when its tab is first shown.
    function test_threeTabsOnAppleSilicon() {
        const view = createTemporaryObject(contentComponent, root, { holdTabs: true })
        compare(findChild(view, "setupView"), null)
        view.holdTabs = false
        tryVerify(() => findChild(view, "setupView") !== null)
        verify(!findChild(view, "intelNotice").visible)
        const tabs = findChild(view, "tabs")
        verify(tabs.visible)
        compare(tabs.count, 3)
        compare([0, 1, 2].map(i => tabs.itemAt(i).text), ["Setup", "Phones", "Apps"])
        compare(tabs.currentIndex, 0)
        for (const [index, name] of ["setupView", "phonesView", "appsView"].entries()) {
            compare(findChild(view, name) === null, index > 0, name + " is made when first shown")
            tabs.currentIndex = index
            tryVerify(() => findChild(view, name) !== null && findChild(view, name).visible, 5000, name)
        }
        let asked = 0
        view.logsRequested.connect(() => ++asked)
        mouseClick(findChild(view, "logsButton"))
        compare(asked, 1)
    }
}
