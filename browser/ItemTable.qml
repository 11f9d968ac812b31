import QtQuick
import QtQuick.Controls.Basic
import Morvanta.LockScreens
import Morvanta.Browser

// The vault's items in four sortable columns on a rounded card. One row can be selected; a
// double-click or Return opens it; a right-click, the menu key or Shift+F10 asks for its
// menu. The keyboard moves through the rows as in a file manager's list.
Rectangle {
    id: frame

    required property ItemTableModel tableModel
    required property VaultBrowser browser
    // The item whose row menu is open, if any.
    property url menuTarget
    // A right-click on a row, or the menu keys: the item, and where in this item to open.
    signal menuRequested(url url, real x, real y)

    readonly property TableView table: table
    readonly property string title: qsTr("Vault items")
    // The ring shows while the table has the focus, unless the focus came from the pointer,
    // or is where the open vault starts it, and no key has been used since.
    readonly property bool keyboardFocus: table.activeFocus && !quietFocus
    property bool quietFocus: true

    radius: 10
    color: Qt.rgba(1, 1, 1, 0.035)
    border.width: 1
    border.color: Theme.cardBorder

    function isSelected(url) {
        return browser.selection.toString() !== "" && browser.selection.toString() === url.toString()
    }

    function selectRow(row) {
        const url = tableModel.urlAt(row)
        if (url.toString() === "")
            return
        browser.selection = url
        table.positionViewAtRow(row, TableView.Contain)
    }

    function takeFocusFromPointer() {
        quietFocus = true
        table.forceActiveFocus()
    }

    function handleKey(event) {
        quietFocus = false
        const row = tableModel.rowOf(browser.selection)
        const target = keyboard.rowAfterKey(event.key, row, Math.floor(table.height / 30))
        const command = keyboard.commandForKey(event.key, event.modifiers)
        if (target >= 0) {
            selectRow(target)
        } else if (command === "menu") {
            if (row >= 0)
                menuRequested(browser.selection, 40, header.height + (row + 1) * 30 - table.contentY)
        } else if (command !== "") {
            browser.chooseRowMenuEntry(command, browser.selection)
        } else {
            const typing = !(event.modifiers & (Qt.ControlModifier | Qt.AltModifier | Qt.MetaModifier))
            const found = typing ? keyboard.rowForTyped(event.text, row) : -1
            if (found < 0)
                return
            selectRow(found)
        }
        event.accepted = true
    }

    TableKeyboard {
        id: keyboard
        model: frame.tableModel
    }

    FocusRing {
        objectName: "tableFocusRing"
        controlRadius: frame.radius
        shown: frame.keyboardFocus && frame.browser.selection.toString() === ""
    }

    HorizontalHeaderView {
        id: header
        objectName: "tableHeader"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: 1
        syncView: table
        clip: true
        reuseItems: false
        boundsBehavior: Flickable.StopAtBounds
        delegate: TableHeaderCell {
            tableModel: frame.tableModel
        }
    }

    TableView {
        id: table
        objectName: "itemTable"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: header.bottom
        anchors.bottom: parent.bottom
        anchors.leftMargin: 1
        anchors.rightMargin: 1
        anchors.bottomMargin: 1
        model: frame.tableModel
        clip: true
        // A few dozen rows at most on screen: fresh cells are cheap and never show stale state.
        reuseItems: false
        focus: true
        activeFocusOnTab: true
        boundsBehavior: Flickable.StopAtBounds
        columnWidthProvider: function (column) {
            return frame.tableModel.columnWidth(column, table.width)
        }
        rowHeightProvider: function (row) {
            return 30
        }
        onWidthChanged: forceLayout()
        onActiveFocusChanged: if (!activeFocus) frame.quietFocus = false

        Accessible.role: Accessible.Table
        Accessible.name: frame.title

        ScrollBar.vertical: ScrollBar {
            Accessible.name: frame.title
        }

        Keys.onPressed: function (event) {
            frame.handleKey(event)
        }

        // A click below the last row selects nothing.
        TapHandler {
            onTapped: function (eventPoint) {
                frame.takeFocusFromPointer()
                if (eventPoint.position.y + table.contentY >= table.contentHeight)
                    frame.browser.selection = ""
            }
        }

        delegate: TableCell {
            owner: frame
        }
    }
}
