import QtQuick
import QtQuick.Layouts
import Morvanta.LockScreens

// Four segments filled up to the strength level, and the caption in the level's colour.
RowLayout {
    id: bar

    property int level: 0
    property color levelColor: Theme.warning
    property string caption

    spacing: 10

    Row {
        spacing: 5
        Repeater {
            model: 4
            Rectangle {
                required property int index
                objectName: "strengthSegment" + index
                width: 44
                height: 4
                radius: 2
                color: index < bar.level ? bar.levelColor : Qt.rgba(1, 1, 1, 0.1)
            }
        }
    }
    SpokenText {
        objectName: "strengthCaption"
        Layout.fillWidth: true
        text: bar.caption
        color: bar.levelColor
        font.pixelSize: 12
        elide: Text.ElideRight
    }
}
