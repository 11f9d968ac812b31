import QtQuick
import Morvanta
import Morvanta.LockScreens

// The window's content: welcome pages, setup, lock screen or the open vault, as the
// engine's state and the disguise say.
Item {
    id: root

    required property VaultManager vault
    required property Settings settings
    required property QtObject panels
    required property QtObject workspace

    readonly property RootRouter router: router

    // The open vault's screens are loaded from their file when first needed, not named here:
    // the lock screen's first frame waits for none of their parts.
    readonly property url openVaultScreen: "qrc:/qt/qml/Morvanta/Browser/VaultView.qml"
    property Component preloaded

    function contentDisappearing() {
        router.contentDisappearing()
    }

    // Reads the open vault's screens in the background, so that the first unlock shows them
    // without reading them then.
    function preloadOpenVault() {
        preloaded = Qt.createComponent(openVaultScreen, Component.Asynchronous)
    }

    function showScreen() {
        switch (router.screen) {
        case RootRouter.Welcome:
            loader.sourceComponent = welcome
            break
        case RootRouter.Setup:
            loader.sourceComponent = setup
            break
        case RootRouter.Unlock:
            loader.sourceComponent = unlock
            break
        default:
            loader.setSource(openVaultScreen, {vault: root.vault, settings: root.settings,
                                               panels: root.panels, workspace: root.workspace})
        }
    }

    RootRouter {
        id: router
        vault: root.vault
        disguiseRaw: root.settings.disguiseMode
        onScreenChanged: root.showScreen()
    }

    Loader {
        id: loader
        objectName: "screenLoader"
        anchors.fill: parent
        Component.onCompleted: root.showScreen()
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
}
