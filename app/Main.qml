import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Morvanta

ApplicationWindow {
    id: window
    required property VaultStatus status

    width: 600
    height: 600
    minimumWidth: 520
    minimumHeight: 420
    visible: true
    title: "Morvanta"

    ColumnLayout {
        anchors.centerIn: parent
        width: Math.min(parent.width - 80, 360)
        spacing: 14

        Label {
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            font.pixelSize: 26
            font.bold: true
            text: "Morvanta"
        }
        Label {
            objectName: "stateLabel"
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: window.status.stateText
        }
        TextField {
            id: password
            objectName: "passwordField"
            Layout.fillWidth: true
            visible: window.status.needsPassword
            echoMode: TextInput.Password
            placeholderText: "Master password"
            onAccepted: actionButton.clicked()
        }
        Button {
            id: actionButton
            objectName: "actionButton"
            Layout.fillWidth: true
            text: window.status.actionText
            enabled: !window.status.needsPassword || password.text.length > 0
            onClicked: {
                if (window.status.act(password.text))
                    password.clear()
            }
        }
        Label {
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            color: "#e5484d"
            visible: text.length > 0
            text: window.status.errorText
        }
    }
}
