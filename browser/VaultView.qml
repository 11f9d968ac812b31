import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// The open vault: its items as a sortable table, what can be done with them, the settings
// menu and the lock. Files dropped anywhere on it are added.
Item {
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

        // Header: the title, about, settings and the lock.
        RowLayout {
            Layout.fillWidth: true
            spacing: 10

            Label {
                objectName: "vaultTitle"
                text: "Vault"
                color: Theme.text
                font.family: "serif"
                font.pixelSize: 26
                font.bold: true
            }
            Item {
                Layout.fillWidth: true
            }
            IconButton {
                objectName: "aboutButton"
                symbol: "info.circle"
                helpText: "About Morvanta"
                onClicked: browser.showAbout = true
            }
            Button {
                id: gearButton
                objectName: "gearButton"
                implicitWidth: 32
                implicitHeight: 32
                padding: 0
                hoverEnabled: true
                onClicked: gearMenu.popup(gearButton, gearButton.width - gearMenu.width,
                                          gearButton.height + 4)
                contentItem: Item {
                    SymbolIcon {
                        anchors.centerIn: parent
                        width: 16
                        height: 16
                        name: "gearshape.fill"
                        color: gearButton.hovered ? Theme.text : Theme.secondaryText
                    }
                }
                background: Rectangle {
                    radius: 8
                    color: gearButton.down ? Qt.rgba(1, 1, 1, 0.16) : Qt.rgba(1, 1, 1, 0.08)
                    border.width: 1
                    border.color: Qt.rgba(1, 1, 1, 0.16)
                }
            }
            Button {
                id: lockButton
                objectName: "lockButton"
                property string helpText: browser.lockHelpText
                implicitHeight: 32
                leftPadding: 14
                rightPadding: 16
                hoverEnabled: true
                font.pixelSize: 13
                font.weight: Font.DemiBold
                text: "Lock"
                ToolTip.visible: hovered
                ToolTip.delay: 600
                ToolTip.text: helpText
                onClicked: browser.lock()
                contentItem: RowLayout {
                    spacing: 6
                    SymbolIcon {
                        Layout.preferredWidth: 13
                        Layout.preferredHeight: 13
                        name: "lock.fill"
                        color: Theme.inkOnGold
                    }
                    Label {
                        text: lockButton.text
                        font: lockButton.font
                        color: Theme.inkOnGold
                    }
                }
                background: Rectangle {
                    radius: height / 2
                    opacity: lockButton.down ? 0.85 : 1
                    gradient: Gradient {
                        orientation: Gradient.Horizontal
                        GradientStop { position: 0; color: Qt.rgba(1.0, 0.9, 0.62, 1) }
                        GradientStop { position: 1; color: Theme.gold }
                    }
                }
            }
        }

        // Action bar.
        RowLayout {
            Layout.fillWidth: true
            spacing: 10

            Button {
                id: addButton
                objectName: "addButton"
                implicitHeight: 32
                leftPadding: 12
                rightPadding: 14
                text: "Add to Vault"
                font.pixelSize: 13
                font.weight: Font.DemiBold
                onClicked: browser.addItem()
                contentItem: RowLayout {
                    spacing: 7
                    SymbolIcon {
                        Layout.preferredWidth: 15
                        Layout.preferredHeight: 15
                        name: "plus.circle.fill"
                        color: Theme.gold
                    }
                    Label {
                        text: addButton.text
                        font: addButton.font
                        color: Theme.gold
                    }
                }
                background: Rectangle {
                    radius: 8
                    color: Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b,
                                   addButton.down ? 0.24 : addButton.hovered ? 0.17 : 0.11)
                    border.width: 1
                    border.color: Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.38)
                }
            }
            Button {
                id: actionsButton
                objectName: "actionsButton"
                implicitHeight: 32
                leftPadding: 10
                rightPadding: 12
                enabled: browser.selection.toString() !== ""
                opacity: enabled ? 1 : 0.4
                hoverEnabled: true
                text: "Actions"
                onClicked: rowMenu.openFor(browser.selection, actionsButton, 0, actionsButton.height + 4)
                contentItem: RowLayout {
                    spacing: 6
                    SymbolIcon {
                        Layout.preferredWidth: 14
                        Layout.preferredHeight: 14
                        name: "ellipsis.circle.fill"
                        color: "white"
                    }
                    Label {
                        text: actionsButton.text
                        color: "white"
                        font.pixelSize: 13
                        font.weight: Font.Medium
                    }
                }
                background: Rectangle {
                    radius: 8
                    color: actionsButton.down ? Qt.rgba(1, 1, 1, 0.14)
                                              : actionsButton.hovered ? Qt.rgba(1, 1, 1, 0.07)
                                                                      : "transparent"
                }
            }
            Item {
                Layout.fillWidth: true
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
                onMenuRequested: function (url, x, y) {
                    rowMenu.openFor(url, itemTable, x, y)
                }
            }

            Rectangle {
                objectName: "emptyState"
                anchors.fill: parent
                visible: !itemTable.visible
                radius: 10
                color: Qt.rgba(1, 1, 1, 0.03)
                border.width: 1
                border.color: Theme.cardBorder

                ColumnLayout {
                    anchors.centerIn: parent
                    width: Math.min(parent.width - 60, 400)
                    spacing: 10

                    SymbolIcon {
                        Layout.alignment: Qt.AlignHCenter
                        Layout.preferredWidth: 54
                        Layout.preferredHeight: 54
                        Layout.bottomMargin: 4
                        name: "lock.shield"
                        color: Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.85)
                    }
                    Label {
                        Layout.fillWidth: true
                        horizontalAlignment: Text.AlignHCenter
                        text: "Vault is empty"
                        color: Theme.text
                        font.pixelSize: 20
                        font.weight: Font.DemiBold
                    }
                    Label {
                        Layout.fillWidth: true
                        horizontalAlignment: Text.AlignHCenter
                        wrapMode: Text.Wrap
                        text: "Drag files, folders, or apps into the vault, or click \"Add to Vault\" to encrypt them."
                        color: Theme.secondaryText
                        font.pixelSize: 13
                        lineHeight: 1.15
                    }
                }
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

        // Status bar.
        RowLayout {
            Layout.fillWidth: true
            spacing: 8

            StatusPill {
                objectName: "idlePill"
                symbol: "timer"
                text: browser.idleText
            }
            StatusPill {
                objectName: "countPill"
                symbol: "doc.on.doc"
                text: browser.itemCountText
            }
            SymbolIcon {
                visible: browser.mountPath !== ""
                Layout.leftMargin: 4
                Layout.preferredWidth: 10
                Layout.preferredHeight: 10
                name: "externaldrive.fill"
                color: Theme.faintText
            }
            Label {
                objectName: "mountPathLabel"
                visible: browser.mountPath !== ""
                Layout.fillWidth: true
                text: browser.mountPath
                elide: Text.ElideMiddle
                maximumLineCount: 1
                color: Theme.faintText
                font.pixelSize: 11
            }
            Item {
                visible: browser.mountPath === ""
                Layout.fillWidth: true
            }
            Spinner {
                objectName: "busyIndicator"
                visible: browser.busy
                Layout.preferredWidth: 14
                Layout.preferredHeight: 14
                color: Theme.gold
            }
        }
    }

    DropArea {
        id: dropArea
        objectName: "dropArea"
        anchors.fill: parent
        keys: ["text/uri-list"]
        onEntered: function (drag) {
            drag.accept(Qt.CopyAction)
        }
        onDropped: function (drop) {
            // Copy, not move: the vault removes each original itself once it is safely in.
            if (browser.handleDrop(drop.urls))
                drop.accept(Qt.CopyAction)
        }
    }
    Binding {
        target: browser
        property: "isDragOver"
        value: dropArea.containsDrag
    }
    Rectangle {
        objectName: "dropOverlay"
        anchors.fill: parent
        anchors.margins: 8
        visible: browser.isDragOver
        radius: 16
        color: Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.13)
        border.width: 2
        border.color: Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.75)
    }

    Shortcut {
        sequence: "Ctrl+L"
        context: Qt.WindowShortcut
        onActivated: browser.lock()
    }

    // The row menu, for the "Actions" button and for a right-click on a row alike. Its
    // entries are decided each time it opens.
    BrowserMenu {
        id: rowMenu
        objectName: "rowMenu"

        property url target

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
                onTriggered: browser.chooseRowMenuEntry(entryAction, rowMenu.target)
            }
        }
        Component {
            id: dividerEntry
            MenuDivider {}
        }
    }

    BrowserMenu {
        id: gearMenu
        objectName: "gearMenu"

        BrowserMenuItem {
            objectName: "gear.backup"
            text: "Back Up Vault\u2026"
            symbol: "externaldrive.fill.badge.checkmark"
            onTriggered: browser.backupVault()
        }
        BrowserMenuItem {
            objectName: "gear.changePassword"
            text: "Change Password..."
            symbol: "key.fill"
            onTriggered: browser.showPasswordChange = true
        }
        MenuDivider {}
        MenuSectionTitle {
            text: "Auto-lock"
        }
        BrowserMenuItem {
            objectName: "gear.idle1"
            text: "1 minute"
            onTriggered: browser.setIdle(1)
        }
        BrowserMenuItem {
            objectName: "gear.idle5"
            text: "5 minutes"
            onTriggered: browser.setIdle(5)
        }
        BrowserMenuItem {
            objectName: "gear.idle15"
            text: "15 minutes"
            onTriggered: browser.setIdle(15)
        }
        BrowserMenuItem {
            objectName: "gear.idleNever"
            text: "Never"
            onTriggered: browser.setIdle(0)
        }
        MenuDivider {}
        MenuSectionTitle {
            text: "Disguise"
        }
        BrowserMenuItem {
            objectName: "gear.disguise.none"
            text: browser.disguiseChoices[0].label
            showsCheckmark: browser.disguiseChoices[0].checked
            onTriggered: browser.chooseDisguise(browser.disguiseChoices[0].raw)
        }
        BrowserMenuItem {
            objectName: "gear.disguise.neutral"
            text: browser.disguiseChoices[1].label
            showsCheckmark: browser.disguiseChoices[1].checked
            onTriggered: browser.chooseDisguise(browser.disguiseChoices[1].raw)
        }
        BrowserMenuItem {
            objectName: "gear.disguise.math"
            text: browser.disguiseChoices[2].label
            showsCheckmark: browser.disguiseChoices[2].checked
            onTriggered: browser.chooseDisguise(browser.disguiseChoices[2].raw)
        }
    }

    AlertDialog {
        id: renameDialog
        objectName: "renameDialog"
        title: "Rename item"
        message: browser.renameMessage
        confirmText: "Rename"
        onConfirmed: browser.commitRename()
        onRejected: browser.renameTarget = ""
        onClosed: browser.renameTarget = ""
        onOpened: {
            renameField.forceActiveFocus()
            renameField.selectAll()
        }

        Label {
            text: "Name"
            color: Theme.secondaryText
            font.pixelSize: 12
            font.weight: Font.DemiBold
        }
        TextField {
            id: renameField
            objectName: "renameField"
            Layout.fillWidth: true
            implicitHeight: 36
            placeholderText: "Name"
            text: browser.renameText
            onTextChanged: browser.renameText = text
            onAccepted: browser.commitRename()
            color: Theme.text
            placeholderTextColor: Theme.faintText
            selectionColor: Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.35)
            selectedTextColor: Theme.text
            selectByMouse: true
            font.pixelSize: 14
            leftPadding: 12
            background: Rectangle {
                radius: 8
                color: Theme.fieldFill
                border.width: 1
                border.color: renameField.activeFocus ? Qt.rgba(Theme.gold.r, Theme.gold.g, Theme.gold.b, 0.7)
                                                      : Theme.fieldBorder
            }
        }
    }

    AlertDialog {
        id: restoreDialog
        objectName: "restoreDialog"
        title: "Restore to original location?"
        message: browser.restoreMessage
        confirmText: "Restore"
        onConfirmed: {
            browser.restoreSelected()
            browser.confirmRestore = false
        }
        onClosed: browser.confirmRestore = false
    }

    AlertDialog {
        id: deleteDialog
        objectName: "deleteDialog"
        title: "Delete permanently?"
        message: browser.deleteMessage
        confirmText: "Delete"
        destructive: true
        onConfirmed: {
            browser.deleteSelected()
            browser.confirmDelete = false
        }
        onClosed: browser.confirmDelete = false
    }

    Popup {
        id: aboutSheet
        objectName: "aboutSheet"
        parent: T.Overlay.overlay
        anchors.centerIn: parent
        // The welcome pages' own size, as long as the window leaves room for it.
        width: Math.min(600, root.width - 16)
        height: Math.min(600, root.height - 16)
        padding: 0
        modal: true
        focus: true
        closePolicy: Popup.CloseOnEscape
        onClosed: browser.showAbout = false

        T.Overlay.modal: Rectangle {
            color: Qt.rgba(0.01, 0.01, 0.04, 0.6)
        }
        background: Rectangle {
            color: "transparent"
            border.width: 1
            border.color: Qt.rgba(1, 1, 1, 0.14)
        }
        contentItem: Loader {
            active: browser.showAbout
            sourceComponent: WelcomeView {
                objectName: "aboutPages"
                ctaLabel: "Done"
                onContinued: browser.showAbout = false
            }
        }
    }

    Dialog {
        id: passwordSheet
        objectName: "passwordSheet"
        parent: T.Overlay.overlay
        anchors.centerIn: parent
        width: 420
        padding: 20
        modal: true
        focus: true
        closePolicy: Popup.CloseOnEscape
        enter: null
        exit: null
        onClosed: browser.showPasswordChange = false
        onOpened: passwordView.reset()

        T.Overlay.modal: Rectangle {
            color: Qt.rgba(0.01, 0.01, 0.04, 0.55)
        }
        background: Rectangle {
            radius: 14
            color: "#1c1932"
            border.width: 1
            border.color: Qt.rgba(1, 1, 1, 0.13)
        }
        contentItem: PasswordChangeView {
            id: passwordView
            vault: root.vault
            onSucceeded: browser.passwordChanged()
            onDismissed: browser.showPasswordChange = false
        }
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
