#pragma once

class QQuickWindow;

// Return and Enter press the focused button of the open vault's screens and dialogs, as
// Space does, and as GNOME's and KDE's dialogs and the first screens' own buttons do. Qt
// Quick Controls leave those keys to the platform theme, and most themes give buttons Space
// alone.
void letReturnPressButtons(QQuickWindow* window);
