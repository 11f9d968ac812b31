import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens

// A column centred in the screen that scrolls instead of clipping when the window is small.
Flickable {
    id: flick

    default property alias content: column.data
    property real maxContentWidth: 360
    property alias spacing: column.spacing

    clip: true
    contentWidth: width
    contentHeight: Math.max(height, column.implicitHeight + 48)
    boundsBehavior: Flickable.StopAtBounds

    ColumnLayout {
        id: column
        width: Math.min(flick.width - 64, flick.maxContentWidth)
        x: (flick.width - width) / 2
        y: (flick.contentHeight - implicitHeight) / 2
        spacing: 14
    }

    ScrollIndicator.vertical: ScrollIndicator {}
}
