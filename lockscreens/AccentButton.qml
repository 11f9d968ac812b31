import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens

// The screen's main action, filled with its accent. While `busy` a small progress indicator
// stands in for the symbol.
Button {
    id: control

    property string symbol
    property color fill: Theme.gold
    property color ink: Theme.inkOnGold
    property bool busy: false

    implicitHeight: 46
    // A click leaves the keyboard focus in the field being filled in; Tab still reaches it.
    focusPolicy: Qt.TabFocus
    Accessible.name: text
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    opacity: enabled ? 1 : 0.45
    font.pixelSize: 15
    font.weight: Font.DemiBold

    contentItem: Item {
        implicitWidth: row.implicitWidth
        implicitHeight: row.implicitHeight

        RowLayout {
            id: row
            anchors.centerIn: parent
            spacing: 8

            Spinner {
                visible: control.busy
                Layout.preferredWidth: 17
                Layout.preferredHeight: 17
                color: control.ink
            }
            SymbolIcon {
                visible: !control.busy && control.symbol !== ""
                Layout.preferredWidth: 17
                Layout.preferredHeight: 17
                name: control.symbol
                color: control.ink
            }
            Label {
                text: control.text
                font: control.font
                color: control.ink
            }
        }
    }

    background: Rectangle {
        radius: 10
        color: control.down ? Qt.darker(control.fill, 1.12) : control.fill
    }

    FocusRing {
        accent: control.fill
        controlRadius: 10
    }
}
