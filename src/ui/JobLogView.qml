import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// The live log of a long install: what it does (or how it ended), the progress of the step the tool names,
// "Cancel" and the output. Takes no space until the job has printed its command line.
ColumnLayout {
    id: view
    property JobRunner job
    readonly property string heading: job && job.heading.length > 0 ? job.heading : "Output"

    visible: job !== null && job.lineModel.count > 0
    spacing: 6

    RowLayout {
        Layout.fillWidth: true
        Label {
            objectName: "jobHeading"
            text: view.heading
            font: Style.headline
            elide: Text.ElideRight
            Layout.fillWidth: true
        }
        Button {
            objectName: "cancelJob"
            text: "Cancel"
            visible: view.job !== null && view.job.isRunning
            onClicked: {
                if (view.job.job)
                    view.job.job.cancel()
            }
        }
    }
    Label {
        objectName: "jobStep"
        visible: view.job !== null && view.job.isRunning && view.job.progressText.length > 0
        text: view.job ? view.job.progressText : ""
        textFormat: Text.PlainText
        font: Style.caption
        color: Style.secondary
        elide: Text.ElideMiddle
        Layout.fillWidth: true
    }
    ProgressBar {
        objectName: "jobProgress"
        visible: view.job !== null && view.job.isRunning
        indeterminate: view.job === null || view.job.progress === undefined
        value: view.job && view.job.progress !== undefined ? view.job.progress : 0
        Layout.fillWidth: true
    }
    LogBox {
        lines: view.job ? view.job.lineModel : null
        accessibleName: view.heading + ": output"
        Layout.fillWidth: true
        Layout.preferredHeight: 160
    }
}
