import QtQuick
import QtQuick.Controls.Basic
import Morvanta.LockScreens

// The quiz's answer box, in the system's own colours. What is typed here may be the
// password, so no accessibility client reads it back (`secretEntry`).
TextField {
    id: field

    readonly property bool secretEntry: true

    implicitHeight: 48
    horizontalAlignment: TextInput.AlignHCenter
    verticalAlignment: TextInput.AlignVCenter
    font.pixelSize: 20
    color: system.text
    selectByMouse: true
    Accessible.name: placeholder.text

    SystemPalette {
        id: system
    }

    background: Rectangle {
        radius: 10
        color: system.base
        border.width: 1
        border.color: field.activeFocus ? system.highlight : system.mid
    }

    // The style hides a centred placeholder while the box has focus, which this box nearly
    // always has; this one shows whenever the box is empty.
    Label {
        id: placeholder
        anchors.centerIn: parent
        visible: field.length === 0 && field.preeditText === ""
        text: qsTr("Answer")
        font: field.font
        color: Qt.rgba(system.text.r, system.text.g, system.text.b, 0.4)
    }

    FocusRing {
        accent: system.highlight
        controlRadius: 10
    }
}
