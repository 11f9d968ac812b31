import QtQuick
import Morvanta.LockScreens

// The quiz's answer box, in the system's own colours. What is typed here may be the
// password, so no accessibility client reads it back (`secretEntry`).
FocusScope {
    id: field

    property alias text: entry.text
    readonly property alias entry: entry

    signal accepted

    implicitWidth: 200
    implicitHeight: 48

    SystemPalette {
        id: system
    }

    Rectangle {
        anchors.fill: parent
        radius: 10
        color: system.base
        border.width: 1
        border.color: entry.activeFocus ? system.highlight : system.mid
    }

    // A click anywhere in the frame, the symbol and margins included, goes to the entry.
    MouseArea {
        anchors.fill: parent
        cursorShape: Qt.IBeamCursor
        onPressed: entry.forceActiveFocus(Qt.MouseFocusReason)
    }

    Item {
        anchors.fill: parent
        anchors.leftMargin: 12
        anchors.rightMargin: 12
        clip: true

        TextInput {
            id: entry

            readonly property bool visualFocus: KeyboardFocus.visible
            readonly property bool secretEntry: true
            readonly property string placeholderText: placeholder.text

            anchors.fill: parent
            focus: true
            activeFocusOnTab: true
            horizontalAlignment: TextInput.AlignHCenter
            verticalAlignment: TextInput.AlignVCenter
            font.pixelSize: 20
            color: system.text
            selectionColor: system.highlight
            selectedTextColor: system.highlightedText
            selectByMouse: true
            Accessible.role: Accessible.EditableText
            Accessible.name: placeholder.text
            onAccepted: field.accepted()
        }

        // Shows whenever the box is empty, also while it has the focus, which it nearly
        // always has.
        Text {
            id: placeholder
            anchors.centerIn: parent
            visible: entry.length === 0 && entry.preeditText === ""
            text: qsTr("Answer")
            font: entry.font
            color: Qt.rgba(system.text.r, system.text.g, system.text.b, 0.4)
        }
    }

    FocusRing {
        shown: entry.visualFocus
        accent: system.highlight
        controlRadius: 10
    }
}
