#include "Files.h"

#include "FileSupport.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace platform {

bool existsNoFollow(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0;
}

bool isDirectoryNoFollow(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

namespace {

// May this process unlink the entry `name` (described by `entry`) from `folder`?
bool mayUnlinkFrom(const std::string& folder, const struct stat& entry) {
    struct stat info {};
    // The permissions this process works with, not those of its real user.
    if (::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0 || ::stat(folder.c_str(), &info) != 0)
        return false;
    const uid_t me = ::geteuid();
    if ((info.st_mode & S_ISVTX) && me != 0 && entry.st_uid != me && info.st_uid != me)
        return false;
    return true;
}

bool canRemoveBelow(const std::string& folder) {
    DIR* dir = ::opendir(folder.c_str());
    if (!dir)
        return false;
    bool removable = true;
    while (const dirent* entry = ::readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
            continue;
        const std::string path = folder + "/" + entry->d_name;
        struct stat info {};
        if (::lstat(path.c_str(), &info) != 0 || !mayUnlinkFrom(folder, info) ||
            (S_ISDIR(info.st_mode) && !canRemoveBelow(path))) {
            removable = false;
            break;
        }
    }
    ::closedir(dir);
    return removable;
}

} // namespace

bool canRemoveTree(const std::string& path) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0)
        return false;
    const std::string parent = std::filesystem::path(path).parent_path().string();
    if (!mayUnlinkFrom(parent.empty() ? "." : parent, info))
        return false;
    return !S_ISDIR(info.st_mode) || canRemoveBelow(path);
}

RenameResult renameWithinFileSystem(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return RenameResult::Renamed;
    // Some file systems (FUSE ones among them) do not take the flag; the caller has checked
    // that nothing is at `to`.
    if (errno == EINVAL || errno == ENOSYS) {
        if (::rename(from.c_str(), to.c_str()) == 0)
            return RenameResult::Renamed;
    }
    return errno == EXDEV ? RenameResult::OtherFileSystem : RenameResult::Failed;
}

std::string failureToMove(const std::string& from, int error) { return failure("move", from, error); }

bool isProtectedSystemPath(const std::string& path, const std::string& home) {
    // Whole trees of the system, and folders that are fine to take things from but never to
    // take away themselves.
    static const char* const trees[] = {"/usr", "/etc", "/bin", "/sbin", "/lib", "/lib32",
                                        "/lib64", "/libx32", "/boot", "/opt", "/var", "/srv",
                                        "/proc", "/sys", "/dev", "/run", "/System"};
    static const char* const folders[] = {"/", "/home", "/root", "/media", "/mnt", "/tmp"};
    for (const char* tree : trees) {
        const std::string root(tree);
        if (path == root || path.rfind(root + "/", 0) == 0)
            return true;
    }
    for (const char* folder : folders) {
        if (path == folder)
            return true;
    }
    return !home.empty() && path == home;
}

bool isMountPoint(const std::string& path) {
    struct stat self {}, parent {};
    if (::stat(path.c_str(), &self) != 0 || !S_ISDIR(self.st_mode) ||
        ::stat((path + "/..").c_str(), &parent) != 0)
        return false;
    return self.st_dev != parent.st_dev || self.st_ino == parent.st_ino;
}

std::optional<std::int64_t> entrySize(const std::string& path) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0)
        return std::nullopt;
    return std::int64_t(info.st_size);
}

std::optional<timespec> creationTime(const std::string& path) {
    struct statx info {};
    if (::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BTIME | STATX_CTIME, &info) != 0)
        return std::nullopt;
    if ((info.stx_mask & STATX_BTIME) && info.stx_btime.tv_sec != 0)
        return timespec{info.stx_btime.tv_sec, info.stx_btime.tv_nsec};
    if (info.stx_mask & STATX_CTIME)
        return timespec{info.stx_ctime.tv_sec, info.stx_ctime.tv_nsec};
    return std::nullopt;
}

} // namespace platform
