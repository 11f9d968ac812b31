import QtQuick
import QtQuick.Layouts
import Morvanta.LockScreens

// First run: choose the master password twice, then create the vault and open it.
Item {
    id: root

    required property VaultManager vault
    property string disguiseRaw: "none"

    readonly property SetupForm form: form

    SetupForm {
        id: form
        vault: root.vault
        disguiseRaw: root.disguiseRaw
        onFailed: atConfirmation => (atConfirmation ? confirmField : passwordField).forceActiveFocus()
    }

    Rectangle {
        anchors.fill: parent
        gradient: form.disguised ? Theme.setupStealthBackground : Theme.setupBackground
    }

    CenteredColumn {
        anchors.fill: parent
        anchors.margins: 16
        spacing: 12

        SetupLogoView {
            Layout.alignment: Qt.AlignHCenter
            Layout.bottomMargin: 4
        }
        SpokenText {
            objectName: "title"
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            text: form.title
            color: Theme.text
            font.pixelSize: 27
            font.family: form.disguised ? Qt.application.font.family : "serif"
            font.weight: form.disguised ? Font.DemiBold : Font.Bold
        }
        SpokenText {
            objectName: "subtitle"
            Layout.fillWidth: true
            Layout.bottomMargin: 6
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
            accent: form.accent
            placeholderText: form.passwordPlaceholder
            text: form.password
            onTextChanged: form.password = text
            onAccepted: confirmField.forceActiveFocus()
            Component.onCompleted: forceActiveFocus()
        }
        PasswordField {
            id: confirmField
            objectName: "confirmField"
            Layout.fillWidth: true
            symbol: "lock.shield.fill"
            accent: form.accent
            placeholderText: qsTr("Confirm password")
            text: form.confirm
            onTextChanged: form.confirm = text
            onAccepted: form.create()
        }
        StrengthBar {
            objectName: "strengthBar"
            Layout.fillWidth: true
            level: form.level
            levelColor: form.captionColor
            caption: form.caption
        }
        StatusLine {
            objectName: "mismatchHint"
            Layout.fillWidth: true
            visible: form.mismatch
            symbol: "exclamationmark.circle.fill"
            text: qsTr("Passwords do not match.")
            color: Theme.caution
        }
        StatusLine {
            objectName: "notice"
            Layout.fillWidth: true
            symbol: "exclamationmark.triangle.fill"
            text: form.notice
            color: Theme.faintText
            font.pixelSize: 12
        }
        StatusLine {
            objectName: "errorLine"
            notice: true
            Layout.fillWidth: true
            visible: form.error !== ""
            symbol: "xmark.circle.fill"
            text: form.error
            color: Theme.warning
        }
        AccentButton {
            objectName: "createButton"
            Layout.fillWidth: true
            Layout.topMargin: 6
            text: form.buttonLabel
            symbol: "shield.lefthalf.filled"
            busy: form.busy
            fill: form.accent
            ink: Theme.inkOnGold
            enabled: form.canSubmit
            onClicked: form.create()
        }
    }
}
