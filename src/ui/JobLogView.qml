import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tolvane

// The live log of a long install: title, progress, "Cancel" and the output. Takes no space until the
// job has printed its command line.
ColumnLayout {
    id: view
    property JobRunner job

    visible: job !== null && job.lineModel.count > 0
    spacing: 6

    RowLayout {
        Layout.fillWidth: true
        Label {
            text: view.job && view.job.title.length > 0 ? view.job.title : "Output"
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
    ProgressBar {
        objectName: "jobProgress"
        visible: view.job !== null && view.job.isRunning
        indeterminate: view.job === null || view.job.progress === undefined
        value: view.job && view.job.progress !== undefined ? view.job.progress : 0
        Layout.fillWidth: true
    }
    LogBox {
        lines: view.job ? view.job.lineModel : null
        accessibleName: (view.job && view.job.title.length > 0 ? view.job.title : "Output") + ": output"
        Layout.fillWidth: true
        Layout.preferredHeight: 160
    }
}
