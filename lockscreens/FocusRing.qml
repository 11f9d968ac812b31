import QtQuick
import Morvanta.LockScreens

// The keyboard focus mark shared by every focusable control: an outline drawn just outside
// the control in the screen's accent. Controls show it for focus that came from the
// keyboard (visualFocus); plain items (rows) pass their own condition in `shown`.
Rectangle {
    property Item control: parent
    property bool shown: control && (control.visualFocus !== undefined ? control.visualFocus
                                                                       : control.activeFocus)
    property color accent: Theme.gold
    property real controlRadius: 8

    anchors.fill: control
    anchors.margins: -3
    radius: controlRadius + 3
    color: "transparent"
    border.width: 2
    border.color: accent
    visible: shown
    z: 10
}
