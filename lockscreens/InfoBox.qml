import QtQuick
import QtQuick.Layouts
import Morvanta.LockScreens

// A tinted box with a symbol, a bold line and a paragraph.
Rectangle {
    id: box

    property string symbol
    property color tint: Theme.gold
    property string heading
    property string text

    implicitHeight: row.implicitHeight + 30
    radius: 12
    color: Qt.rgba(tint.r, tint.g, tint.b, 0.09)
    border.width: 1
    border.color: Qt.rgba(tint.r, tint.g, tint.b, 0.35)

    RowLayout {
        id: row
        anchors.fill: parent
        anchors.margins: 15
        spacing: 12

        SymbolIcon {
            Layout.alignment: Qt.AlignTop
            Layout.preferredWidth: 22
            Layout.preferredHeight: 22
            name: box.symbol
            color: box.tint
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 4
            SpokenText {
                Layout.fillWidth: true
                text: box.heading
                color: Theme.text
                font.pixelSize: 14
                font.bold: true
                wrapMode: Text.Wrap
            }
            SpokenText {
                Layout.fillWidth: true
                text: box.text
                color: Theme.secondaryText
                font.pixelSize: 12
                wrapMode: Text.Wrap
                lineHeight: 1.1
            }
        }
    }
}
