import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// A small modal question over the browser: a title, a message, Cancel and one action, which
// may be destructive. What the action does is the caller's (`confirmed`); Cancel, Escape and
// the action all close it.
Dialog {
    id: dialog

    property string message
    property string confirmText
    property bool destructive: false
    property bool confirmEnabled: true
    default property alias extra: extraColumn.data
    // Where the keyboard starts once it opens: Cancel, which is always safe.
    property Item initialFocus: cancelButton
    signal confirmed

    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: 420
    modal: true
    focus: true
    closePolicy: Popup.CloseOnEscape
    padding: 22
    topPadding: 8
    bottomPadding: 18
    enter: null
    exit: null
    onOpened: initialFocus.forceActiveFocus(Qt.TabFocusReason)

    T.Overlay.modal: Rectangle {
        color: Qt.rgba(0.01, 0.01, 0.04, 0.55)
    }

    background: Rectangle {
        radius: 14
        color: "#1c1932"
        border.width: 1
        border.color: Qt.rgba(1, 1, 1, 0.13)
    }

    header: Label {
        objectName: dialog.objectName + "Title"
        text: dialog.title
        leftPadding: 22
        rightPadding: 22
        topPadding: 20
        wrapMode: Text.Wrap
        color: Theme.text
        font.pixelSize: 16
        font.weight: Font.DemiBold
    }

    contentItem: ColumnLayout {
        spacing: 14
        // Named after its title, also for a screen reader started after it was made.
        Accessible.role: Accessible.Dialog
        Accessible.name: dialog.title

        Label {
            objectName: dialog.objectName + "Message"
            Layout.fillWidth: true
            Layout.preferredWidth: 360
            visible: text !== ""
            text: dialog.message
            wrapMode: Text.Wrap
            color: Theme.secondaryText
            font.pixelSize: 13
            lineHeight: 1.15
        }
        ColumnLayout {
            id: extraColumn
            Layout.fillWidth: true
            visible: children.length > 0
            spacing: 8
        }
    }

    footer: Item {
        implicitHeight: buttons.implicitHeight + 20

        RowLayout {
            id: buttons
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.leftMargin: 22
            anchors.rightMargin: 22
            spacing: 10

            Item {
                Layout.fillWidth: true
            }
            DialogButton {
                id: cancelButton
                objectName: dialog.objectName + "Cancel"
                text: qsTr("Cancel")
                onClicked: dialog.reject()
            }
            DialogButton {
                objectName: dialog.objectName + "Confirm"
                text: dialog.confirmText
                enabled: dialog.confirmEnabled
                prominent: true
                destructive: dialog.destructive
                onClicked: dialog.confirmed()
            }
        }
    }
}
