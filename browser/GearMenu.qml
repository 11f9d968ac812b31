import QtQuick
import QtQuick.Controls.Basic
import Morvanta.LockScreens
import Morvanta.Browser

// The settings menu under the gear: backup, the password, the auto-lock and the disguise.
BrowserMenu {
    id: gearMenu

    required property VaultBrowser browser

    objectName: "gearMenu"

    BrowserMenuItem {
        objectName: "gear.backup"
        text: qsTr("Back Up Vault\u2026")
        symbol: "externaldrive.fill.badge.checkmark"
        onTriggered: gearMenu.browser.backupVault()
    }
    BrowserMenuItem {
        objectName: "gear.changePassword"
        text: qsTr("Change Password...")
        symbol: "key.fill"
        onTriggered: gearMenu.browser.showPasswordChange = true
    }
    MenuDivider {}
    MenuSectionTitle {
        text: qsTr("Auto-lock")
    }
    BrowserMenuItem {
        objectName: "gear.idle1"
        choice: true
        current: gearMenu.browser.idleMinutes === 1
        text: qsTr("1 minute")
        onTriggered: gearMenu.browser.setIdle(1)
    }
    BrowserMenuItem {
        objectName: "gear.idle5"
        choice: true
        current: gearMenu.browser.idleMinutes === 5
        text: qsTr("5 minutes")
        onTriggered: gearMenu.browser.setIdle(5)
    }
    BrowserMenuItem {
        objectName: "gear.idle15"
        choice: true
        current: gearMenu.browser.idleMinutes === 15
        text: qsTr("15 minutes")
        onTriggered: gearMenu.browser.setIdle(15)
    }
    BrowserMenuItem {
        objectName: "gear.idleNever"
        choice: true
        current: gearMenu.browser.idleMinutes === 0
        text: qsTr("Never")
        onTriggered: gearMenu.browser.setIdle(0)
    }
    MenuDivider {}
    MenuSectionTitle {
        text: qsTr("Disguise")
    }
    BrowserMenuItem {
        objectName: "gear.disguise.none"
        text: gearMenu.browser.disguiseChoices[0].label
        choice: true
        showsCheckmark: gearMenu.browser.disguiseChoices[0].checked
        onTriggered: gearMenu.browser.chooseDisguise(gearMenu.browser.disguiseChoices[0].raw)
    }
    BrowserMenuItem {
        objectName: "gear.disguise.neutral"
        text: gearMenu.browser.disguiseChoices[1].label
        choice: true
        showsCheckmark: gearMenu.browser.disguiseChoices[1].checked
        onTriggered: gearMenu.browser.chooseDisguise(gearMenu.browser.disguiseChoices[1].raw)
    }
    BrowserMenuItem {
        objectName: "gear.disguise.math"
        text: gearMenu.browser.disguiseChoices[2].label
        choice: true
        showsCheckmark: gearMenu.browser.disguiseChoices[2].checked
        onTriggered: gearMenu.browser.chooseDisguise(gearMenu.browser.disguiseChoices[2].raw)
    }
}
