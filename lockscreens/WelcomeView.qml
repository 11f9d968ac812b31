import QtQuick
import QtQuick.Layouts
import Morvanta.LockScreens

// The three introduction pages. The caller names the last button and decides what leaving
// means; the view itself keeps nothing between showings.
Item {
    id: root

    property string ctaLabel: qsTr("Get Started")
    signal continued

    readonly property WelcomePager pager: pager

    implicitWidth: 600
    implicitHeight: 600

    WelcomePager {
        id: pager
        ctaLabel: root.ctaLabel
        onContinued: root.continued()
    }

    Rectangle {
        anchors.fill: parent
        gradient: Theme.backgroundGradient
    }

    Item {
        id: pages
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: navBar.top

        component Page: CenteredColumn {
            required property int index
            anchors.fill: parent
            maxContentWidth: 470
            opacity: pager.page === index ? 1 : 0
            visible: opacity > 0
            Behavior on opacity { NumberAnimation { duration: 220 } }
        }

        // The later pages are built after the first frame, so that the window shows sooner;
        // at once, should one be asked for before that.
        component LaterPage: Loader {
            required property int index
            anchors.fill: parent
            asynchronous: pager.page !== index
        }

        Page {
            objectName: "introPage"
            index: 0
            spacing: 12

            LogoView {
                Layout.alignment: Qt.AlignHCenter
                Layout.preferredWidth: 96
                Layout.preferredHeight: 96
                Layout.bottomMargin: 8
            }
            SpokenText {
                Layout.fillWidth: true
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                text: qsTr("Welcome to Morvanta")
                color: Theme.text
                font.family: "serif"
                font.pixelSize: 30
                font.bold: true
            }
            SpokenText {
                Layout.fillWidth: true
                horizontalAlignment: Text.AlignHCenter
                text: pager.introSubtitle
                color: Theme.gold
                font.pixelSize: 15
                font.weight: Font.DemiBold
            }
            SpokenText {
                Layout.fillWidth: true
                Layout.topMargin: 8
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                text: qsTr("Keep sensitive files safe behind one master password. Morvanta turns any file, folder, or app into an encrypted, invisible vault \u2014 protected by AES-256 encryption used by banks and governments.")
                color: Theme.secondaryText
                font.pixelSize: 14
                lineHeight: 1.2
            }
        }

        LaterPage {
            index: 1
            sourceComponent: Page {
                objectName: "featuresPage"
                index: 1
                maxContentWidth: 540
                spacing: 16

                SpokenText {
                    Layout.fillWidth: true
                    horizontalAlignment: Text.AlignHCenter
                    text: qsTr("Why Morvanta?")
                    color: Theme.text
                    font.family: "serif"
                    font.pixelSize: 26
                    font.bold: true
                }
                GridLayout {
                    Layout.fillWidth: true
                    columns: 2
                    columnSpacing: 10
                    rowSpacing: 10

                    Repeater {
                        model: pager.featureCards
                        FeatureCard {
                            required property var modelData
                            // Equal preferred widths share the row evenly.
                            Layout.preferredWidth: 100
                            Layout.fillWidth: true
                            Layout.fillHeight: true
                            icon: modelData.icon
                            title: modelData.title
                            text: modelData.text
                        }
                    }
                }
            }
        }

        LaterPage {
            index: 2
            sourceComponent: Page {
                objectName: "closingPage"
                index: 2
                maxContentWidth: 500
                spacing: 14

                SpokenText {
                    Layout.fillWidth: true
                    horizontalAlignment: Text.AlignHCenter
                    text: qsTr("Before you begin")
                    color: Theme.text
                    font.family: "serif"
                    font.pixelSize: 26
                    font.bold: true
                }
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 4
                    SpokenText {
                        text: qsTr("Perfect for")
                        color: Theme.gold
                        font.pixelSize: 13
                        font.weight: Font.DemiBold
                    }
                    SpokenText {
                        Layout.fillWidth: true
                        wrapMode: Text.Wrap
                        text: qsTr("Tax documents \u00B7 Passwords \u00B7 Personal photos \u00B7 Client files \u00B7 Legal records \u00B7 Apps \u00B7 Anything you'd hate to lose or expose.")
                        color: Theme.secondaryText
                        font.pixelSize: 13
                        lineHeight: 1.15
                    }
                }
                InfoBox {
                    Layout.fillWidth: true
                    symbol: "exclamationmark.triangle.fill"
                    tint: Theme.warning
                    heading: qsTr("Forget your password, forget your files.")
                    text: qsTr("There's no \"forgot password\" link. No recovery email. No backdoor. That's not a bug \u2014 it's the whole point. Choose a password you'll remember.")
                }
                InfoBox {
                    Layout.fillWidth: true
                    symbol: "externaldrive.fill.badge.checkmark"
                    tint: Theme.gold
                    heading: qsTr("Keep a backup.")
                    text: pager.backupText
                }
            }
        }
    }

    WelcomeNavBar {
        id: navBar
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.leftMargin: 24
        anchors.rightMargin: 24
        anchors.bottomMargin: 20
        pager: pager
    }
}
