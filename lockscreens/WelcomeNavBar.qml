import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens

// Under the welcome pages: Back on the left, the page dots in the middle of the bar (not of
// the space the buttons leave, which changes with the forward button's label), and the
// forward button on the right. The forward button starts with the keyboard focus.
Item {
    id: bar

    required property WelcomePager pager

    implicitHeight: 44

    Button {
        id: backButton
        objectName: "backButton"
        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        text: qsTr("Back")
        enabled: bar.pager.canGoBack
        opacity: enabled ? 1 : 0
        flat: true
        font.pixelSize: 14
        Accessible.name: text
        onClicked: bar.pager.back()
        Keys.onReturnPressed: clicked()
        Keys.onEnterPressed: clicked()
        contentItem: RowLayout {
            spacing: 6
            SymbolIcon {
                Layout.preferredWidth: 14
                Layout.preferredHeight: 14
                name: "arrow.left"
                color: Theme.secondaryText
            }
            Label {
                text: backButton.text
                font: backButton.font
                color: Theme.secondaryText
            }
        }
        background: Rectangle {
            radius: 10
            color: backButton.down ? Qt.rgba(1, 1, 1, 0.1)
                                   : backButton.hovered ? Qt.rgba(1, 1, 1, 0.05) : "transparent"
        }
        FocusRing {
            controlRadius: 10
        }
        Behavior on opacity { NumberAnimation { duration: 180 } }
    }

    PageDots {
        objectName: "pageDots"
        anchors.centerIn: parent
        count: bar.pager.totalPages
        current: bar.pager.page
    }

    Button {
        id: forwardButton
        objectName: "forwardButton"
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        text: bar.pager.forwardLabel
        font.pixelSize: 14
        font.weight: Font.DemiBold
        implicitHeight: 40
        leftPadding: 18
        rightPadding: 16
        Component.onCompleted: forceActiveFocus()
        Accessible.name: text
        onClicked: bar.pager.advance()
        Keys.onReturnPressed: clicked()
        Keys.onEnterPressed: clicked()
        contentItem: RowLayout {
            spacing: 7
            Label {
                text: forwardButton.text
                font: forwardButton.font
                color: Theme.inkOnGold
            }
            SymbolIcon {
                Layout.preferredWidth: 14
                Layout.preferredHeight: 14
                name: "arrow.right"
                color: Theme.inkOnGold
            }
        }
        background: Rectangle {
            radius: 10
            opacity: forwardButton.down ? 0.85 : 1
            gradient: Gradient {
                orientation: Gradient.Horizontal
                GradientStop { position: 0; color: Qt.rgba(1.0, 0.9, 0.6, 1) }
                GradientStop { position: 1; color: Qt.rgba(0.95, 0.78, 0.42, 1) }
            }
        }
        FocusRing {
            controlRadius: 10
        }
    }
}
