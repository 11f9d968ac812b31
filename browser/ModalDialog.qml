import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T

// The look and manner the browser's dialogs share: centred over a dimmed window, modal,
// closed with Escape, and known to screen readers by its title.
Dialog {
    id: dialog

    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: 420
    modal: true
    focus: true
    closePolicy: Popup.CloseOnEscape
    enter: null
    exit: null
    // Qt gives the dialog's own layer the dialog role, but a name only when a screen reader
    // ran before it was made: it takes the title here, whenever one starts.
    Component.onCompleted: background.parent.Accessible.name = Qt.binding(() => dialog.title)

    T.Overlay.modal: Rectangle {
        color: Qt.rgba(0.01, 0.01, 0.04, 0.55)
    }
    background: Rectangle {
        radius: 14
        color: "#1c1932"
        border.width: 1
        border.color: Qt.rgba(1, 1, 1, 0.13)
    }
}
