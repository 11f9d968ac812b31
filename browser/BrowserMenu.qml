import QtQuick
import QtQuick.Controls.Basic
import Morvanta.LockScreens
import Morvanta.Browser

// A menu on the browser's dark card, opening at once.
Menu {
    id: menu

    topPadding: 6
    bottomPadding: 6
    enter: null
    exit: null

    delegate: BrowserMenuItem {}

    background: Rectangle {
        implicitWidth: 230
        radius: 10
        color: "#201c37"
        border.width: 1
        border.color: Qt.rgba(1, 1, 1, 0.13)
    }
}
