import QtQuick
import QtTest
import Tolvane

TolvaneTestCase {
    id: root
    name: "ContentView"

    Component {
        id: contentComponent
        ContentView { anchors.fill: parent }
    }

    Component {
        id: spyComponent
        SignalSpy {}
    }

    function test_intelNoticeAlone() {
        const view = createTemporaryObject(contentComponent, root, { setup: sim.intelSetup() })
        verify(findChild(view, "intelNotice").visible)
        verify(!findChild(view, "tabs").visible)
        verify(findChild(view, "logsButton").visible)
    }

    function test_threeTabsOnAppleSilicon() {
        const view = createTemporaryObject(contentComponent, root)
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
    }

    function test_tabsHeldBackUntilReleased() {
        const view = createTemporaryObject(contentComponent, root, { holdTabs: true })
        compare(findChild(view, "setupView"), null)
        view.holdTabs = false
        tryVerify(() => findChild(view, "setupView") !== null)
    }

    function test_logsButtonAsksForTheLogsWindow() {
        const view = createTemporaryObject(contentComponent, root)
        const spy = createTemporaryObject(spyComponent, root, { target: view, signalName: "logsRequested" })
        mouseClick(findChild(view, "logsButton"))
        compare(spy.count, 1)
    }
}
