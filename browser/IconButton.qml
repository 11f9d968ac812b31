import QtQuick
import QtQuick.Controls.Basic
import Morvanta.LockScreens
import Morvanta.Browser

// A borderless button that is only a symbol, with its help shown on hover.
Button {
    id: control

    property string symbol
    property string helpText
    property color ink: Theme.secondaryText
    property real symbolSize: 17

    implicitWidth: 30
    implicitHeight: 30
    padding: 0
    flat: true
    hoverEnabled: true
    Accessible.name: helpText
    Accessible.onPressAction: clicked()

    ToolTip.visible: hovered && helpText !== ""
    ToolTip.delay: 600
    ToolTip.text: helpText

    contentItem: Item {
        SymbolIcon {
            anchors.centerIn: parent
            width: control.symbolSize
            height: control.symbolSize
            name: control.symbol
            color: control.hovered ? Theme.text : control.ink
        }
    }

    FocusRing {}

    background: Rectangle {
        radius: 8
        color: control.down ? Qt.rgba(1, 1, 1, 0.14)
                            : control.hovered ? Qt.rgba(1, 1, 1, 0.07) : "transparent"
    }
}
