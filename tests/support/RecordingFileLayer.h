#pragma once

#include "platform/FileLayer.h"

#include <QString>
#include <QStringList>

#include <functional>

// The real file layer, with every call written down first ("copy A -> B", "flush P",
// "remove P", "move A -> B"), and hooks that run before and after each call is carried out.
class RecordingFileLayer : public platform::FileLayer {
public:
    QStringList calls;
    std::function<void(const QString& call)> beforeEach;
    std::function<void(const QString& call)> afterEach;

    platform::FileError copyTree(const std::string& from, const std::string& to) override {
        return recorded("copy " + from + " -> " + to, [&] { return FileLayer::copyTree(from, to); });
    }
    platform::FileError removeTree(const std::string& path) override {
        return recorded("remove " + path, [&] { return FileLayer::removeTree(path); });
    }
    platform::FileError flush(const std::string& path) override {
        return recorded("flush " + path, [&] { return FileLayer::flush(path); });
    }
    platform::FileError moveItem(const std::string& from, const std::string& to) override {
        return recorded("move " + from + " -> " + to, [&] { return FileLayer::moveItem(from, to); });
    }

private:
    template <typename Call>
    platform::FileError recorded(const std::string& call, Call carryOut) {
        const QString text = QString::fromStdString(call);
        calls.append(text);
        if (beforeEach)
            beforeEach(text);
        platform::FileError result = carryOut();
        if (afterEach)
            afterEach(text);
        return result;
    }
};
