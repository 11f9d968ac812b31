#include "RuntimeFolder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

std::string trimTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return std::string(path);
}

std::string chooseFolder(uid_t uid) {
    const std::string uidText = std::to_string(uid);
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime && runtime[0] == '/')
        return trimTrailingSlashes(runtime) + "/morvanta";
    const std::string userRun = "/run/user/" + uidText;
    struct stat info {};
    if (::lstat(userRun.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == uid)
        return userRun + "/morvanta";
    const char* tmp = std::getenv("TMPDIR");
    return trimTrailingSlashes(tmp && tmp[0] == '/' ? tmp : "/tmp") + "/morvanta-" + uidText;
}

} // namespace

std::string privateRuntimeFolder(std::string& error) {
    const uid_t uid = ::getuid();
    const std::string folder = chooseFolder(uid);
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        error = "cannot create the folder " + folder + ": " + std::strerror(errno);
        return {};
    }
    struct stat info {};
    if (::lstat(folder.c_str(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != uid) {
        error = "the folder " + folder + " is not a folder of this user";
        return {};
    }
    if ((info.st_mode & 077) != 0 && ::chmod(folder.c_str(), 0700) != 0) {
        error = "cannot make the folder " + folder + " private: " + std::strerror(errno);
        return {};
    }
    return folder;
}

} // namespace platform
