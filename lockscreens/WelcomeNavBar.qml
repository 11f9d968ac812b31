import QtQuick
import Morvanta.LockScreens

// Under the welcome pages: Back on the left, the page dots in the middle of the bar (not of
// the space the buttons leave, which changes with the forward button's label), and the
// forward button on the right. The forward button starts with the keyboard focus.
Item {
    id: bar

    required property WelcomePager pager

    implicitHeight: 44

    PushButton {
        id: backButton
        objectName: "backButton"
        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        implicitWidth: backRow.implicitWidth + leftPadding + rightPadding
        implicitHeight: 40
        text: qsTr("Back")
        enabled: bar.pager.canGoBack
        opacity: enabled ? 1 : 0
        font.pixelSize: 14
        onClicked: bar.pager.back()

        Rectangle {
            anchors.fill: parent
            radius: 10
            color: backButton.down ? Qt.rgba(1, 1, 1, 0.1)
                                   : backButton.hovered ? Qt.rgba(1, 1, 1, 0.05) : "transparent"
        }
        Row {
            id: backRow
            anchors.centerIn: parent
            spacing: 6
            SymbolIcon {
                anchors.verticalCenter: parent.verticalCenter
                width: 14
                height: 14
                name: "arrow.left"
                color: Theme.secondaryText
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: backButton.text
                font: backButton.font
                color: Theme.secondaryText
            }
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

    PushButton {
        id: forwardButton
        objectName: "forwardButton"
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        implicitWidth: forwardRow.implicitWidth + leftPadding + rightPadding
        leftPadding: 18
        rightPadding: 16
        implicitHeight: 40
        text: bar.pager.forwardLabel
        font.pixelSize: 14
        font.weight: Font.DemiBold
        Component.onCompleted: forceActiveFocus()
        onClicked: bar.pager.advance()

        Rectangle {
            anchors.fill: parent
            radius: 10
            opacity: forwardButton.down ? 0.85 : 1
            gradient: Gradient {
                orientation: Gradient.Horizontal
                GradientStop { position: 0; color: Qt.rgba(1.0, 0.9, 0.6, 1) }
                GradientStop { position: 1; color: Qt.rgba(0.95, 0.78, 0.42, 1) }
            }
        }
        Row {
            id: forwardRow
            anchors.centerIn: parent
            spacing: 7
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: forwardButton.text
                font: forwardButton.font
                color: Theme.inkOnGold
            }
            SymbolIcon {
                anchors.verticalCenter: parent.verticalCenter
                width: 14
                height: 14
                name: "arrow.right"
                color: Theme.inkOnGold
            }
        }
        FocusRing {
            controlRadius: 10
        }
    }
}
