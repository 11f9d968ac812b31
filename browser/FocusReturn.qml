import QtQuick
import QtQuick.Templates as T
import Morvanta.Browser

// When a dialog or menu over `screen` closes, the keyboard goes back to the control it came
// from, or to `fallback` when that has gone or is disabled; never nowhere.
Item {
    id: keeper

    required property Item screen
    required property Item fallback
    property Item lastFocus

    function holds(item, ancestor) {
        while (item && item !== ancestor)
            item = item.parent
        return item !== null && item !== undefined
    }
    function isOnScreen(item) {
        return item !== null && item !== screen && holds(item, screen)
    }
    function restore() {
        const focused = Window.activeFocusItem
        if (isOnScreen(focused) || holds(focused, T.Overlay.overlay))
            return
        if (lastFocus && lastFocus.visible && lastFocus.enabled)
            lastFocus.forceActiveFocus(Qt.OtherFocusReason)
        else if (fallback.visible)
            fallback.forceActiveFocus(Qt.OtherFocusReason)
    }

    Connections {
        target: keeper.Window.window
        function onActiveFocusItemChanged() {
            const focused = keeper.Window.activeFocusItem
            if (keeper.isOnScreen(focused))
                keeper.lastFocus = focused
            else
                Qt.callLater(keeper.restore)
        }
    }
}
