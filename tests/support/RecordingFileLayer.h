#pragma once

#include "platform/FileLayer.h"

#include <QString>
#include <QStringList>

#include <functional>

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
