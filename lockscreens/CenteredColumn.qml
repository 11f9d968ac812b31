import QtQuick
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

    // Where the view is in the column, while it moves.
    Rectangle {
        parent: flick
        visible: flick.moving && flick.visibleArea.heightRatio < 1
        x: flick.width - width - 2
        y: flick.visibleArea.yPosition * flick.height
        width: 2
        height: flick.visibleArea.heightRatio * flick.height
        radius: 1
        color: Qt.rgba(0.5, 0.5, 0.5, 0.6)
    }
}
