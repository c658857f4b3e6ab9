import QtQuick
import Tolvane

TolvaneTestCase {
    id: root
    name: "NewPhoneSheet"

    Component {
        id: phonesComponent
        PhonesView { anchors.fill: parent }
    }

    function init() {
        sim.reset()
        tryVerify(() => !store.imageJob.isRunning, 20000)
    }

    function openSheet() {
        const view = readyView(phonesComponent)
        mouseClick(findChild(view, "New phone..."))
        tryVerify(() => view.sheet !== null)
        const sheet = view.sheet
        tryVerify(() => !store.devicesLoading && !store.imagesLoading && store.images.length > 0, 30000)
        return [view, sheet]
    }

    // The sheet hangs from the top of the window with its form in two columns. What it read stays for the
    // next opening, a failure to read shows inside it, and an earlier opening's install log does not.
    function test_opensFreshAndReadsOnce() {
        sim.makeReady()
        const fresh = sim.freshStore()
        const view = listedView(phonesComponent, { store: fresh })
        sim.setBehaviour("sdkmanager.list.fail")
        mouseClick(findChild(view, "New phone..."))
        tryVerify(() => view.sheet !== null)
        let sheet = view.sheet
        compare(sheet.y, 0)
        const left = name => findChild(sheet, name).mapToItem(sheet.contentItem, 0, 0).x
        for (const name of ["modelPicker", "playSwitch", "versionPicker"])
            compare(left(name), left("nameField"), name)
        tryVerify(() => findChild(sheet, "catalogFailure") !== null, 30000)
        compare(findChild(findChild(sheet, "catalogFailure"), "detailsSummary").text,
                "Could not list Android versions. The command exited with status 1.")
        compare(sheet.y, 0)

        sim.clearBehaviour("sdkmanager.list.fail")
        mouseClick(findChild(sheet, "refreshCatalog"))
        tryVerify(() => fresh.images.length > 0 && !fresh.imagesLoading, 30000)
        tryVerify(() => findChild(sheet, "catalogFailure") === null)
        // A failed install shows its log in this opening only.
        sim.setBehaviour("sdkmanager.fail")
        mouseClick(findChild(sheet, "Install it"))
        tryVerify(() => findChild(sheet, "imageHint").text !== "", 30000)
        sim.clearBehaviour("sdkmanager.fail")
        mouseClick(findChild(sheet, "Close"))
        tryVerify(() => view.sheet === null)
        mouseClick(findChild(view, "New phone..."))
        tryVerify(() => view.sheet !== null)
        sheet = view.sheet
        compare(findChild(sheet, "imageHint").text, "")
        tryVerify(() => findChild(sheet, "Install it").enabled, 30000)
        mouseClick(findChild(sheet, "Install it"))
        tryVerify(() => findChild(sheet, "imageJobLog").visible)
        // The store reads the versions again once the image is installed.
        tryVerify(() => sheet.chosenImage.installed && !fresh.imagesLoading, 30000)
        mouseClick(findChild(sheet, "Close"))
        tryVerify(() => view.sheet === null)

        mouseClick(findChild(view, "New phone..."))
        tryVerify(() => view.sheet !== null)
        sheet = view.sheet
        verify(!fresh.imagesLoading)
        verify(sheet.chosenImage !== undefined && sheet.chosenImage.installed)
        verify(!findChild(sheet, "imageJobLog").visible)
    }

    function test_createWithAnImageInstall() {
        const [view, sheet] = openSheet()
        compare(sheet.name, "Pixel_Phone")
        verify(sheet.deviceId !== "")
        compare(sheet.api, sheet.apiChoices[0])
        verify(sheet.chosenImage !== undefined)
        verify(!sheet.chosenImage.installed)
        verify(!findChild(sheet, "Create").enabled)
        const picker = findChild(sheet, "versionPicker")
        verify(picker.currentText.indexOf(", installed") < 0)

        // Reading the images again after the install takes a while: meanwhile the sheet says it is checking.
        sim.setBehaviour("sdkmanager.script", "case \"$*\" in *--list*) sleep 1 ;; esac")
        mouseClick(findChild(sheet, "Install it"))
        tryVerify(() => store.imageJob.isRunning)
        verify(!findChild(sheet, "Install it").enabled)
        verify(!findChild(sheet, "Create").enabled)
        tryVerify(() => !store.imageJob.isRunning, 30000)
        verify(findChild(sheet, "imageChecking").visible)
        verify(!findChild(sheet, "Install it").enabled)
        tryVerify(() => sheet.chosenImage.installed, 30000)
        tryVerify(() => picker.currentText.indexOf(", installed") > 0)
        // The store finishes its reading (sizes too) a moment after the images show.
        tryVerify(() => !findChild(sheet, "imageChecking").visible)
        verify(findChild(sheet, "imageInstalled").visible)
        compare(findChild(sheet, "imageInstalled").text, "System image installed. Create the phone now.")
        verify(findChild(sheet, "Create").enabled)

        mouseClick(findChild(sheet, "Create"))
        // The creation shows until the sheet closes.
        verify(findChild(sheet, "creatingIndicator").visible)
        tryVerify(() => view.sheet === null, 30000)
        tryVerify(() => store.phones.some(phone => phone.name === "Pixel_Phone"), 20000)
    }

    function test_removeAnUnusedImage() {
        const unused = "system-images;android-33;google_apis;arm64-v8a"
        sim.installSystemImage(unused)
        sim.createPhone("Pixel_Keeps")
        const [view, sheet] = openSheet()
        // The image rows are made by a repeater, so their buttons are looked up row by row.
        const removeButton = id => {
            const rows = findChild(sheet, "imageDiskBox").children
            for (let i = 0; i < rows.length; ++i) {
                const button = findChild(rows[i], "Remove " + id)
                if (button)
                    return button
            }
            return null
        }
        tryVerify(() => removeButton(unused) !== null, 20000)
        compare(store.diskUse.installedImages.length, 2)
        verify(!removeButton("system-images;android-34;google_apis;arm64-v8a").visible)
        mouseClick(removeButton(unused))
        const dialog = findChild(sheet, "removeImageDialog")
        tryVerify(() => dialog.opened)
        compare(dialog.title, "Remove Android 13 (API 33), Google APIs?")
        mouseClick(findChild(dialog, "confirm"))
        tryVerify(() => store.diskUse.installedImages.length === 1, 30000)
        compare(store.diskUse.installedImages[0].users, ["Pixel_Keeps"])
    }

    function test_playSwitchMovesTheVersion() {
        const [view, sheet] = openSheet()
        // The newest Google APIs level has no Google Play image.
        compare(sheet.api, 35)
        mouseClick(findChild(sheet, "playSwitch"))
        verify(sheet.playStore)
        compare(sheet.api, 34)
        compare(sheet.chosenImage.variant, "google_apis_playstore")
        compare(findChild(sheet, "versionPicker").currentText, "Android 14 (API 34)")
    }

    // A name that breaks the rule holds Create back; a creation avdmanager refuses keeps the sheet open.
    function test_failedCreateShowsTheError() {
        const [view, sheet] = openSheet()
        sim.installSystemImage(sheet.chosenImage.id)
        store.loadImages()
        tryVerify(() => sheet.chosenImage.installed, 20000)
        const create = findChild(sheet, "Create")
        verify(create.enabled)
        // The default button shows when the keyboard is on it.
        verify(!findChild(create, "focusRing").visible)
        create.forceActiveFocus(Qt.TabFocusReason)
        verify(findChild(create, "focusRing").visible)
        const field = findChild(sheet, "nameField")
        field.forceActiveFocus()
        field.selectAll()
        const problem = findChild(sheet, "nameProblem")
        verify(!problem.visible)
        typeText("my phone")
        compare(sheet.name, "my phone")
        verify(!create.enabled)
        // The rule shows once it is broken, and the field has its label.
        verify(problem.visible)
        verify(problem.text.indexOf("letters, digits") >= 0)
        compare(field.Accessible.name, "Name")
        field.selectAll()
        typeText("my_phone")
        compare(sheet.name, "my_phone")
        verify(create.enabled)
        verify(!problem.visible)
        sim.setBehaviour("avdmanager.create.fail", "Error: Something went wrong creating the phone.")
        mouseClick(create)
        tryVerify(() => findChild(sheet, "createError") !== null, 20000)
        const box = findChild(sheet, "createError")
        compare(findChild(box, "detailsSummary").text, "avdmanager could not create the phone.")
        verify(sheet.visible)
        // The box has appeared below the choices, and the sheet scrolls it into view by itself.
        const toggle = findChild(box, "showDetails")
        const flick = findChild(sheet, "sheetScroller").contentItem
        tryVerify(() => {
            const top = box.mapToItem(flick, 0, 0)
            const bottom = toggle.mapToItem(root, 0, toggle.height)
            return toggle.height > 0 && top.y >= 0 && top.y + box.height <= flick.height && bottom.y <= root.height
        }, 5000, "the failure is in view")
        // With the details open in the smallest window, the sheet still fits and its buttons show.
        mouseClick(toggle)
        tryVerify(() => box.open, 5000, "the details opened")
        waitForRendering(root)
        for (const name of ["Close", "Create"]) {
            const button = findChild(sheet, name)
            const corner = button.mapToItem(root, button.width, button.height)
            verify(button.visible && corner.y <= root.height && corner.x <= root.width, name + " is in the window")
        }
        const top = sheet.contentItem.mapToItem(root, 0, 0)
        verify(top.y >= 0)
    }
}
