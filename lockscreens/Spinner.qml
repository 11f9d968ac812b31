import QtQuick

// A small progress indicator that shows at once, without fading in.
Item {
    id: spinner

    property color color: "white"
    property bool running: true

    implicitWidth: 18
    implicitHeight: 18

    // Built when first shown: most screens carry one that seldom shows.
    Loader {
        anchors.fill: parent
        active: spinner.visible
        sourceComponent: Item {
            Repeater {
                model: 8
                Rectangle {
                    required property int index
                    width: spinner.width * 0.2
                    height: width
                    radius: width / 2
                    color: spinner.color
                    opacity: 0.25 + 0.75 * index / 7
                    x: spinner.width / 2 - width / 2 + (spinner.width / 2 - width / 2) * Math.cos(index * Math.PI / 4)
                    y: spinner.height / 2 - height / 2 + (spinner.height / 2 - height / 2) * Math.sin(index * Math.PI / 4)
                }
            }

            RotationAnimator on rotation {
                from: 0
                to: 360
                duration: 900
                loops: Animation.Infinite
                running: spinner.running
            }
        }
    }
}
