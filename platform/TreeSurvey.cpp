// Surveying an item before it moves: every entry as it is now, and the refusals that keep a
// move from starting at all.

#include "TreeCopy.h"

#include "FileSupport.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace platform {

bool TreeEntry::isFolder() const { return S_ISDIR(mode); }

bool TreeEntry::sameAs(const TreeEntry& other) const {
    return device == other.device && inode == other.inode && (mode & S_IFMT) == (other.mode & S_IFMT) &&
           (isFolder() || (size == other.size && modified.tv_sec == other.modified.tv_sec &&
                           modified.tv_nsec == other.modified.tv_nsec));
}

namespace {

struct Looked {
    TreeEntry entry;
    bool mountRoot = false;
    bool locked = false; // immutable or append-only
};

bool look(const std::string& path, Looked& looked) {
    struct statx info {};
    if (::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &info) != 0)
        return false;
    TreeEntry& e = looked.entry;
    e.device = makedev(info.stx_dev_major, info.stx_dev_minor);
    e.inode = info.stx_ino;
    e.size = std::int64_t(info.stx_size);
    e.modified = {info.stx_mtime.tv_sec, info.stx_mtime.tv_nsec};
    e.mode = info.stx_mode;
    e.links = info.stx_nlink;
    looked.mountRoot = (info.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) &&
                       (info.stx_attributes & STATX_ATTR_MOUNT_ROOT);
    looked.locked = info.stx_attributes & (STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND);
    return true;
}

bool readNames(const std::string& folder, std::vector<std::string>& names) {
    DIR* dir = ::opendir(folder.c_str());
    if (!dir)
        return false;
    errno = 0;
    while (const dirent* entry = ::readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
            names.emplace_back(entry->d_name);
    }
    const int error = errno;
    ::closedir(dir);
    errno = error;
    std::sort(names.begin(), names.end());
    return error == 0;
}

std::string refusal(const std::string& root, const std::string& relative, const char* what) {
    const std::string item = quoted(fileName(root));
    if (relative.empty())
        return item + " is " + what;
    return item + " can\u2019t be moved: " + quoted(relative) + " inside it is " + what;
}

} // namespace

FileError surveyTree(const std::string& path, TreeSurvey& survey) {
    survey = {};
    std::vector<std::string> pending{std::string()};
    std::uint64_t rootDevice = 0;
    while (!pending.empty()) {
        const std::string relative = std::move(pending.back());
        pending.pop_back();
        const std::string full = joined(path, relative);
        Looked looked;
        if (!look(full, looked))
            return failure("read", full, errno);
        if (relative.empty())
            rootDevice = looked.entry.device;
        const mode_t type = looked.entry.mode & S_IFMT;
        if (type != S_IFREG && type != S_IFDIR && type != S_IFLNK) {
            return quoted(fileName(full)) +
                   " is a device, pipe or socket, which can\u2019t be kept in the vault.";
        }
        if (looked.mountRoot || looked.entry.device != rootDevice)
            return refusal(path, relative, "a mounted drive or share. Unmount it first, then try again.");
        if (looked.locked) {
            return refusal(path, relative,
                           "locked against changes (immutable or append-only), so it could "
                           "never be removed from where it is.");
        }
        if (type == S_IFREG)
            survey.totalBytes += looked.entry.size;
        looked.entry.relative = relative;
        survey.entries.push_back(looked.entry);
        if (type != S_IFDIR)
            continue;
        std::vector<std::string> names;
        if (!readNames(full, names))
            return failure("read", full, errno);
        // Reversed onto the stack, so that the walk visits names in order.
        for (auto name = names.rbegin(); name != names.rend(); ++name)
            pending.push_back(relative.empty() ? *name : relative + "/" + *name);
    }
    return std::nullopt;
}

} // namespace platform
