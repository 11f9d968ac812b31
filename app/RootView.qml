import QtQuick
import Morvanta
import Morvanta.LockScreens
import Morvanta.Browser

// The window's content: welcome pages, setup, lock screen or the open vault, as the
// engine's state and the disguise say.
Item {
    id: root

    required property VaultManager vault
    required property Settings settings
    required property Panels panels
    required property Workspace workspace

    readonly property RootRouter router: router

    function contentDisappearing() {
        router.contentDisappearing()
    }

    RootRouter {
        id: router
        vault: root.vault
        disguiseRaw: root.settings.disguiseMode
    }

    Loader {
        id: loader
        objectName: "screenLoader"
        anchors.fill: parent
        sourceComponent: {
            switch (router.screen) {
            case RootRouter.Welcome:
                return welcome
            case RootRouter.Setup:
                return setup
            case RootRouter.Unlock:
                return unlock
            default:
                return unlocked
            }
        }
    }

    Component {
        id: welcome
        WelcomeView {
            ctaLabel: qsTr("Get Started")
            onContinued: router.hasSeenWelcome = true
        }
    }
    Component {
        id: setup
        SetupView {
            vault: root.vault
            disguiseRaw: root.settings.disguiseMode
        }
    }
    Component {
        id: unlock
        UnlockView {
            vault: root.vault
            disguiseRaw: root.settings.disguiseMode
        }
    }
    Component {
        id: unlocked
        VaultView {
            vault: root.vault
            settings: root.settings
            panels: root.panels
            workspace: root.workspace
        }
    }
}
