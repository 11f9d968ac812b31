#pragma once

// The real file layer with a test's hands on it: one that writes every call down, and one that
// holds the work at a moment the test knows.

#include "platform/FileLayer.h"

#include <QSemaphore>
#include <QString>
#include <QStringList>

#include <functional>
#include <utility>

// The real file layer, with every call written down first ("survey P", "copy A -> B",
// "flush P", "rename A -> B", "remove P", "erase P"), and hooks that run before and after each.
class RecordingFileLayer : public platform::FileLayer {
public:
    QStringList calls;
    std::function<void(const QString& call)> beforeEach, afterEach;

    platform::FileError survey(const std::string& path, platform::TreeSurvey& survey) override {
        return recorded("survey " + path, [&] { return FileLayer::survey(path, survey); });
    }
    platform::FileError copy(const std::string& from, const std::string& to,
                             const platform::TreeSurvey& survey,
                             const platform::CopyObserver& observer) override {
        return recorded("copy " + from + " -> " + to,
                        [&] { return FileLayer::copy(from, to, survey, observer); });
    }
    platform::FileError flush(const std::string& path) override {
        return recorded("flush " + path, [&] { return FileLayer::flush(path); });
    }
    platform::FileError rename(const std::string& from, const std::string& to) override {
        return recorded("rename " + from + " -> " + to, [&] { return FileLayer::rename(from, to); });
    }
    platform::FileError remove(const std::string& root, const platform::TreeSurvey& survey,
                               bool makeWritable) override {
        return recorded("remove " + root, [&] { return FileLayer::remove(root, survey, makeWritable); });
    }
    platform::FileError erase(const std::string& path, const platform::CopyObserver& observer) override {
        return recorded("erase " + path, [&] { return FileLayer::erase(path, observer); });
    }

private:
    template <typename Call>
    platform::FileError recorded(const std::string& call, Call carryOut) {
        const QString text = calls.emplace_back(QString::fromStdString(call));
        if (beforeEach)
            beforeEach(text);
        platform::FileError result = carryOut();
        if (afterEach)
            afterEach(text);
        return result;
    }
};

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
