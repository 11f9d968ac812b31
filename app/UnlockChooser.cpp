#include "UnlockChooser.h"

#include "lockscreens/DisguiseMode.h"

void UnlockChooser::setDisguiseRaw(const QString& raw) {
    if (raw == m_disguiseRaw)
        return;
    m_disguiseRaw = raw;
    emit disguiseRawChanged();
}

UnlockChooser::LockScreen UnlockChooser::lockScreenFor(const QString& disguiseRaw) {
    switch (disguiseModeOrNone(disguiseRaw)) {
    case DisguiseMode::math:
        return LockScreen::MathQuiz;
    case DisguiseMode::neutral:
        return LockScreen::Neutral;
    case DisguiseMode::none:
        break;
    }
    return LockScreen::Branded;
}
