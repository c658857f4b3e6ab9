import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// Names a new phone, picks its model and Android version, installs a missing image, creates the phone.
// It is made afresh each time it opens, so every opening starts from the same choices.
Dialog {
    id: sheet
    property PhoneStore store
    property SetupController setup

    property string name: "Pixel_Phone"
    property string deviceId
    property bool playStore: false
    property int api: 0
    property var errorText: undefined
    property bool creating: false
    // The name being created, shown beside the progress indicator while the user may edit the field.
    property string creatingName
    // The system image was installed from this sheet: the next step is Create.
    property bool installedHere: false

    // Scrolls the choices so that a failure that has just appeared below them is in view.
    property Item revealing: null
    function reveal(item) {
        revealing = item
        Qt.callLater(showRevealed)
        revealEnd.restart()
    }
    function showRevealed() {
        if (!revealing || !revealing.visible)
            return
        const flick = scroller.contentItem
        const top = revealing.mapToItem(choices, 0, 0).y
        const bottom = Math.min(top + revealing.height, top + flick.height)
        let y = flick.contentY
        if (bottom > y + flick.height)
            y = bottom - flick.height
        if (top < y)
            y = top
        flick.contentY = Math.max(0, Math.min(y, choices.implicitHeight - flick.height))
    }
    Timer { id: revealEnd; interval: 500; onTriggered: sheet.revealing = null }

    // The image job's log belongs to the opening that saw it run: a new opening shows no earlier install.
    property bool jobOfThisOpening: false

    function isPlay(image) {
        return image.variant === "google_apis_playstore"
    }
    readonly property var apiChoices: {
        const levels = []
        for (const image of store.images) {
            if (isPlay(image) === playStore && !levels.includes(image.api))
                levels.push(image.api)
        }
        return levels.sort((a, b) => b - a)
    }
    readonly property var chosenImage: {
        for (const image of store.images) {
            if (image.api === api && isPlay(image) === playStore)
                return image
        }
        return undefined
    }
    readonly property var chosenDevice: {
        for (const device of store.devices) {
            if (device.id === deviceId)
                return device
        }
        return undefined
    }
    readonly property bool nameValid: store.isValidName(name)
    readonly property bool canCreate: chosenImage !== undefined && chosenDevice !== undefined && chosenImage.installed
                                      && nameValid && !creating && !store.imageJob.isRunning

    function label(level) {
        let first = undefined
        let ofKind = undefined
        for (const image of store.images) {
            if (image.api !== level)
                continue
            if (first === undefined)
                first = image
            if (ofKind === undefined && isPlay(image) === playStore)
                ofKind = image
        }
        if (first === undefined)
            return "API " + level
        return first.androidName + " (API " + level + ")" + (ofKind !== undefined && ofKind.installed ? ", installed" : "")
    }
    function fixAPI() {
        const choices = apiChoices
        if (!choices.includes(api) && choices.length > 0)
            api = choices[0]
    }
    function pickFirstDevice() {
        if (deviceId === "" && store.devices.length > 0)
            deviceId = store.devices[0].id
    }
    function load() {
        pickFirstDevice()
        fixAPI()
        TolvaneApp.loadCatalog(store)
    }
    // Reads the models and the Android versions again.
    function refresh() {
        store.loadDevices()
        store.loadImages()
    }
    function create() {
        const device = chosenDevice
        const image = chosenImage
        if (device === undefined || image === undefined)
            return
        creating = true
        creatingName = name
        errorText = undefined
        // The creation belongs to the store: closing the sheet does not stop it.
        store.createPhone(name, device, image)
    }

    // Runs once the choices follow the switch: the switch's own change comes before them.
    onApiChoicesChanged: fixAPI()
    Connections {
        target: sheet.store.imageJob
        function onIsRunningChanged() {
            if (sheet.store.imageJob.isRunning)
                sheet.jobOfThisOpening = true
        }
    }
    Connections {
        target: sheet.store
        function onDevicesChanged() { sheet.pickFirstDevice() }
        function onImagesChanged() { sheet.fixAPI() }
        function onCreateFinished(createdName, failure) {
            if (!sheet.creating)
                return
            sheet.creating = false
            if (failure === undefined || failure === null)
                sheet.close()
            else
                sheet.errorText = failure
        }
    }

    parent: Overlay.overlay
    // Hangs from the top of the window, centred across it, and grows downwards, never taller than the
    // window: the choices scroll, the buttons stay in view.
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: 0
    width: 560
    height: parent ? Math.min(implicitHeight, parent.height - 24) : implicitHeight
    modal: true
    Overlay.modal: DimmedWindow {}
    background: PanelBackground {}
    closePolicy: Popup.CloseOnEscape
    padding: 20
    bottomPadding: 12
    Component.onCompleted: {
        jobOfThisOpening = store.imageJob.isRunning
        open()
        load()
    }

    contentItem: ScrollView {
        id: scroller
        objectName: "sheetScroller"
        contentWidth: availableWidth
        contentHeight: choices.implicitHeight
        implicitHeight: choices.implicitHeight
        clip: true

        ColumnLayout {
            id: choices
            width: scroller.availableWidth
            spacing: 12
            onImplicitHeightChanged: Qt.callLater(sheet.showRevealed)

            Label {
                text: "New phone"
                font: Style.title3
            }

            // The choices as a form: the labels right-aligned in one column, their fields in the next.
            ColumnLayout {
                id: form
                objectName: "form"
                spacing: 8
                Layout.fillWidth: true

                RowLayout {
                    spacing: 8
                    FormLabel { id: nameLabel; text: "Name" }
                    TextField {
                        objectName: "nameField"
                        placeholderText: "Name (letters, digits, . _ -)"
                        text: sheet.name
                        onTextEdited: sheet.name = text
                        onAccepted: {
                            if (sheet.canCreate)
                                sheet.create()
                        }
                        Layout.fillWidth: true
                        Accessible.name: "Name"
                        Accessible.description: nameProblem.visible ? nameProblem.text : placeholderText
                    }
                }
                Label {
                    id: nameProblem
                    objectName: "nameProblem"
                    visible: !sheet.nameValid
                    text: sheet.name.length === 0 ? "Give the phone a name: letters, digits, . _ - only."
                                                  : "A name may only hold letters, digits, . _ and -, without spaces."
                    font: Style.caption
                    color: Style.red
                    wrapMode: Text.Wrap
                    Layout.leftMargin: sheet.fieldIndent
                    Layout.fillWidth: true
                    Layout.topMargin: -4
                }

                // The phone model.
                RowLayout {
                    visible: sheet.store.devicesLoading
                    spacing: 6
                    Layout.leftMargin: sheet.fieldIndent
                    Spinner { objectName: "devicesLoading"; label: "Reading phone models" }
                    Label { text: "Reading phone models..." }
                }
                RowLayout {
                    spacing: 8
                    FormLabel { id: modelLabel; text: "Model" }
                    ComboBox {
                        objectName: "modelPicker"
                        model: sheet.store.devices
                        textRole: "name"
                        valueRole: "id"
                        currentIndex: sheet.store.devices.findIndex(device => device.id === sheet.deviceId)
                        onActivated: index => sheet.deviceId = sheet.store.devices[index].id
                        Layout.fillWidth: true
                        Accessible.name: "Model"
                    }
                }
                RawListing {
                    visible: sheet.store.rawDeviceListing !== undefined
                    heading: "Could not read the model list. Raw avdmanager text:"
                    text: visible ? sheet.store.rawDeviceListing : ""
                }

                // The Android version.
                ToggleSwitch {
                    objectName: "playSwitch"
                    text: "Google Play"
                    checked: sheet.playStore
                    onToggled: sheet.playStore = checked
                    Layout.leftMargin: sheet.fieldIndent
                }
                Label {
                    text: "Only Google Play images include the Play Store app. Plain Google APIs images do not."
                    font: Style.caption
                    color: Style.secondary
                    wrapMode: Text.Wrap
                    Layout.leftMargin: sheet.fieldIndent
                    Layout.fillWidth: true
                    Layout.topMargin: -4
                }
                RowLayout {
                    visible: sheet.store.imagesLoading
                    spacing: 6
                    Layout.leftMargin: sheet.fieldIndent
                    Layout.fillWidth: true
                    Spinner { objectName: "imagesLoading"; label: "Reading Android versions" }
                    Label {
                        text: "Reading Android versions from sdkmanager (needs internet)..."
                        wrapMode: Text.Wrap
                        Layout.fillWidth: true
                    }
                }
                RowLayout {
                    spacing: 8
                    FormLabel { id: versionLabel; text: "Android version" }
                    ComboBox {
                        objectName: "versionPicker"
                        model: sheet.apiChoices.map(level => sheet.label(level))
                        currentIndex: sheet.apiChoices.indexOf(sheet.api)
                        onActivated: index => sheet.api = sheet.apiChoices[index]
                        Layout.fillWidth: true
                        Accessible.name: "Android version"
                    }
                }
                RawListing {
                    visible: sheet.store.rawImageListing !== undefined
                    heading: "No arm64 images were recognised. Raw sdkmanager text:"
                    text: visible ? sheet.store.rawImageListing : ""
                }
            }

            // Why the models or the versions could not be read.
            Loader {
                active: sheet.store.catalogFailure !== undefined
                visible: active
                Layout.fillWidth: true
                sourceComponent: DetailsBox {
                    objectName: "catalogFailure"
                    summary: sheet.store.catalogFailure !== undefined ? sheet.store.catalogFailure : ""
                    details: sheet.store.catalogFailureDetails
                }
            }

            // The system image.
            RowLayout {
                visible: sheet.chosenImage !== undefined && !sheet.chosenImage.installed
                Layout.fillWidth: true
                Label {
                    text: "This system image is not installed (about 1.5 GB)."
                    wrapMode: Text.Wrap
                    Layout.fillWidth: true
                }
                Button {
                    objectName: "Install it"
                    text: "Install it"
                    // Until the images are read again after an install, nobody knows whether it worked.
                    enabled: !sheet.store.imageJob.isRunning && !sheet.store.installingImage
                    onClicked: {
                        sheet.installedHere = true
                        sheet.store.installImage(sheet.chosenImage)
                    }
                }
            }
            RowLayout {
                objectName: "imageChecking"
                visible: sheet.store.installingImage && !sheet.store.imageJob.isRunning
                spacing: 6
                Spinner { label: "Checking the system image" }
                Label { text: "Checking whether the system image is installed now..." }
            }
            Label {
                objectName: "imageInstalled"
                visible: sheet.chosenImage !== undefined && sheet.chosenImage.installed
                text: sheet.installedHere ? "System image installed. Create the phone now." : "System image installed."
                color: Style.green
            }
            ImageDiskBox { store: sheet.store; Layout.fillWidth: true }
            JobLogView {
                objectName: "imageJobLog"
                visible: sheet.jobOfThisOpening && job.lineModel.count > 0
                job: sheet.store.imageJob
                Layout.fillWidth: true
            }
            FailureHint {
                id: imageHint
                objectName: "imageHint"
                text: sheet.jobOfThisOpening ? imageHint.failedJobText(sheet.store.imageJob) : ""
                Layout.fillWidth: true
                onVisibleChanged: {
                    if (visible)
                        sheet.reveal(imageHint)
                }
            }

            // The outcome of the last creation.
            Loader {
                active: sheet.errorText !== undefined
                visible: active
                Layout.fillWidth: true
                onLoaded: sheet.reveal(item)
                sourceComponent: DetailsBox {
                    objectName: "createError"
                    summary: "avdmanager could not create the phone."
                    details: sheet.errorText !== undefined ? sheet.errorText : ""
                }
            }
            FailureHint {
                objectName: "createHint"
                text: sheet.errorText !== undefined ? sheet.errorText : ""
                Layout.fillWidth: true
            }
        }
    }

    // The form's labels share the width of the widest.
    readonly property real fieldIndent: Math.ceil(Math.max(nameLabel.implicitWidth, modelLabel.implicitWidth,
                                                           versionLabel.implicitWidth)) + 8
    component FormLabel: Label {
        horizontalAlignment: Text.AlignRight
        Layout.preferredWidth: sheet.fieldIndent - 8
    }
    // A listing the store could not read, as it came, under the field it was meant for.
    component RawListing: ColumnLayout {
        property string heading
        property string text
        Layout.leftMargin: sheet.fieldIndent
        Layout.fillWidth: true
        Label {
            text: parent.heading
            color: Style.orange
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        Label {
            text: parent.text
            textFormat: Text.PlainText
            font: Style.monoCaption
            maximumLineCount: 6
            elide: Text.ElideRight
            Layout.fillWidth: true
        }
    }

    footer: Pane {
        objectName: "sheetButtons"
        leftPadding: 20
        rightPadding: 20
        topPadding: 8
        bottomPadding: 20
        background: null
        RowLayout {
            anchors.fill: parent
            spacing: 8
            Button {
                objectName: "refreshCatalog"
                text: "Refresh"
                visible: !sheet.creating
                enabled: !sheet.store.devicesLoading && !sheet.store.imagesLoading
                onClicked: sheet.refresh()
            }
            Spinner {
                objectName: "creatingIndicator"
                visible: sheet.creating
                label: "Creating the phone"
            }
            Label {
                visible: sheet.creating
                text: "Creating " + sheet.creatingName + "..."
                color: Style.secondary
                elide: Text.ElideRight
                Layout.fillWidth: true
            }
            Item {
                visible: !sheet.creating
                Layout.fillWidth: true
            }
            Button {
                objectName: "Close"
                text: "Close"
                onClicked: sheet.close()
            }
            Button {
                objectName: "Create"
                text: "Create"
                highlighted: true
                FocusRing {}
                enabled: sheet.canCreate
                onClicked: sheet.create()
            }
        }
    }
    Shortcut {
        sequences: ["Return", "Enter"]
        enabled: sheet.visible && sheet.canCreate
        onActivated: sheet.create()
    }
}
