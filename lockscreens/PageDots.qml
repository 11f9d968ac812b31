import QtQuick
import Morvanta.LockScreens

// One dot per page; the current one is drawn long and gold.
Row {
    id: dots

    property int count: 3
    property int current: 0

    spacing: 7

    Repeater {
        model: dots.count
        Rectangle {
            required property int index
            anchors.verticalCenter: parent.verticalCenter
            width: index === dots.current ? 22 : 8
            height: 8
            radius: 4
            color: index === dots.current ? Theme.gold : Qt.rgba(1, 1, 1, 0.22)
            Behavior on width { NumberAnimation { duration: 220; easing.type: Easing.OutCubic } }
            Behavior on color { ColorAnimation { duration: 220 } }
        }
    }
}
