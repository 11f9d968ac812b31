import QtQuick
import Morvanta.LockScreens

// A masked entry with a symbol in front, on the dark screens. Its placeholder is its name.
TextInput {
    id: field

    property string symbol: "lock.fill"
    property color accent: Theme.gold
    property string placeholderText
    readonly property bool visualFocus: KeyboardFocus.visible
    // Known from the field's first moment, before its echo mode is: an accessibility client
    // asks about the field while it is still being built.
    readonly property bool secretEntry: true

    activeFocusOnTab: true
    echoMode: TextInput.Password
    passwordCharacter: "\u2022"
    color: Theme.text
    selectionColor: Qt.rgba(accent.r, accent.g, accent.b, 0.35)
    selectedTextColor: Theme.text
    selectByMouse: true
    font.pixelSize: 15
    leftPadding: 44
    rightPadding: 14
    // 46 pixels high, the text in the middle.
    topPadding: (46 - contentHeight) / 2
    bottomPadding: topPadding
    Accessible.role: Accessible.EditableText
    Accessible.name: placeholderText
    Accessible.passwordEdit: true

    Rectangle {
        z: -1
        anchors.fill: parent
        radius: 10
        color: Theme.fieldFill
        border.width: 1
        border.color: field.activeFocus ? Qt.rgba(field.accent.r, field.accent.g, field.accent.b, 0.7)
                                        : Theme.fieldBorder
    }

    Text {
        x: field.leftPadding
        width: field.width - field.leftPadding - field.rightPadding
        anchors.verticalCenter: parent.verticalCenter
        visible: field.length === 0 && field.preeditText === ""
        text: field.placeholderText
        font: field.font
        color: Theme.faintText
        elide: Text.ElideRight
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
