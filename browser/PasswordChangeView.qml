import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// The sheet's content: the current password, the new one twice, and the change. The vault
// stays open throughout.
ColumnLayout {
    id: view

    required property VaultManager vault
    // Called once after the password has changed.
    signal succeeded
    // The sheet should close.
    signal dismissed

    readonly property PasswordChangeForm form: form

    // A fresh sheet: empty fields, the cursor in the first.
    function reset() {
        form.reset()
        oldField.forceActiveFocus()
    }

    spacing: 16

    PasswordChangeForm {
        id: form
        vault: view.vault
        onSucceeded: view.succeeded()
        onDismissRequested: view.dismissed()
    }

    Label {
        objectName: "passwordSheetTitle"
        Layout.fillWidth: true
        text: qsTr("Change Master Password")
        color: Theme.text
        font.pixelSize: 16
        font.weight: Font.DemiBold
    }
    Label {
        Layout.fillWidth: true
        Layout.topMargin: -8
        wrapMode: Text.Wrap
        text: qsTr("Vault will stay unlocked after the password changes.")
        color: Theme.secondaryText
        font.pixelSize: 13
    }
    PasswordField {
        id: oldField
        objectName: "oldPasswordField"
        Layout.fillWidth: true
        symbol: "lock.fill"
        placeholderText: qsTr("Current password")
        text: form.oldPw
        onTextChanged: form.oldPw = text
        onAccepted: form.change()
    }
    PasswordField {
        objectName: "newPasswordField"
        Layout.fillWidth: true
        symbol: "key.fill"
        placeholderText: qsTr("New password")
        text: form.newPw
        onTextChanged: form.newPw = text
        onAccepted: form.change()
    }
    PasswordField {
        objectName: "confirmPasswordField"
        Layout.fillWidth: true
        symbol: "key.fill"
        placeholderText: qsTr("Confirm new password")
        text: form.confirmPw
        onTextChanged: form.confirmPw = text
        onAccepted: form.change()
    }
    Label {
        objectName: "passwordErrorLine"
        Layout.fillWidth: true
        visible: form.error !== ""
        text: form.error
        wrapMode: Text.Wrap
        color: Theme.warning
        font.pixelSize: 13
    }
    RowLayout {
        Layout.fillWidth: true
        Layout.topMargin: 4
        spacing: 10

        DialogButton {
            objectName: "passwordCancelButton"
            text: qsTr("Cancel")
            onClicked: view.dismissed()
        }
        Item {
            Layout.fillWidth: true
        }
        AccentButton {
            objectName: "changePasswordButton"
            implicitHeight: 36
            leftPadding: 18
            rightPadding: 18
            font.pixelSize: 13
            text: form.buttonTitle
            busy: form.busy
            enabled: form.canChange
            Accessible.name: text
            Accessible.onPressAction: clicked()
            onClicked: form.change()

            FocusRing {
                controlRadius: 10
            }
        }
    }
}
