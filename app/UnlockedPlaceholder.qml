import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta
import Morvanta.LockScreens

// Stands where the vault browser will be: says where the open vault is and locks it.
Item {
    id: root

    required property RootRouter router
    property url mountPoint

    Rectangle {
        anchors.fill: parent
        gradient: Theme.brandedBackground
    }

    ColumnLayout {
        anchors.centerIn: parent
        width: Math.min(parent.width - 64, 420)
        spacing: 14

        SymbolIcon {
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: 40
            Layout.preferredHeight: 40
            name: "lock.open.fill"
            color: Theme.gold
        }
        Label {
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            text: "Vault unlocked"
            color: Theme.text
            font.pixelSize: 24
            font.bold: true
        }
        Label {
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WrapAnywhere
            text: root.mountPoint.toString().replace("file://", "")
            color: Theme.secondaryText
            font.pixelSize: 13
        }
        AccentButton {
            objectName: "lockButton"
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: 160
            text: "Lock"
            symbol: "lock.fill"
            onClicked: root.router.lockVault()
        }
    }

    Shortcut {
        sequence: "Ctrl+L"
        onActivated: root.router.lockVault()
    }
}
