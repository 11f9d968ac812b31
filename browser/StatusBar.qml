import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// The foot of the browser: the auto-lock, the item count, where the vault is open, and
// whether work is under way.
RowLayout {
    id: bar

    required property VaultBrowser browser

    spacing: 8

    StatusPill {
        objectName: "idlePill"
        symbol: "timer"
        text: bar.browser.idleText
    }
    StatusPill {
        objectName: "countPill"
        symbol: "doc.on.doc"
        text: bar.browser.itemCountText
    }
    SymbolIcon {
        visible: bar.browser.mountPath !== ""
        Layout.leftMargin: 4
        Layout.preferredWidth: 10
        Layout.preferredHeight: 10
        name: "externaldrive.fill"
        color: Theme.faintText
    }
    Label {
        objectName: "mountPathLabel"
        visible: bar.browser.mountPath !== ""
        Layout.fillWidth: true
        text: bar.browser.mountPath
        elide: Text.ElideMiddle
        maximumLineCount: 1
        color: Theme.faintText
        font.pixelSize: 11
    }
    Item {
        visible: bar.browser.mountPath === ""
        Layout.fillWidth: true
    }
    Spinner {
        objectName: "busyIndicator"
        visible: bar.browser.busy
        Layout.preferredWidth: 14
        Layout.preferredHeight: 14
        color: Theme.gold
    }
}
