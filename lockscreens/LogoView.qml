import QtQuick
import Morvanta.LockScreens

// The app icon at the size the caller gives, with a soft shadow below it.
Item {
    implicitWidth: 84
    implicitHeight: 84

    SymbolIcon {
        anchors.centerIn: parent
        width: parent.width + 2 * shadowRadius
        height: parent.height + 2 * shadowRadius
        name: "AppIcon"
        shadowRadius: 14
    }
}
