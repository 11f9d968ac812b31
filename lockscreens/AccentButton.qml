import QtQuick
import Morvanta.LockScreens

// The screen's main action, filled with its accent. While `busy` a small progress indicator
// stands in for the symbol.
PushButton {
    id: control

    property string symbol
    property color fill: Theme.gold
    property color ink: Theme.inkOnGold
    property bool busy: false

    implicitWidth: row.implicitWidth + leftPadding + rightPadding
    implicitHeight: 46
    opacity: enabled ? 1 : 0.45
    font.pixelSize: 15
    font.weight: Font.DemiBold

    Rectangle {
        anchors.fill: parent
        radius: 10
        color: control.down ? Qt.darker(control.fill, 1.12) : control.fill
    }

    Row {
        id: row
        anchors.centerIn: parent
        spacing: 8

        Spinner {
            anchors.verticalCenter: parent.verticalCenter
            visible: control.busy
            width: 17
            height: 17
            color: control.ink
        }
        SymbolIcon {
            anchors.verticalCenter: parent.verticalCenter
            visible: !control.busy && control.symbol !== ""
            width: 17
            height: 17
            name: control.symbol
            color: control.ink
        }
        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: control.text
            font: control.font
            color: control.ink
        }
    }

    FocusRing {
        accent: control.fill
        controlRadius: 10
    }
}
