import QtQuick
import Morvanta.LockScreens

// The quiz's answer box, in the system's own colours. What is typed here may be the
// password, so no accessibility client reads it back (`secretEntry`).
TextInput {
    id: field

    readonly property bool visualFocus: KeyboardFocus.visible
    readonly property bool secretEntry: true

    activeFocusOnTab: true
    horizontalAlignment: TextInput.AlignHCenter
    leftPadding: 12
    rightPadding: 12
    // 48 pixels high, the text in the middle.
    topPadding: (48 - contentHeight) / 2
    bottomPadding: topPadding
    font.pixelSize: 20
    color: system.text
    selectionColor: system.highlight
    selectedTextColor: system.highlightedText
    selectByMouse: true
    Accessible.role: Accessible.EditableText
    Accessible.name: placeholder.text

    SystemPalette {
        id: system
    }

    Rectangle {
        z: -1
        anchors.fill: parent
        radius: 10
        color: system.base
        border.width: 1
        border.color: field.activeFocus ? system.highlight : system.mid
    }

    // Shows whenever the box is empty, also while it has the focus, which it nearly always has.
    Text {
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
