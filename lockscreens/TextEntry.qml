import QtQuick
import Morvanta.LockScreens

// A one-line entry in a frame, of plain Qt Quick items. The typing scrolls inside the frame's
// insets, the placeholder shows while it is empty and names it for screen readers, a click
// anywhere in the frame goes to the entry, and the focus ring shows for keyboard focus. What
// is typed may be a password, so no accessibility client reads it back (`secretEntry`).
// What the caller adds (a symbol) stands on the frame.
FocusScope {
    id: field

    property string placeholderText
    property alias text: entry.text
    property alias font: entry.font
    property alias echoMode: entry.echoMode
    property alias horizontalAlignment: entry.horizontalAlignment
    property real leftInset: 12
    property real rightInset: 12
    property color accent
    property color textColor
    property color placeholderColor
    property color fillColor
    property color borderColor
    property color focusedBorderColor: accent
    property color selectionColor: accent
    property color selectedTextColor: textColor
    readonly property alias entry: entry

    signal accepted

    implicitWidth: 200
    implicitHeight: 46

    Rectangle {
        anchors.fill: parent
        radius: 10
        color: field.fillColor
        border.width: 1
        border.color: entry.activeFocus ? field.focusedBorderColor : field.borderColor
    }

    MouseArea {
        anchors.fill: parent
        cursorShape: Qt.IBeamCursor
        onPressed: entry.forceActiveFocus(Qt.MouseFocusReason)
    }

    Item {
        anchors.fill: parent
        anchors.leftMargin: field.leftInset
        anchors.rightMargin: field.rightInset
        clip: true

        TextInput {
            id: entry

            readonly property bool visualFocus: KeyboardFocus.visible
            // Known from the entry's first moment, before its echo mode is: an accessibility
            // client asks about it while it is still being built.
            readonly property bool secretEntry: true
            readonly property string placeholderText: field.placeholderText

            anchors.fill: parent
            focus: true
            activeFocusOnTab: true
            passwordCharacter: "\u2022"
            verticalAlignment: TextInput.AlignVCenter
            color: field.textColor
            selectionColor: field.selectionColor
            selectedTextColor: field.selectedTextColor
            selectByMouse: true
            Accessible.role: Accessible.EditableText
            Accessible.name: field.placeholderText
            Accessible.passwordEdit: echoMode !== TextInput.Normal
            onAccepted: field.accepted()

            // Inside the entry, whose name says it to a screen reader.
            Text {
                anchors.fill: parent
                horizontalAlignment: entry.horizontalAlignment
                verticalAlignment: Text.AlignVCenter
                visible: entry.length === 0 && entry.preeditText === ""
                text: field.placeholderText
                font: entry.font
                color: field.placeholderColor
                elide: Text.ElideRight
            }
        }
    }

    FocusRing {
        shown: entry.visualFocus
        accent: field.accent
        controlRadius: 10
    }
}
