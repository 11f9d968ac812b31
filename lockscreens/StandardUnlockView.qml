import QtQuick
import QtQuick.Layouts
import Morvanta.LockScreens

// The password lock screen: branded, or with `stealth` a neutral sign-in that says nothing
// of a vault.
Item {
    id: root

    required property VaultManager vault
    property bool stealth: false

    readonly property UnlockForm form: form
    readonly property color accent: stealth ? Theme.disguisedAccent : Theme.gold

    implicitWidth: 520
    implicitHeight: 420

    UnlockForm {
        id: form
        vault: root.vault
        stealth: root.stealth
        // The next attempt is typed at once, whatever was clicked to make this one.
        onFailed: passwordField.forceActiveFocus()
    }

    Rectangle {
        anchors.fill: parent
        gradient: root.stealth ? Theme.stealthBackground : Theme.brandedBackground
    }

    CenteredColumn {
        anchors.fill: parent
        maxContentWidth: 360
        spacing: 14

        LogoView {
            visible: !root.stealth
            Layout.alignment: Qt.AlignHCenter
            Layout.bottomMargin: 6
        }
        SpokenText {
            objectName: "title"
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            text: form.title
            color: Theme.text
            font.pixelSize: 27
            font.family: root.stealth ? Qt.application.font.family : "serif"
            font.weight: root.stealth ? Font.DemiBold : Font.Bold
        }
        SpokenText {
            objectName: "subtitle"
            Layout.fillWidth: true
            Layout.bottomMargin: 8
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: form.subtitle
            color: Theme.secondaryText
            font.pixelSize: 14
        }
        PasswordField {
            id: passwordField
            objectName: "passwordField"
            Layout.fillWidth: true
            symbol: "lock.fill"
            accent: root.accent
            placeholderText: form.placeholder
            text: form.password
            onTextChanged: form.password = text
            onAccepted: form.unlock()
            Component.onCompleted: forceActiveFocus()
        }
        StatusLine {
            objectName: "errorLine"
            notice: true
            Layout.fillWidth: true
            visible: form.error !== ""
            symbol: "exclamationmark.triangle.fill"
            text: form.error
            color: Theme.warning
        }
        AccentButton {
            objectName: "unlockButton"
            Layout.fillWidth: true
            Layout.topMargin: 4
            text: form.buttonLabel
            symbol: "lock.open.fill"
            busy: form.busy
            fill: root.accent
            enabled: !form.busy
            onClicked: form.unlock()
        }
    }
}
