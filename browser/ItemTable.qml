import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// The vault's items in four sortable columns on a rounded card. One row can be selected; a
// double-click or Return opens it; a right-click asks for its menu.
Rectangle {
    id: frame

    required property ItemTableModel tableModel
    required property VaultBrowser browser
    // A right-click on a row: the item, and where in this item the click was.
    signal menuRequested(url url, real x, real y)

    readonly property TableView table: table

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

        delegate: Item {
            id: headerCell
            required property int column
            required property string display
            readonly property bool sorted: frame.tableModel.sortColumn === column

            objectName: "header." + display
            implicitHeight: 30

            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: headerCell.column === 0 ? 14 : 8
                anchors.rightMargin: 8
                spacing: 4

                Label {
                    text: headerCell.display
                    color: headerCell.sorted ? Theme.text : Theme.secondaryText
                    font.pixelSize: 12
                    font.weight: Font.DemiBold
                    elide: Text.ElideRight
                    Layout.fillWidth: false
                    Layout.maximumWidth: headerCell.width - 34
                }
                SymbolIcon {
                    visible: headerCell.sorted
                    Layout.preferredWidth: 9
                    Layout.preferredHeight: 9
                    name: frame.tableModel.sortAscending ? "chevron.up" : "chevron.down"
                    color: Theme.gold
                }
                Item {
                    Layout.fillWidth: true
                }
            }
            Rectangle {
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.bottom: parent.bottom
                height: 1
                color: Theme.cardBorder
            }
            Rectangle {
                visible: headerCell.column > 0
                anchors.left: parent.left
                anchors.verticalCenter: parent.verticalCenter
                width: 1
                height: 14
                color: Qt.rgba(1, 1, 1, 0.1)
            }
            // Every click flips the order, also the second of a quick pair.
            MouseArea {
                anchors.fill: parent
                onClicked: frame.tableModel.sortBy(headerCell.column)
                onDoubleClicked: frame.tableModel.sortBy(headerCell.column)
            }
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
        boundsBehavior: Flickable.StopAtBounds
        columnWidthProvider: function (column) {
            return frame.tableModel.columnWidth(column, table.width)
        }
        rowHeightProvider: function (row) {
            return 30
        }
        onWidthChanged: forceLayout()

        ScrollBar.vertical: ScrollBar {}

        Keys.onUpPressed: frame.selectRow(Math.max(0, frame.tableModel.rowOf(frame.browser.selection) - 1))
        Keys.onDownPressed: frame.selectRow(Math.min(table.rows - 1, frame.tableModel.rowOf(frame.browser.selection) + 1))
        Keys.onReturnPressed: frame.browser.openItem(frame.browser.selection)
        Keys.onEnterPressed: frame.browser.openItem(frame.browser.selection)

        // A click below the last row selects nothing.
        TapHandler {
            onTapped: function (eventPoint) {
                table.forceActiveFocus()
                if (eventPoint.position.y + table.contentY >= table.contentHeight)
                    frame.browser.selection = ""
            }
        }

        delegate: Rectangle {
            id: cell
            required property int row
            required property int column
            required property string display
            required property url url
            required property string path
            readonly property bool selected: frame.isSelected(url)

            objectName: "cell." + row + "." + column
            implicitHeight: 30
            color: selected ? Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.2)
                            : row % 2 === 1 ? Qt.rgba(1, 1, 1, 0.025) : "transparent"

            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: cell.column === 0 ? 12 : 8
                anchors.rightMargin: 8
                spacing: 8

                ItemIcon {
                    visible: cell.column === 0
                    Layout.preferredWidth: 18
                    Layout.preferredHeight: 18
                    path: cell.column === 0 ? cell.path : ""
                    fallbackColor: Theme.secondaryText
                }
                Label {
                    Layout.fillWidth: true
                    text: cell.display
                    elide: cell.column === 0 ? Text.ElideMiddle : Text.ElideRight
                    maximumLineCount: 1
                    font.pixelSize: 13
                    color: cell.column === 0 ? Theme.text
                         : cell.column === 3 ? Qt.rgba(1, 1, 1, 0.6) : Theme.secondaryText
                }
            }

            TapHandler {
                onTapped: {
                    table.forceActiveFocus()
                    frame.browser.selection = cell.url
                }
                onDoubleTapped: {
                    frame.browser.selection = cell.url
                    frame.browser.openItem(cell.url)
                }
            }
            TapHandler {
                acceptedButtons: Qt.RightButton
                onTapped: function (eventPoint) {
                    const at = cell.mapToItem(frame, eventPoint.position.x, eventPoint.position.y)
                    frame.menuRequested(cell.url, at.x, at.y)
                }
            }
        }
    }
}
