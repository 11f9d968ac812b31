#include "FileLayer.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace platform {

FileError FileLayer::copyTree(const std::string& from, const std::string& to) {
    return platform::copyTree(from, to);
}

FileError FileLayer::removeTree(const std::string& path) { return platform::removeTree(path); }

FileError FileLayer::flush(const std::string& path) {
    // The folder holding `path` is on the same file system and exists whether or not `path`
    // is a folder itself.
    std::string folder = std::filesystem::path(path).parent_path().string();
    const int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return std::string("Couldn\u2019t flush ") + folder + ": " + std::strerror(errno) + ".";
    const int result = ::syncfs(fd);
    const int error = errno;
    ::close(fd);
    if (result != 0)
        return std::string("Couldn\u2019t flush ") + folder + ": " + std::strerror(error) + ".";
    return std::nullopt;
}

FileError FileLayer::moveItem(const std::string& from, const std::string& to) {
    if (existsNoFollow(to))
        return failureToMove(from, EEXIST);
    switch (renameWithinFileSystem(from, to)) {
    case RenameResult::Renamed:
        return flush(to);
    case RenameResult::Failed:
        return failureToMove(from, errno);
    case RenameResult::OtherFileSystem:
        break;
    }
    if (FileError error = copyTree(from, to)) {
        removeTree(to);
        return error;
    }
    if (FileError error = flush(to)) {
        removeTree(to);
        return error;
    }
    return removeTree(from);
}

} // namespace platform
