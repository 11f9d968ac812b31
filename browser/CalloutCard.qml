import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// A banner: a symbol and a message on a tinted card, until it is dismissed.
Rectangle {
    id: card

    property string symbol
    property alias text: label.text
    property color tint: Theme.gold
    signal dismissed

    implicitHeight: row.implicitHeight + 20
    radius: 10
    color: Qt.rgba(tint.r, tint.g, tint.b, 0.13)
    border.width: 1
    border.color: Qt.rgba(tint.r, tint.g, tint.b, 0.42)

    RowLayout {
        id: row
        anchors.fill: parent
        anchors.leftMargin: 14
        anchors.rightMargin: 6
        anchors.topMargin: 10
        anchors.bottomMargin: 10
        spacing: 10

        SymbolIcon {
            Layout.alignment: Qt.AlignTop
            Layout.topMargin: 1
            Layout.preferredWidth: 16
            Layout.preferredHeight: 16
            name: card.symbol
            color: card.tint
        }
        // Said as the banner appears, wherever the keyboard is.
        SpokenText {
            id: label
            notice: true
            objectName: card.objectName + "Text"
            Layout.fillWidth: true
            Layout.alignment: Qt.AlignVCenter
            wrapMode: Text.Wrap
            color: Theme.text
            font.pixelSize: 13
        }
        IconButton {
            objectName: card.objectName + "Dismiss"
            Layout.alignment: Qt.AlignTop
            Layout.topMargin: -6
            implicitWidth: 26
            implicitHeight: 26
            symbolSize: 11
            symbol: "xmark"
            helpText: qsTr("Dismiss")
            onClicked: card.dismissed()
        }
    }
}
