import QtQuick
import Morvanta.LockScreens
import QtQuick.Controls.Basic

// A masked entry with a symbol in front, on the dark screens. Its placeholder is its name.
TextField {
    id: field

    property string symbol: "lock.fill"
    property color accent: Theme.gold
    // Known from the field's first moment, before its echo mode is: an accessibility client
    // asks about the field while it is still being built.
    readonly property bool secretEntry: true

    implicitHeight: 46
    echoMode: TextInput.Password
    passwordCharacter: "\u2022"
    color: Theme.text
    placeholderTextColor: Theme.faintText
    selectionColor: Qt.rgba(accent.r, accent.g, accent.b, 0.35)
    selectedTextColor: Theme.text
    selectByMouse: true
    font.pixelSize: 15
    leftPadding: 44
    rightPadding: 14
    verticalAlignment: TextInput.AlignVCenter
    Accessible.name: placeholderText

    background: Rectangle {
        radius: 10
        color: Theme.fieldFill
        border.width: 1
        border.color: field.activeFocus ? Qt.rgba(field.accent.r, field.accent.g, field.accent.b, 0.7)
                                        : Theme.fieldBorder
    }

    FocusRing {
        accent: field.accent
        controlRadius: 10
    }

    SymbolIcon {
        x: 16
        anchors.verticalCenter: parent.verticalCenter
        width: 16
        height: 16
        name: field.symbol
        color: field.activeFocus ? field.accent : Theme.secondaryText
    }
}
