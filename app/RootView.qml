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

    // Each screen is loaded from its file when it is shown, not named here: the first frame
    // waits only for the screen it shows, and the lock screen for none of the open vault's
    // parts nor the controls they are built of.
    readonly property string screens: "qrc:/qt/qml/Morvanta/"
    property Component preloaded

    function contentDisappearing() {
        router.contentDisappearing()
    }

    // Reads the open vault's screens in the background, so that the first unlock shows them
    // without reading them then.
    function preloadOpenVault() {
        preloaded = Qt.createComponent(screens + "Browser/VaultView.qml", Component.Asynchronous)
    }

    function showScreen() {
        const disguise = Qt.binding(() => root.settings.disguiseMode)
        switch (router.screen) {
        case RootRouter.Welcome:
            loader.setSource(screens + "LockScreens/WelcomeView.qml")
            break
        case RootRouter.Setup:
            loader.setSource(screens + "LockScreens/SetupView.qml",
                             {vault: root.vault, disguiseRaw: disguise})
            break
        case RootRouter.Unlock:
            loader.setSource(screens + "UnlockView.qml", {vault: root.vault, disguiseRaw: disguise})
            break
        default:
            loader.setSource(screens + "Browser/VaultView.qml",
                             {vault: root.vault, settings: root.settings, panels: root.panels,
                              workspace: root.workspace})
        }
    }

    RootRouter {
        id: router
        vault: root.vault
        disguiseRaw: root.settings.disguiseMode
        onScreenChanged: {
            if (loader.completed)
                root.showScreen()
        }
    }

    Loader {
        id: loader
        objectName: "screenLoader"
        anchors.fill: parent
        property bool completed: false
        Component.onCompleted: {
            completed = true
            root.showScreen()
        }
    }

    Connections {
        target: loader.item
        ignoreUnknownSignals: true
        // The welcome pages' last button.
        function onContinued() {
            router.hasSeenWelcome = true
        }
    }
}
