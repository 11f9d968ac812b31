#include "ToolSteps.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace hdiutil {

namespace {

std::string lastLine(std::string_view text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' '))
        text.remove_suffix(1);
    const std::size_t start = text.rfind('\n');
    return std::string(start == std::string_view::npos ? text : text.substr(start + 1));
}

} // namespace

std::string findProgram(const char* name) {
    for (const char* dir : {"/usr/bin/", "/usr/local/bin/", "/bin/"}) {
        const std::string path = std::string(dir) + name;
        if (::access(path.c_str(), X_OK) == 0)
            return path;
    }
    throw Failure{std::string(name) + " is not installed"};
}

std::string reasonOf(const platform::ProcessResult& run, const std::string& what) {
    const std::string line = lastLine(run.err.empty() ? run.out : run.err);
    if (!line.empty())
        return line;
    return what + " exited with status " + std::to_string(run.status);
}

std::string absolutePath(const std::string& path) {
    std::error_code ec;
    const fs::path absolute = fs::absolute(path, ec);
    std::string text = (ec ? fs::path(path) : absolute).lexically_normal().string();
    while (text.size() > 1 && text.back() == '/')
        text.pop_back();
    return text;
}

bool isDirectory(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool exists(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0;
}

bool isEmptyDirectory(const std::string& path) {
    DIR* dir = ::opendir(path.c_str());
    if (!dir)
        return false;
    bool empty = true;
    while (const dirent* entry = ::readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            empty = false;
            break;
        }
    }
    ::closedir(dir);
    return empty;
}

std::string canonicalImage(const std::string& target) {
    const std::string image = absolutePath(target);
    if (!isDirectory(image) || !exists(image + "/" + kConfigFile))
        throw Failure{"not a recognized disk image: " + image};
    char resolved[PATH_MAX];
    if (!::realpath(image.c_str(), resolved))
        throw Failure{image + ": " + std::strerror(errno)};
    return resolved;
}

Secret readPassword(int stdinFd) {
    Secret password = readAllSecret(stdinFd);
    if (const std::string problem = passwordProblem(password.bytes()); !problem.empty())
        throw Failure{problem};
    return password;
}

TemporaryFile::~TemporaryFile() {
    if (!m_path.empty())
        ::unlink(m_path.c_str());
}

} // namespace hdiutil
