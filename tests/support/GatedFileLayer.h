#pragma once

#include "platform/FileLayer.h"

#include <QSemaphore>

#include <utility>

// The real file layer, except that a copy holds after its first chunk until the test opens
// the gate (or the engine asks it to stop), so that a test can act while a move is under
// way at a moment it knows, without timing.
class GatedFileLayer : public platform::FileLayer {
public:
    QSemaphore reachedGate; // released once a copy is held
    QSemaphore opened;      // release once to let it go on

    platform::FileError copy(const std::string& from, const std::string& to,
                             const platform::TreeSurvey& survey,
                             const platform::CopyObserver& observer) override {
        bool first = true;
        return FileLayer::copy(from, to, survey, [&](std::int64_t bytes, std::int64_t entries) {
            if (std::exchange(first, false)) {
                reachedGate.release();
                while (!opened.tryAcquire(1, 5)) {
                    if (!observer(bytes, entries))
                        return false;
                }
            }
            return observer(bytes, entries);
        });
    }
};
