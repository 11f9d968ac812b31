import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Morvanta.LockScreens
import Morvanta.Browser

// A small modal question over the browser: a title, a message, Cancel and one action, which
// may be destructive. What the action does is the caller's (`confirmed`); Cancel, Escape and
// the action all close it.
ModalDialog {
    id: dialog

    property string message
    property string confirmText
    property bool destructive: false
    property bool confirmEnabled: true
    default property alias extra: extraColumn.data
    // Where the keyboard starts once it opens: Cancel, which is always safe.
    property Item initialFocus: cancelButton
    signal confirmed

    padding: 22
    topPadding: 8
    bottomPadding: 18
    onOpened: initialFocus.forceActiveFocus(Qt.TabFocusReason)

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
