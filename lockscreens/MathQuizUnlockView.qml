import QtQuick
import QtQuick.Layouts
import Morvanta.LockScreens

// A harmless-looking arithmetic drill in the system's own colours. Its answer box is the
// password entry; nothing on it ever speaks of a password.
Item {
    id: root

    required property VaultManager vault

    readonly property MathQuiz quiz: quiz

    implicitWidth: 520
    implicitHeight: 420

    SystemPalette {
        id: system
    }

    MathQuiz {
        id: quiz
        vault: root.vault
        Component.onCompleted: regenerate()
        onGraded: answerField.forceActiveFocus()
    }

    Rectangle {
        anchors.fill: parent
        gradient: Theme.mathBackground
    }

    CenteredColumn {
        anchors.fill: parent
        maxContentWidth: 320
        spacing: 28

        SpokenText {
            objectName: "title"
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            text: qsTr("Quick Math")
            color: system.windowText
            font.pixelSize: 22
            font.weight: Font.DemiBold
        }
        SpokenText {
            objectName: "question"
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            text: quiz.question
            color: system.windowText
            font.family: "monospace"
            font.pixelSize: 40
        }
        AnswerField {
            id: answerField
            objectName: "answerField"
            Layout.fillWidth: true
            text: quiz.input
            onTextChanged: quiz.input = text
            onAccepted: quiz.submit()
        }
        RowLayout {
            id: messageLine
            objectName: "messageLine"
            readonly property color tint: quiz.correct ? "#4cc47a" : "#f0605a"
            Layout.alignment: Qt.AlignHCenter
            visible: quiz.hasMessage
            spacing: 8
            SymbolIcon {
                Layout.preferredWidth: 18
                Layout.preferredHeight: 18
                name: quiz.hasMessage ? quiz.messageSymbol : "checkmark.circle.fill"
                color: messageLine.tint
            }
            SpokenText {
                notice: true
                text: quiz.messageText
                color: messageLine.tint
                font.pixelSize: 16
                font.weight: Font.DemiBold
            }
        }
        PushButton {
            id: submitButton
            objectName: "submitButton"
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: 160
            implicitHeight: 40
            enabled: !quiz.busy
            text: quiz.buttonLabel
            font.pixelSize: 15
            onClicked: quiz.submit()

            Rectangle {
                anchors.fill: parent
                radius: 10
                color: submitButton.down ? Qt.darker(system.highlight, 1.15) : system.highlight
                opacity: submitButton.enabled ? 1 : 0.6
            }
            Row {
                anchors.centerIn: parent
                spacing: 8
                Spinner {
                    anchors.verticalCenter: parent.verticalCenter
                    visible: quiz.busy
                    width: 15
                    height: 15
                    color: system.highlightedText
                }
                Text {
                    anchors.verticalCenter: parent.verticalCenter
                    text: submitButton.text
                    font: submitButton.font
                    color: system.highlightedText
                }
            }
            FocusRing {
                accent: system.highlight
                controlRadius: 10
            }
        }
    }

    // Focus once the screen has settled, as a calculator would have it.
    Timer {
        interval: 150
        running: true
        onTriggered: answerField.forceActiveFocus()
    }
}
