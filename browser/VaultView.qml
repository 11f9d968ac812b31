import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// The open vault: its items as a sortable table, what can be done with them, the settings
// menu and the lock. Files dropped anywhere on it are added. The keyboard starts in the
// table, as in a file manager.
FocusScope {
    id: root

    required property VaultManager vault
    required property Settings settings
    required property Panels panels
    required property Workspace workspace

    readonly property VaultBrowser browser: browser
    readonly property ItemTableModel tableModel: tableModel

    implicitWidth: 800
    implicitHeight: 635
    focus: true

    VaultBrowser {
        id: browser
        vault: root.vault
        settings: root.settings
        panels: root.panels
        workspace: root.workspace
    }

    ItemTableModel {
        id: tableModel
        vault: root.vault
    }

    Rectangle {
        anchors.fill: parent
        gradient: Theme.brandedBackground
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.leftMargin: 22
        anchors.rightMargin: 22
        anchors.topMargin: 16
        anchors.bottomMargin: 12
        spacing: 12

        VaultHeader {
            Layout.fillWidth: true
            browser: browser
        }

        ActionBar {
            Layout.fillWidth: true
            browser: browser
            onActionsRequested: function (button) {
                rowMenu.openFor(browser.selection, button, 0, button.height + 4)
            }
        }

        // The items, or what to do while there are none.
        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            ItemTable {
                id: itemTable
                objectName: "itemTableFrame"
                anchors.fill: parent
                visible: !browser.isEmpty
                tableModel: tableModel
                browser: browser
                menuTarget: rowMenu.visible ? rowMenu.target : ""
                onMenuRequested: function (url, x, y) {
                    rowMenu.openFor(url, itemTable, x, y)
                }
            }
            EmptyState {
                anchors.fill: parent
                visible: !itemTable.visible
            }
        }

        CalloutCard {
            objectName: "errorBanner"
            Layout.fillWidth: true
            visible: browser.error !== ""
            symbol: "exclamationmark.triangle.fill"
            tint: Theme.warning
            text: browser.error
            onDismissed: browser.error = ""
        }
        CalloutCard {
            objectName: "successBanner"
            Layout.fillWidth: true
            visible: browser.success !== ""
            symbol: "checkmark.seal.fill"
            tint: Theme.success
            text: browser.success
            onDismissed: browser.success = ""
        }

        ProgressStrip {
            objectName: "progressStrip"
            Layout.fillWidth: true
            work: WorkStrip { vault: root.vault }
        }

        StatusBar {
            Layout.fillWidth: true
            browser: browser
        }
    }

    DropZone {
        anchors.fill: parent
        browser: browser
    }

    Shortcut {
        sequence: "Ctrl+L"
        context: Qt.WindowShortcut
        onActivated: browser.lock()
    }

    RowMenu {
        id: rowMenu
        browser: browser
    }

    RenameDialog {
        id: renameDialog
        browser: browser
    }
    AlertDialog {
        id: restoreDialog
        objectName: "restoreDialog"
        title: qsTr("Restore to original location?")
        message: browser.restoreMessage
        confirmText: qsTr("Restore")
        onConfirmed: {
            browser.restoreSelected()
            browser.confirmRestore = false
        }
        onClosed: browser.confirmRestore = false
    }
    AlertDialog {
        id: deleteDialog
        objectName: "deleteDialog"
        title: qsTr("Delete permanently?")
        message: browser.deleteMessage
        confirmText: qsTr("Delete")
        destructive: true
        onConfirmed: {
            browser.deleteSelected()
            browser.confirmDelete = false
        }
        onClosed: browser.confirmDelete = false
    }
    AboutSheet {
        id: aboutSheet
        browser: browser
    }
    PasswordSheet {
        id: passwordSheet
        browser: browser
        vault: root.vault
    }

    FocusReturn {
        screen: root
        fallback: itemTable.table
    }

    // The dialogs follow the screen's state: set opens, cleared closes.
    Connections {
        target: browser
        function onRenameTargetChanged() {
            if (browser.renameTarget.toString() !== "")
                renameDialog.open()
            else
                renameDialog.close()
        }
        function onConfirmRestoreChanged() {
            if (browser.confirmRestore)
                restoreDialog.open()
            else
                restoreDialog.close()
        }
        function onConfirmDeleteChanged() {
            if (browser.confirmDelete)
                deleteDialog.open()
            else
                deleteDialog.close()
        }
        function onShowAboutChanged() {
            if (browser.showAbout)
                aboutSheet.open()
            else
                aboutSheet.close()
        }
        function onShowPasswordChangeChanged() {
            if (browser.showPasswordChange)
                passwordSheet.open()
            else
                passwordSheet.close()
        }
    }
}
