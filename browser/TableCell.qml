import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// One cell of the item table; the name's cell also carries the row's icon and, while the
// table has the keyboard, the focus ring around the whole selected row.
Rectangle {
    id: cell

    // The ItemTable it belongs to.
    required property Item owner
    required property int row
    required property int column
    required property string display
    required property url url
    required property string path
    readonly property bool selected: owner.isSelected(url)
    // The row whose menu is open stands out until the menu closes.
    readonly property bool menuShown: !selected && owner.menuTarget.toString() !== ""
                                      && owner.menuTarget.toString() === url.toString()

    objectName: "cell." + row + "." + column
    implicitHeight: 30
    z: selected && column === 0 ? 1 : 0
    color: selected ? Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.2)
         : menuShown ? Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.1)
         : row % 2 === 1 ? Qt.rgba(1, 1, 1, 0.025) : "transparent"

    Accessible.role: Accessible.Cell
    Accessible.name: display
    Accessible.selectable: true
    Accessible.selected: selected

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
            Accessible.ignored: true
        }
    }

    FocusRing {
        objectName: "rowFocusRing"
        control: null
        x: 2
        y: 2
        width: cell.owner.table.contentWidth - 4
        height: cell.height - 4
        controlRadius: 4
        shown: cell.column === 0 && cell.selected && cell.owner.keyboardFocus
    }

    TapHandler {
        onTapped: {
            cell.owner.takeFocusFromPointer()
            cell.owner.browser.selection = cell.url
        }
        onDoubleTapped: {
            cell.owner.browser.selection = cell.url
            cell.owner.browser.openItem(cell.url)
        }
    }
    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: function (eventPoint) {
            const at = cell.mapToItem(cell.owner, eventPoint.position.x, eventPoint.position.y)
            cell.owner.menuRequested(cell.url, at.x, at.y)
        }
    }
}
