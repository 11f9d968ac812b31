import QtQuick
import QtQuick.Layouts
import Morvanta.LockScreens

// A symbol and a short text in one colour: hints, notices, errors, grades.
RowLayout {
    id: line

    property string symbol
    property alias text: label.text
    property color color: Theme.secondaryText
    property alias font: label.font
    // Announced as it appears (an error), not only there to be read.
    property alias notice: label.notice

    spacing: 8

    SymbolIcon {
        Layout.alignment: Qt.AlignTop
        Layout.topMargin: 1
        Layout.preferredWidth: 15
        Layout.preferredHeight: 15
        name: line.symbol
        color: line.color
    }
    SpokenText {
        id: label
        Layout.fillWidth: true
        wrapMode: Text.Wrap
        color: line.color
        font.pixelSize: 13
    }
}
