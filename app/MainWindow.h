#pragma once

class QQmlApplicationEngine;
class QQuickWindow;
class VaultManager;

namespace platform {
class Panels;
class Settings;
class Workspace;
} // namespace platform

// Loads the application's window into `engine`, over the vault and the desktop's services.
// The palette, the screen reader's interfaces and the stored disguise are in place before
// the window exists, so that its first frame already wears them. Null if it did not load.
QQuickWindow* loadMainWindow(QQmlApplicationEngine& engine, VaultManager& vault,
                             platform::Settings& settings, platform::Panels& panels,
                             platform::Workspace& workspace);
