import QtQuick
import Morvanta
import Morvanta.LockScreens

// The lock screen the disguise calls for. A change of disguise swaps it at once and drops
// whatever was typed into the one before.
Item {
    id: root

    required property VaultManager vault
    property string disguiseRaw: "none"

    UnlockChooser {
        id: chooser
        disguiseRaw: root.disguiseRaw
    }

    Loader {
        id: loader
        objectName: "lockScreenLoader"
        anchors.fill: parent
        sourceComponent: chooser.lockScreen === UnlockChooser.MathQuiz ? mathQuiz : standard
    }

    Component {
        id: standard
        StandardUnlockView {
            vault: root.vault
            stealth: chooser.lockScreen === UnlockChooser.Neutral
        }
    }
    Component {
        id: mathQuiz
        MathQuizUnlockView {
            vault: root.vault
        }
    }
}
