import QtQuick
import Morvanta.LockScreens

// A button of plain Qt Quick items, so that the first screens load no control library. It
// acts on a click, and on Space, Return or Enter while it has the keyboard focus, which only
// Tab gives it. Screen readers find a button named by its text that they can press
// (`pushButton`); the caller lays out what it shows.
Item {
    id: control

    property string text
    property font font
    // Around what the caller shows, for the button's implicit width.
    property real leftPadding: 12
    property real rightPadding: 12
    readonly property bool down: mouse.pressed || spaceHeld
    readonly property bool hovered: mouse.containsMouse
    readonly property bool visualFocus: KeyboardFocus.visible
    readonly property bool pushButton: true
    property bool spaceHeld: false

    signal clicked

    activeFocusOnTab: true
    onActiveFocusChanged: spaceHeld = false
    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.focusable: true

    Keys.onPressed: event => {
        if (event.isAutoRepeat)
            return
        if (event.key === Qt.Key_Space) {
            spaceHeld = true
            event.accepted = true
        } else if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter) {
            event.accepted = true
            clicked()
        }
    }
    Keys.onReleased: event => {
        if (event.key !== Qt.Key_Space || event.isAutoRepeat || !spaceHeld)
            return
        spaceHeld = false
        event.accepted = true
        clicked()
    }

    MouseArea {
        id: mouse
        anchors.fill: parent
        hoverEnabled: true
        onClicked: control.clicked()
    }
}
