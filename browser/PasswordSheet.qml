import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T
import Morvanta.LockScreens
import Morvanta.Browser

// The password change over the browser; it closes itself once the password has changed.
Dialog {
    id: sheet

    required property VaultBrowser browser
    required property VaultManager vault

    objectName: "passwordSheet"
    // Its name for screen readers; the sheet shows the title itself.
    title: qsTr("Change Master Password")
    header: null
    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: 420
    padding: 20
    modal: true
    focus: true
    closePolicy: Popup.CloseOnEscape
    enter: null
    exit: null
    onClosed: browser.showPasswordChange = false
    onOpened: passwordView.reset()

    T.Overlay.modal: Rectangle {
        color: Qt.rgba(0.01, 0.01, 0.04, 0.55)
    }
    background: Rectangle {
        radius: 14
        color: "#1c1932"
        border.width: 1
        border.color: Qt.rgba(1, 1, 1, 0.13)
    }
    contentItem: PasswordChangeView {
        id: passwordView
        // Qt Quick names a dialog after its title only when accessibility was on before it was
        // made; its content carries the name for certain.
        Accessible.role: Accessible.Dialog
        Accessible.name: sheet.title
        vault: sheet.vault
        onSucceeded: sheet.browser.passwordChanged()
        onDismissed: sheet.browser.showPasswordChange = false
    }
}
