import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// What stands in for the table while the vault holds nothing: how to put something in.
Rectangle {
    objectName: "emptyState"
    radius: 10
    color: Qt.rgba(1, 1, 1, 0.03)
    border.width: 1
    border.color: Theme.cardBorder

    ColumnLayout {
        anchors.centerIn: parent
        width: Math.min(parent.width - 60, 400)
        spacing: 10

        SymbolIcon {
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: 54
            Layout.preferredHeight: 54
            Layout.bottomMargin: 4
            name: "lock.shield"
            color: Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.85)
        }
        Label {
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            text: qsTr("Vault is empty")
            color: Theme.text
            font.pixelSize: 20
            font.weight: Font.DemiBold
        }
        Label {
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: qsTr("Drag files, folders, or apps into the vault, or click \"Add to Vault\" to encrypt them.")
            color: Theme.secondaryText
            font.pixelSize: 13
            lineHeight: 1.15
        }
    }
}
