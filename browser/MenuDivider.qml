import QtQuick
import QtQuick.Controls.Basic

// The line between groups of menu entries.
MenuSeparator {
    topPadding: 5
    bottomPadding: 5
    leftPadding: 12
    rightPadding: 12
    contentItem: Rectangle {
        implicitHeight: 1
        color: Qt.rgba(1, 1, 1, 0.11)
    }
}
