import QtQuick
import Morvanta.LockScreens

// The application's one window: a plain Qt Quick window, so that the first frame loads no
// control library; the open vault's screens bring theirs when they are first shown.
Window {
    id: window

    required property VaultManager vault
    required property Settings settings
    required property QtObject panels
    required property QtObject workspace

    width: 600
    height: 600
    minimumWidth: 520
    minimumHeight: 420
    visible: true
    // The disguise's name from the first frame on; the router keeps it in step later.
    title: Qt.application.displayName
    color: "#07061a"

    RootView {
        id: rootView
        objectName: "rootView"
        anchors.fill: parent
        vault: window.vault
        settings: window.settings
        panels: window.panels
        workspace: window.workspace
    }

    onClosing: rootView.contentDisappearing()
}
