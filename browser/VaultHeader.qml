import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// The browser's header: its title, about, the settings menu and the lock.
RowLayout {
    id: header

    required property VaultBrowser browser

    spacing: 10

    Label {
        objectName: "vaultTitle"
        text: qsTr("Vault")
        color: Theme.text
        font.family: "serif"
        font.pixelSize: 26
        font.bold: true
    }
    Item {
        Layout.fillWidth: true
    }
    IconButton {
        objectName: "aboutButton"
        symbol: "info.circle"
        helpText: qsTr("About Morvanta")
        onClicked: header.browser.showAbout = true
    }
    Button {
        id: gearButton
        objectName: "gearButton"
        implicitWidth: 32
        implicitHeight: 32
        padding: 0
        hoverEnabled: true
        // Only a symbol on screen; this is what it is called.
        readonly property string title: qsTr("Settings")
        Accessible.name: title
        Accessible.onPressAction: clicked()
        onClicked: gearMenu.popup(gearButton, gearButton.width - gearMenu.width,
                                  gearButton.height + 4)
        contentItem: Item {
            SymbolIcon {
                anchors.centerIn: parent
                width: 16
                height: 16
                name: "gearshape.fill"
                color: gearButton.hovered ? Theme.text : Theme.secondaryText
            }
        }
        background: Rectangle {
            radius: 8
            color: gearButton.down ? Qt.rgba(1, 1, 1, 0.16) : Qt.rgba(1, 1, 1, 0.08)
            border.width: 1
            border.color: Qt.rgba(1, 1, 1, 0.16)
        }
        FocusRing {}

        GearMenu {
            id: gearMenu
            browser: header.browser
        }
    }
    Button {
        id: lockButton
        objectName: "lockButton"
        property string helpText: header.browser.lockHelpText
        implicitHeight: 32
        leftPadding: 14
        rightPadding: 16
        hoverEnabled: true
        font.pixelSize: 13
        font.weight: Font.DemiBold
        text: qsTr("Lock")
        ToolTip.visible: hovered
        ToolTip.delay: 600
        ToolTip.text: helpText
        Accessible.name: text
        Accessible.description: helpText
        Accessible.onPressAction: clicked()
        onClicked: header.browser.lock()
        contentItem: RowLayout {
            spacing: 6
            SymbolIcon {
                Layout.preferredWidth: 13
                Layout.preferredHeight: 13
                name: "lock.fill"
                color: Theme.inkOnGold
            }
            Label {
                text: lockButton.text
                font: lockButton.font
                color: Theme.inkOnGold
            }
        }
        background: Rectangle {
            radius: height / 2
            opacity: lockButton.down ? 0.85 : 1
            gradient: Gradient {
                orientation: Gradient.Horizontal
                GradientStop { position: 0; color: Qt.rgba(1.0, 0.9, 0.62, 1) }
                GradientStop { position: 1; color: Theme.gold }
            }
        }
        FocusRing {
            controlRadius: lockButton.height / 2
        }
    }
}
