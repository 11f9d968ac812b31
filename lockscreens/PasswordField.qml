import QtQuick
import Morvanta.LockScreens

// A masked entry with a symbol in front, on the dark screens. Its placeholder is its name.
TextEntry {
    id: field

    property string symbol: "lock.fill"

    echoMode: TextInput.Password
    font.pixelSize: 15
    leftInset: 44
    rightInset: 14
    accent: Theme.gold
    textColor: Theme.text
    placeholderColor: Theme.faintText
    fillColor: Theme.fieldFill
    borderColor: Theme.fieldBorder
    focusedBorderColor: Qt.rgba(accent.r, accent.g, accent.b, 0.7)
    selectionColor: Qt.rgba(accent.r, accent.g, accent.b, 0.35)

    SymbolIcon {
        x: 16
        anchors.verticalCenter: parent.verticalCenter
        width: 16
        height: 16
        name: field.symbol
        color: field.entry.activeFocus ? field.accent : Theme.secondaryText
    }
}
