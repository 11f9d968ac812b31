#pragma once

#include <QObject>

#include <functional>

// Runs `work` later on the main thread, after the window has painted once more, so that a
// busy state set just before shows while the engine blocks the thread. Dropped if `context`
// is destroyed first.
void runAfterNextFrame(QObject* context, std::function<void()> work);
