import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// The work under way, when it takes longer than a moment: the item, how far it has got, and
// Cancel. Short work never shows it, so it does not flicker.
Rectangle {
    id: strip

    required property WorkStrip work
    property bool shown: false
    readonly property bool active: work.active

    visible: shown && active
    onActiveChanged: if (!active) shown = false
    implicitHeight: row.implicitHeight + 16
    radius: 10
    color: Qt.rgba(1, 1, 1, 0.06)
    border.width: 1
    border.color: Qt.rgba(1, 1, 1, 0.1)

    Timer {
        interval: 600
        running: strip.active
        onTriggered: strip.shown = true
    }

    RowLayout {
        id: row
        anchors.fill: parent
        anchors.margins: 8
        anchors.leftMargin: 12
        spacing: 10

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 6
            Label {
                objectName: "progressText"
                Layout.fillWidth: true
                text: strip.work.text
                elide: Text.ElideMiddle
                color: Theme.text
                font.pixelSize: 12
            }
            ProgressBar {
                id: bar
                objectName: "progressBar"
                Layout.fillWidth: true
                from: 0
                to: 1
                value: Math.max(0, strip.work.fraction)
                indeterminate: strip.work.fraction < 0
                Accessible.name: strip.work.text

                background: Rectangle {
                    implicitHeight: 6
                    radius: 3
                    color: Qt.rgba(1, 1, 1, 0.12)
                }
                contentItem: Item {
                    implicitHeight: 6
                    Rectangle {
                        width: bar.indeterminate ? parent.width : bar.visualPosition * parent.width
                        height: parent.height
                        radius: 3
                        color: Theme.gold
                        opacity: bar.indeterminate ? 0.35 : 1
                    }
                }
            }
        }
        DialogButton {
            objectName: "cancelWorkButton"
            text: qsTr("Cancel")
            onClicked: strip.work.cancel()
        }
    }
}
