import QtQuick
import Morvanta.LockScreens

// A masked entry with a symbol in front, on the dark screens. Its placeholder is its name.
// The typing scrolls inside the frame; the symbol and the focus ring stand around it.
FocusScope {
    id: field

    property string symbol: "lock.fill"
    property color accent: Theme.gold
    property string placeholderText
    property alias text: entry.text
    property alias font: entry.font
    readonly property alias entry: entry

    signal accepted

    implicitWidth: 200
    implicitHeight: 46

    Rectangle {
        anchors.fill: parent
        radius: 10
        color: Theme.fieldFill
        border.width: 1
        border.color: entry.activeFocus ? Qt.rgba(field.accent.r, field.accent.g, field.accent.b, 0.7)
                                        : Theme.fieldBorder
    }

    // A click anywhere in the frame, the symbol and margins included, goes to the entry.
    MouseArea {
        anchors.fill: parent
        cursorShape: Qt.IBeamCursor
        onPressed: entry.forceActiveFocus(Qt.MouseFocusReason)
    }

    SymbolIcon {
        x: 16
        anchors.verticalCenter: parent.verticalCenter
        width: 16
        height: 16
        name: field.symbol
        color: entry.activeFocus ? field.accent : Theme.secondaryText
    }

    Item {
        anchors.fill: parent
        anchors.leftMargin: 44
        anchors.rightMargin: 14
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
            echoMode: TextInput.Password
            passwordCharacter: "\u2022"
            color: Theme.text
            selectionColor: Qt.rgba(field.accent.r, field.accent.g, field.accent.b, 0.35)
            selectedTextColor: Theme.text
            selectByMouse: true
            font.pixelSize: 15
            verticalAlignment: TextInput.AlignVCenter
            Accessible.role: Accessible.EditableText
            Accessible.name: field.placeholderText
            Accessible.passwordEdit: true
            onAccepted: field.accepted()
        }

        Text {
            anchors.fill: parent
            verticalAlignment: Text.AlignVCenter
            visible: entry.length === 0 && entry.preeditText === ""
            text: field.placeholderText
            font: entry.font
            color: Theme.faintText
            elide: Text.ElideRight
        }
    }

    FocusRing {
        shown: entry.visualFocus
        accent: field.accent
        controlRadius: 10
    }
}
