import QtQuick
import Morvanta.LockScreens

// The quiz's answer box, in the system's own colours. What is typed here may be the
// password; like every entry, it is never read back to a screen reader. Its placeholder
// shows whenever it is empty, also while it has the focus, which it nearly always has.
TextEntry {
    implicitHeight: 48
    horizontalAlignment: TextInput.AlignHCenter
    font.pixelSize: 20
    placeholderText: qsTr("Answer")
    accent: system.highlight
    textColor: system.text
    placeholderColor: Qt.rgba(system.text.r, system.text.g, system.text.b, 0.4)
    fillColor: system.base
    borderColor: system.mid
    selectedTextColor: system.highlightedText

    SystemPalette {
        id: system
    }
}
