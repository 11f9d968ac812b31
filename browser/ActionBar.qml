import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// Under the header: adding, and the selected item's actions.
RowLayout {
    id: bar

    required property VaultBrowser browser
    // "Actions" was pressed: the row menu for the selection, under that button.
    signal actionsRequested(Item button)

    spacing: 10

    Button {
        id: addButton
        objectName: "addButton"
        implicitHeight: 32
        leftPadding: 12
        rightPadding: 14
        text: qsTr("Add to Vault")
        font.pixelSize: 13
        font.weight: Font.DemiBold
        Accessible.name: text
        Accessible.onPressAction: clicked()
        onClicked: bar.browser.addItem()
        contentItem: RowLayout {
            spacing: 7
            SymbolIcon {
                Layout.preferredWidth: 15
                Layout.preferredHeight: 15
                name: "plus.circle.fill"
                color: Theme.gold
            }
            Label {
                text: addButton.text
                font: addButton.font
                color: Theme.gold
            }
        }
        background: Rectangle {
            radius: 8
            color: Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b,
                           addButton.down ? 0.24 : addButton.hovered ? 0.17 : 0.11)
            border.width: 1
            border.color: Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.38)
        }
        FocusRing {}
    }
    Button {
        id: actionsButton
        objectName: "actionsButton"
        implicitHeight: 32
        leftPadding: 10
        rightPadding: 12
        enabled: bar.browser.selection.toString() !== ""
        opacity: enabled ? 1 : 0.4
        hoverEnabled: true
        text: qsTr("Actions")
        font.pixelSize: 13
        font.weight: Font.Medium
        Accessible.name: text
        Accessible.onPressAction: clicked()
        onClicked: bar.actionsRequested(actionsButton)
        contentItem: RowLayout {
            spacing: 6
            SymbolIcon {
                Layout.preferredWidth: 14
                Layout.preferredHeight: 14
                name: "ellipsis.circle.fill"
                color: "white"
            }
            Label {
                text: actionsButton.text
                font: actionsButton.font
                color: "white"
            }
        }
        background: Rectangle {
            radius: 8
            color: actionsButton.down ? Qt.rgba(1, 1, 1, 0.14)
                                      : actionsButton.hovered ? Qt.rgba(1, 1, 1, 0.07)
                                                              : "transparent"
        }
        FocusRing {}
    }
    Item {
        Layout.fillWidth: true
    }
}
