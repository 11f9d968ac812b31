import QtQuick
import Morvanta.LockScreens
import Morvanta.Browser

// Files dragged over the browser: a gold outline while they hover, added when dropped.
DropArea {
    id: dropArea

    required property VaultBrowser browser

    objectName: "dropArea"
    keys: ["text/uri-list"]
    onEntered: function (drag) {
        drag.accept(Qt.CopyAction)
    }
    onDropped: function (drop) {
        // Copy, not move: the vault removes each original itself once it is safely in.
        if (browser.handleDrop(drop.urls))
            drop.accept(Qt.CopyAction)
    }

    Binding {
        target: dropArea.browser
        property: "isDragOver"
        value: dropArea.containsDrag
    }
    Rectangle {
        objectName: "dropOverlay"
        anchors.fill: parent
        anchors.margins: 8
        visible: dropArea.browser.isDragOver
        radius: 16
        color: Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.13)
        border.width: 2
        border.color: Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.75)
    }
}
