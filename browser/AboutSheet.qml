import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T
import Morvanta.LockScreens
import Morvanta.Browser

// The welcome pages again, over the browser, ending in "Done".
Popup {
    id: sheet

    required property VaultBrowser browser

    objectName: "aboutSheet"
    parent: T.Overlay.overlay
    anchors.centerIn: parent
    // The welcome pages' own size, as long as the window leaves room for it.
    width: Math.min(600, parent ? parent.width - 16 : 600)
    height: Math.min(600, parent ? parent.height - 16 : 600)
    padding: 0
    modal: true
    focus: true
    closePolicy: Popup.CloseOnEscape
    onClosed: browser.showAbout = false
    // Its own layer is what a screen reader announces as the dialog (see ModalDialog).
    Component.onCompleted: background.parent.Accessible.name = qsTr("About Morvanta")

    T.Overlay.modal: Rectangle {
        color: Qt.rgba(0.01, 0.01, 0.04, 0.6)
    }
    background: Rectangle {
        color: "transparent"
        border.width: 1
        border.color: Qt.rgba(1, 1, 1, 0.14)
    }
    contentItem: Loader {
        active: sheet.browser.showAbout
        sourceComponent: WelcomeView {
            objectName: "aboutPages"
            ctaLabel: qsTr("Done")
            onContinued: sheet.browser.showAbout = false
        }
    }
}
