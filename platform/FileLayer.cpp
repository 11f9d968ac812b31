#include "FileLayer.h"
#include "SystemCalls.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace platform {

FileError FileLayer::survey(const std::string& path, TreeSurvey& survey) {
    return surveyTree(path, survey);
}

FileError FileLayer::copy(const std::string& from, const std::string& to, const TreeSurvey& survey,
                          const CopyObserver& observer) {
    return copySurveyed(from, to, survey, observer);
}

FileError FileLayer::flush(const std::string& path) {
    // The folder holding `path` is on the same file system and exists whether or not `path`
    // is a folder itself.
    std::string folder = std::filesystem::path(path).parent_path().string();
    const int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return std::string("Couldn\u2019t flush ") + folder + ": " + std::strerror(errno) + ".";
    const int result = sys::syncfs(fd);
    const int error = errno;
    ::close(fd);
    if (result != 0)
        return std::string("Couldn\u2019t flush ") + folder + ": " + std::strerror(error) + ".";
    return std::nullopt;
}

FileError FileLayer::rename(const std::string& from, const std::string& to) {
    if (existsNoFollow(to))
        return failureToMove(from, EEXIST);
    if (renameWithinFileSystem(from, to) != RenameResult::Renamed)
        return failureToMove(from, errno);
    return std::nullopt;
}

FileError FileLayer::remove(const std::string& root, const TreeSurvey& survey, bool makeWritable) {
    return removeSurveyed(root, survey, makeWritable);
}

FileError FileLayer::erase(const std::string& path, const CopyObserver& observer) {
    return removeTree(path, observer);
}

} // namespace platform
