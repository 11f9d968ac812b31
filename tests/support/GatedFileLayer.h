#pragma once

#include "platform/FileLayer.h"

#include <QSemaphore>

#include <utility>

// The real file layer, except that a copy or a removal holds at its first report of work done
// until the test opens the gate (or the engine asks it to stop), so that a test can act while
// a move or a deletion is under way at a moment it knows, without timing.
class GatedFileLayer : public platform::FileLayer {
public:
    QSemaphore reachedGate; // released once work is held
    QSemaphore opened;      // release once to let it go on

    platform::FileError copy(const std::string& from, const std::string& to,
                             const platform::TreeSurvey& survey,
                             const platform::CopyObserver& observer) override {
        return FileLayer::copy(from, to, survey, held(observer));
    }
    platform::FileError erase(const std::string& path, const platform::CopyObserver& observer) override {
        return FileLayer::erase(path, observer ? held(observer) : observer);
    }

private:
    platform::CopyObserver held(const platform::CopyObserver& observer) {
        return [this, observer, first = true](std::int64_t bytes, std::int64_t entries) mutable {
            if ((bytes > 0 || entries > 0) && std::exchange(first, false)) {
                reachedGate.release();
                while (!opened.tryAcquire(1, 5)) {
                    if (!observer(bytes, entries))
                        return false;
                }
            }
            return observer(bytes, entries);
        };
    }
};
