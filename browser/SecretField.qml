import QtQuick
import Morvanta.LockScreens
import Morvanta.Browser

// A masked entry as a screen reader should find it: named, focusable, and reading as the
// bullets shown. Qt Quick 6.4 hands a password field's plain text to the accessibility
// interface (and drops the name of anything marked as a password), so the field itself
// stays out of it and this stands in, with no `text` of its own to read but the bullets.
FocusScope {
    id: secretField

    property alias symbol: field.symbol
    property alias placeholderText: field.placeholderText
    property alias fieldName: field.objectName
    property alias secret: field.text
    readonly property string text: field.displayText
    signal accepted

    implicitHeight: 40

    Accessible.role: Accessible.EditableText
    Accessible.name: field.placeholderText
    Accessible.focusable: true
    Accessible.focused: field.activeFocus

    PasswordField {
        id: field
        anchors.fill: parent
        focus: true
        Accessible.ignored: true
        onAccepted: secretField.accepted()

        FocusRing {
            controlRadius: 10
        }
    }
}
