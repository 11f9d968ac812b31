import QtQuick
import QtQuick.Layouts
import Morvanta.LockScreens

// One selling point of the welcome pages: its symbol beside a title and a line of text.
Rectangle {
    id: card

    property string icon
    property string title
    property string text

    implicitHeight: row.implicitHeight + 28
    radius: 12
    color: Theme.cardFill
    border.width: 1
    border.color: Theme.cardBorder

    RowLayout {
        id: row
        anchors.fill: parent
        anchors.margins: 14
        spacing: 12

        Rectangle {
            Layout.alignment: Qt.AlignTop
            Layout.preferredWidth: 34
            Layout.preferredHeight: 34
            radius: 9
            color: Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.14)
            SymbolIcon {
                anchors.centerIn: parent
                width: 18
                height: 18
                name: card.icon
                color: Theme.gold
            }
        }
        ColumnLayout {
            Layout.fillWidth: true
            Layout.alignment: Qt.AlignTop
            spacing: 3
            SpokenText {
                Layout.fillWidth: true
                text: card.title
                color: Theme.text
                font.pixelSize: 14
                font.weight: Font.DemiBold
                wrapMode: Text.Wrap
            }
            SpokenText {
                Layout.fillWidth: true
                text: card.text
                color: Theme.secondaryText
                font.pixelSize: 12
                wrapMode: Text.Wrap
                lineHeight: 1.1
            }
        }
    }
}
