pragma Singleton
import QtQuick
import Morvanta.LockScreens

// The shared look of the lock and first-run screens: accents and the backgrounds, each
// built once and shared by every screen that stands on it.
QtObject {
    readonly property color gold: Qt.rgba(0.98, 0.85, 0.55, 1)
    readonly property color inkOnGold: Qt.rgba(0.05, 0.04, 0.12, 1)
    readonly property color disguisedAccent: Qt.rgba(1, 1, 1, 0.85)

    readonly property color text: "#f3f1fa"
    readonly property color secondaryText: Qt.rgba(1, 1, 1, 0.64)
    readonly property color faintText: Qt.rgba(1, 1, 1, 0.45)
    readonly property color fieldFill: Qt.rgba(1, 1, 1, 0.07)
    readonly property color fieldBorder: Qt.rgba(1, 1, 1, 0.14)
    readonly property color cardFill: Qt.rgba(1, 1, 1, 0.05)
    readonly property color cardBorder: Qt.rgba(1, 1, 1, 0.09)
    readonly property color warning: Qt.rgba(1.0, 0.45, 0.45, 1)
    readonly property color caution: Qt.rgba(0.98, 0.75, 0.35, 1)
    readonly property color success: Qt.rgba(0.55, 0.95, 0.70, 1)

    readonly property Gradient brandedBackground: Gradient {
        GradientStop { position: 0; color: Qt.rgba(0.10, 0.08, 0.24, 1) }
        GradientStop { position: 1; color: Qt.rgba(0.03, 0.02, 0.08, 1) }
    }
    readonly property Gradient stealthBackground: Gradient {
        GradientStop { position: 0; color: Qt.rgba(0.13, 0.13, 0.14, 1) }
        GradientStop { position: 1; color: Qt.rgba(0.07, 0.07, 0.08, 1) }
    }
    // Flat on purpose: the quiz should look like any ordinary utility window.
    readonly property Gradient mathBackground: Gradient {
        GradientStop { position: 0; color: palette.window }
        GradientStop { position: 1; color: palette.window }
    }
    readonly property Gradient setupBackground: brandedBackground
    readonly property Gradient setupStealthBackground: stealthBackground
    readonly property Gradient backgroundGradient: brandedBackground

    readonly property SystemPalette palette: SystemPalette {}
}
