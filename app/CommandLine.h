#pragma once

#include <QString>

class VaultManager;

// `morvanta` with any argument is a command-line request that never opens a window:
// --lock, --help, --version. Gives the process's exit status.
int runCommandLine(int argc, char* argv[]);

// The running instance's answer to --lock: locks, and gives the reason it failed, or
// nothing when the vault is locked now, also when it was locked already.
QString lockForCommandLine(VaultManager& vault);
