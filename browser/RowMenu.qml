import QtQuick
import QtQuick.Controls.Basic
import Morvanta.LockScreens
import Morvanta.Browser

// The row menu, for the "Actions" button and for a right-click on a row alike. Its entries
// are decided each time it opens.
BrowserMenu {
    id: rowMenu

    required property VaultBrowser browser
    property url target

    objectName: "rowMenu"

    function openFor(url, parentItem, x, y) {
        while (count > 0)
            takeItem(0).destroy()
        target = url
        const entries = browser.rowMenu(url)
        for (const entry of entries) {
            if (entry.action === "divider") {
                addItem(dividerEntry.createObject(rowMenu.contentItem))
            } else {
                addItem(menuEntry.createObject(rowMenu.contentItem, {
                    objectName: "rowMenu." + entry.action,
                    text: entry.title,
                    symbol: entry.symbol,
                    destructive: entry.destructive,
                    entryAction: entry.action
                }))
            }
        }
        if (entries.length > 0)
            popup(parentItem, x, y)
    }

    Component {
        id: menuEntry
        BrowserMenuItem {
            property string entryAction
            onTriggered: rowMenu.browser.chooseRowMenuEntry(entryAction, rowMenu.target)
        }
    }
    Component {
        id: dividerEntry
        MenuDivider {}
    }
}
