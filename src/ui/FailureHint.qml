import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// What the failure shown above it means and what to do about it, with the app's fix where it has one.
// Takes no space when the failure is not a known one. Nothing runs until the fix's button is pressed.
Rectangle {
    id: hint
    // The failure as shown, in the tools' own words.
    property string text
    property var explained: KnownFailures.explain(text)
    // What the fixes act on: the phone by name (system image, lock, reinstall), its start options, and for a
    // reinstall its serial.
    property string phone
    property var startOptions
    property string serial
    // Why the fix cannot be carried out now, said instead of offering it; empty when it can.
    property string fixUnavailable
    property bool fixEnabled: true
    // An image install started here shows its log here.
    property bool installing: false

    // A job's log once the job has ended badly; empty while it runs, after it succeeded or was cancelled.
    function failedJobText(job) {
        if (!job || job.isRunning || job.lines.length < 2)
            return ""
        const last = job.lines[job.lines.length - 1]
        return last.startsWith("Finished with exit status ") || last.startsWith("Could not start ")
               ? job.lines.join("\n") : ""
    }

    readonly property string fix: {
        const wanted = explained.fix !== undefined ? explained.fix : ""
        if (wanted === "installImage" || wanted === "removeLock")
            return phone !== "" ? wanted : ""
        if (wanted === "reinstall")
            return serial !== "" && explained.package !== undefined && fixUnavailable === "" ? wanted : ""
        return ""
    }

    // A fix under way says what it is doing; one that has done its work says what happened and what is
    // next, in place of the explanation.
    readonly property var step: phone !== "" ? TolvaneApp.store.fixSteps[phone] : undefined
    readonly property var outcome: phone !== "" && fix !== "" ? TolvaneApp.store.fixOutcomes[phone] : undefined

    visible: explained.what !== undefined
    implicitHeight: visible ? column.implicitHeight + 16 : 0
    radius: 6
    color: Qt.rgba(0.04, 0.39, 0.85, 0.08)

    ColumnLayout {
        id: column
        anchors.fill: parent
        anchors.margins: 8
        spacing: 4

        Label {
            objectName: "hintOutcome"
            visible: hint.outcome !== undefined
            text: hint.outcome !== undefined ? hint.outcome : ""
            textFormat: Text.PlainText
            font.weight: Font.DemiBold
            color: Style.green
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        Button {
            objectName: "hintStart"
            visible: hint.outcome !== undefined
            text: "Start"
            enabled: hint.fixEnabled
            onClicked: TolvaneApp.store.start(hint.phone, hint.startOptions)
            Accessible.name: "Start " + hint.phone
        }
        Label {
            objectName: "hintWhat"
            visible: hint.outcome === undefined
            text: hint.explained.what !== undefined ? hint.explained.what : ""
            textFormat: Text.PlainText
            font.weight: Font.DemiBold
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        Label {
            objectName: "hintTodo"
            visible: hint.outcome === undefined
            text: hint.explained.todo !== undefined ? hint.explained.todo : ""
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        Label {
            objectName: "hintUnavailable"
            visible: hint.fixUnavailable !== "" && hint.explained.fix !== undefined && hint.explained.fix !== ""
            text: hint.fixUnavailable
            textFormat: Text.PlainText
            font.italic: true
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        RowLayout {
            visible: hint.step !== undefined
            spacing: 6
            Layout.fillWidth: true
            Spinner {
                label: hint.step !== undefined ? hint.step : ""
            }
            Label {
                objectName: "hintStep"
                text: hint.step !== undefined ? hint.step : ""
                textFormat: Text.PlainText
                wrapMode: Text.Wrap
                Layout.fillWidth: true
            }
        }
        Button {
            objectName: "hintFix"
            visible: hint.fix !== "" && hint.outcome === undefined
            text: hint.explained.fixLabel !== undefined ? hint.explained.fixLabel : ""
            enabled: hint.fixEnabled && hint.step === undefined
                     && (hint.fix !== "installImage" || (!TolvaneApp.store.imageJob.isRunning && !TolvaneApp.store.installingImage))
                     && (hint.fix !== "reinstall" || !TolvaneApp.installer.busy)
            onClicked: {
                if (hint.fix === "installImage") {
                    hint.installing = true
                    TolvaneApp.store.installImageFor(hint.phone)
                } else if (hint.fix === "removeLock") {
                    TolvaneApp.store.removeLockAndStart(hint.phone, hint.startOptions)
                } else if (hint.fix === "reinstall") {
                    reinstallDialog.open()
                }
            }
        }
        Loader {
            active: hint.installing
            visible: active
            Layout.fillWidth: true
            sourceComponent: JobLogView { job: TolvaneApp.store.imageJob }
        }
    }

    // Made when first asked for: most hints never offer it.
    Loader {
        id: reinstallDialog
        active: false
        function open() {
            active = true
            item.open()
        }
        sourceComponent: ConfirmDialog {
            objectName: "reinstallDialog"
            readonly property string fileName: hint.explained.path !== undefined
                                               ? hint.explained.path.substring(hint.explained.path.lastIndexOf("/") + 1) : ""
            readonly property string packageName: hint.explained.package !== undefined ? hint.explained.package : ""
            title: "Uninstall " + packageName + "?"
            message: "Uninstall " + packageName + " from " + hint.phone + " and install " + fileName
                     + " again? Its data on the phone is deleted."
            confirmText: "Uninstall and install again"
            // The phone may have stopped while the question was asked.
            onConfirmed: {
                if (hint.fix === "reinstall")
                    TolvaneApp.installer.reinstall(packageName, hint.explained.path, hint.serial)
            }
        }
    }
}
