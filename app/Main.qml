import QtQuick
import QtQuick.Controls.Basic
import Morvanta.LockScreens

// The application's one window.
ApplicationWindow {
    id: window

    required property VaultManager vault
    required property Settings settings

    width: 600
    height: 600
    minimumWidth: 520
    minimumHeight: 420
    visible: true
    title: "Morvanta"
    color: "#07061a"

    RootView {
        id: rootView
        objectName: "rootView"
        anchors.fill: parent
        vault: window.vault
        settings: window.settings
    }

    onClosing: rootView.contentDisappearing()
}
