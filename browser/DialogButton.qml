import QtQuick
import QtQuick.Controls.Basic
import Morvanta.LockScreens
import Morvanta.Browser

// A button of a dialog: plain, prominent in gold, or prominent in red when it destroys.
Button {
    id: control

    property bool prominent: false
    property bool destructive: false

    readonly property color fill: destructive ? Qt.rgba(0.86, 0.27, 0.27, 1) : Theme.gold
    readonly property color ink: !prominent ? Theme.text
                                            : destructive ? "white" : Theme.inkOnGold

    implicitHeight: 34
    leftPadding: 18
    rightPadding: 18
    font.pixelSize: 13
    font.weight: prominent ? Font.DemiBold : Font.Normal
    opacity: enabled ? 1 : 0.45
    Accessible.name: text
    Accessible.onPressAction: clicked()

    contentItem: Label {
        text: control.text
        font: control.font
        color: control.ink
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }

    FocusRing {}

    background: Rectangle {
        implicitWidth: 84
        radius: 8
        color: control.prominent ? (control.down ? Qt.darker(control.fill, 1.12) : control.fill)
                                 : (control.down ? Qt.rgba(1, 1, 1, 0.16) : Qt.rgba(1, 1, 1, 0.08))
        border.width: control.prominent ? 0 : 1
        border.color: Qt.rgba(1, 1, 1, 0.12)
    }
}
