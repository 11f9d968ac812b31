import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// A column's title: a click sorts by the column, a second click flips the order. Screen
// readers see a column header that says how it sorts and sorts when pressed.
Item {
    id: headerCell

    required property ItemTableModel tableModel
    required property int column
    required property string display
    readonly property bool sorted: tableModel.sortColumn === column

    objectName: "header." + tableModel.columnKey(column)
    implicitHeight: 30

    Accessible.role: Accessible.ColumnHeader
    Accessible.name: display
    Accessible.description: !sorted ? "" : tableModel.sortAscending ? qsTr("Sorted ascending")
                                                                    : qsTr("Sorted descending")
    Accessible.onPressAction: tableModel.sortBy(column)

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
            Accessible.ignored: true
        }
        SymbolIcon {
            visible: headerCell.sorted
            Layout.preferredWidth: 9
            Layout.preferredHeight: 9
            name: headerCell.tableModel.sortAscending ? "chevron.up" : "chevron.down"
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
        onClicked: headerCell.tableModel.sortBy(headerCell.column)
        onDoubleClicked: headerCell.tableModel.sortBy(headerCell.column)
    }
}
