#pragma once

class QIcon;
class QString;

// Puts a name, a desktop entry (the Wayland app id, the X11 window class's instance) and an
// icon on the application and every window it has: the window's own identity, and the same
// on the file panel program's dialog.
void wearIdentity(const QString& name, const QString& desktopFileName, const QIcon& icon);
