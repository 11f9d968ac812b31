#pragma once

#include <QObject>

#include <functional>

namespace platform {

// Turns SIGTERM, SIGINT and SIGHUP (logout, `kill`, Ctrl+C in a terminal) into an orderly
// quit of the application, and runs `lock` on every way out: those signals, the session
// ending, the last window closing, a quit from the menu.
void lockOnTheWayOut(std::function<void()> lock);

} // namespace platform
