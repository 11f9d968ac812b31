import QtQuick
import Morvanta.LockScreens
import QtQuick.Controls.Basic

// A masked entry with a symbol in front, on the dark screens.
TextField {
    id: field

    property string symbol: "lock.fill"
    property color accent: Theme.gold

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

    background: Rectangle {
        radius: 10
        color: Theme.fieldFill
        border.width: 1
        border.color: field.activeFocus ? Qt.rgba(field.accent.r, field.accent.g, field.accent.b, 0.7)
                                        : Theme.fieldBorder
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
