import QtQuick
import QtQuick.Controls.Basic
import Morvanta.LockScreens
import Morvanta.Browser

// The password change over the browser; it closes itself once the password has changed.
ModalDialog {
    id: sheet

    required property VaultBrowser browser
    required property VaultManager vault

    objectName: "passwordSheet"
    // Its name for screen readers; the sheet shows the title itself.
    title: qsTr("Change Master Password")
    header: null
    padding: 20
    onClosed: browser.showPasswordChange = false
    onOpened: passwordView.reset()

    contentItem: PasswordChangeView {
        id: passwordView
        vault: sheet.vault
        onSucceeded: sheet.browser.passwordChanged()
        onDismissed: sheet.browser.showPasswordChange = false
    }
}
