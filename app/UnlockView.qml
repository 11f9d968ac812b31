import QtQuick
import Morvanta
import Morvanta.LockScreens

// The lock screen the disguise calls for, loaded from its file when it is shown, so that
// the other one is not read. A change of disguise swaps it at once and drops whatever was
// typed into the one before.
Item {
    id: root

    required property VaultManager vault
    property string disguiseRaw: "none"

    function showLockScreen() {
        const screens = "qrc:/qt/qml/Morvanta/LockScreens/"
        if (chooser.lockScreen === UnlockChooser.MathQuiz)
            loader.setSource(screens + "MathQuizUnlockView.qml", {vault: root.vault})
        else
            loader.setSource(screens + "StandardUnlockView.qml",
                             {vault: root.vault,
                              stealth: chooser.lockScreen === UnlockChooser.Neutral})
    }

    UnlockChooser {
        id: chooser
        disguiseRaw: root.disguiseRaw
        onLockScreenChanged: {
            if (loader.completed)
                root.showLockScreen()
        }
    }

    Loader {
        id: loader
        objectName: "lockScreenLoader"
        anchors.fill: parent
        property bool completed: false
        Component.onCompleted: {
            completed = true
            root.showLockScreen()
        }
    }
}
