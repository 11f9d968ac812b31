#pragma once

#include <QString>

class VaultManager;

// `morvanta` with any argument is a command-line request that never opens a window:
// --lock, --help, --version. Without one, where no window can show, it says why. Gives the
// process's exit status.
int runCommandLine(int argc, char* argv[]);

// Whether there is a display to show the window on: a Wayland or X one, or a platform chosen
// by hand (QT_QPA_PLATFORM, such as offscreen).
bool windowCanShow();

// The running instance's answer to --lock: locks, and gives the reason it failed, or
// nothing when the vault is locked now, also when it was locked already.
QString lockForCommandLine(VaultManager& vault);
