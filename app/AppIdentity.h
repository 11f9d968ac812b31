#pragma once

#include <QString>

namespace platform {
class Settings;
}

// What the application calls itself to the desktop: the name and icon a taskbar, the window
// switcher and a screen reader show. Under a disguise it is the disguise's, never Morvanta's.
struct AppIdentity {
    QString name;
    QString description;
    // The desktop entry it claims (the Wayland app id, the X11 window class's instance).
    QString desktopFileName;
    QString iconPath;
};

AppIdentity appIdentityFor(const QString& disguiseRaw);

// Puts the identity on the application and every window it has.
void applyAppIdentity(const AppIdentity& identity);

// Applies the stored disguise's identity now, which must be before the first window exists
// (a window keeps its X11 class for life), and again whenever the disguise changes.
void followDisguise(platform::Settings& settings);
