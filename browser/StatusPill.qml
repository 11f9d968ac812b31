import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// A small rounded label of the status bar.
Rectangle {
    id: pill

    property string symbol
    property alias text: label.text

    implicitWidth: row.implicitWidth + 18
    implicitHeight: 22
    radius: height / 2
    color: Qt.rgba(1, 1, 1, 0.06)
    border.width: 1
    border.color: Qt.rgba(1, 1, 1, 0.08)

    RowLayout {
        id: row
        anchors.centerIn: parent
        spacing: 5

        SymbolIcon {
            Layout.preferredWidth: 11
            Layout.preferredHeight: 11
            name: pill.symbol
            color: Theme.secondaryText
        }
        Label {
            id: label
            objectName: pill.objectName + "Text"
            color: Theme.secondaryText
            font.pixelSize: 11
        }
    }
}
