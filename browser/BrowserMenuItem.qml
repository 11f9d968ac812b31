import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// One entry of the browser's menus: a symbol, the title, and a check mark when chosen. An
// entry that is one of a set of `choice`s is checkable, and checked while it is the `current`
// one, which a screen reader hears even where no mark is drawn (the auto-lock delays).
MenuItem {
    id: item

    property string symbol
    property bool destructive: false
    property bool showsCheckmark: false
    property bool choice: false
    property bool current: showsCheckmark

    readonly property color ink: !enabled ? Theme.faintText
                                          : destructive ? Theme.warning : Theme.text

    implicitWidth: Math.max(220, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: 30
    leftPadding: 12
    rightPadding: 12
    font.pixelSize: 13
    indicator: null
    arrow: null
    checkable: choice
    checked: current
    // What is chosen is decided by the choice made, not by the click itself.
    onToggled: checked = Qt.binding(function () { return item.current })
    Accessible.name: text
    Accessible.checkable: checkable
    Accessible.checked: checked
    Accessible.onPressAction: clicked()

    contentItem: RowLayout {
        spacing: 9

        SymbolIcon {
            visible: item.symbol !== ""
            Layout.preferredWidth: 14
            Layout.preferredHeight: 14
            name: item.symbol
            color: item.ink
        }
        Label {
            Layout.fillWidth: true
            text: item.text
            font: item.font
            color: item.ink
            elide: Text.ElideRight
        }
        SymbolIcon {
            objectName: "checkmark"
            visible: item.showsCheckmark
            Layout.preferredWidth: 13
            Layout.preferredHeight: 13
            name: "checkmark"
            color: Theme.gold
        }
    }

    FocusRing {
        x: 5
        width: item.width - 10
        height: item.height
        control: null
        controlRadius: 6
        shown: item.visualFocus
    }

    background: Rectangle {
        anchors.fill: parent
        anchors.leftMargin: 5
        anchors.rightMargin: 5
        radius: 6
        color: item.highlighted || item.down
               ? (item.destructive ? Qt.rgba(1, 0.45, 0.45, 0.16) : Qt.rgba(1, 1, 1, 0.10))
               : "transparent"
    }
}
