import QtQuick
import QtQuick.Controls.Basic
import Morvanta.LockScreens
import Morvanta.Browser

// The small heading of a group of menu entries; not itself an entry.
Label {
    leftPadding: 12
    rightPadding: 12
    topPadding: 4
    bottomPadding: 3
    color: Theme.faintText
    font.pixelSize: 11
    font.weight: Font.DemiBold
}
