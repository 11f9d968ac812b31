import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// The rename prompt: the new name, with the extension kept by the vault.
AlertDialog {
    id: dialog

    required property VaultBrowser browser

    objectName: "renameDialog"
    title: qsTr("Rename item")
    message: browser.renameMessage
    confirmText: qsTr("Rename")
    onConfirmed: browser.commitRename()
    onRejected: browser.renameTarget = ""
    onClosed: browser.renameTarget = ""
    initialFocus: renameField
    onOpened: renameField.selectAll()

    Label {
        text: qsTr("Name")
        color: Theme.secondaryText
        font.pixelSize: 12
        font.weight: Font.DemiBold
    }
    TextField {
        id: renameField
        objectName: "renameField"
        Layout.fillWidth: true
        implicitHeight: 36
        placeholderText: qsTr("Name")
        Accessible.name: placeholderText
        text: dialog.browser.renameText
        onTextChanged: dialog.browser.renameText = text
        onAccepted: dialog.browser.commitRename()
        color: Theme.text
        placeholderTextColor: Theme.faintText
        selectionColor: Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.35)
        selectedTextColor: Theme.text
        selectByMouse: true
        font.pixelSize: 14
        leftPadding: 12
        background: Rectangle {
            radius: 8
            color: Theme.fieldFill
            border.width: 1
            border.color: renameField.activeFocus ? Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.7)
                                                  : Theme.fieldBorder
        }
        FocusRing {}
    }
}
