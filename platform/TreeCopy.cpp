#include "TreeCopy.h"

#include "FileSupport.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <map>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace platform {

bool TreeEntry::isFolder() const { return S_ISDIR(mode); }

bool TreeEntry::sameAs(const TreeEntry& other) const {
    return device == other.device && inode == other.inode && (mode & S_IFMT) == (other.mode & S_IFMT) &&
           (isFolder() || (size == other.size && modified.tv_sec == other.modified.tv_sec &&
                           modified.tv_nsec == other.modified.tv_nsec));
}

namespace {

std::string joined(const std::string& root, const std::string& relative) {
    return relative.empty() ? root : root + "/" + relative;
}

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

namespace {

bool isAcl(const std::string& name) { return name.rfind("system.posix_acl_", 0) == 0; }

// Extended attributes, and ACLs (which are attributes too), where the target takes them.
// ACLs go after the mode, because setting the mode rewrites the ACL's mask.
FileError copyAttributes(const std::string& from, const std::string& to, bool acls) {
    ssize_t length = ::llistxattr(from.c_str(), nullptr, 0);
    if (length <= 0)
        return std::nullopt;
    std::vector<char> names(std::size_t(length) + 1);
    length = ::llistxattr(from.c_str(), names.data(), names.size());
    if (length < 0)
        return std::nullopt;
    for (const char* name = names.data(); name < names.data() + length; name += std::strlen(name) + 1) {
        if (isAcl(name) != acls)
            continue;
        ssize_t size = ::lgetxattr(from.c_str(), name, nullptr, 0);
        std::vector<char> value(std::size_t(std::max<ssize_t>(size, 0)) + 1);
        size = ::lgetxattr(from.c_str(), name, value.data(), value.size());
        if (size < 0)
            return failure("read", from, errno);
        if (::lsetxattr(to.c_str(), name, value.data(), std::size_t(size), 0) == 0)
            continue;
        const bool userAttribute = std::strncmp(name, "user.", 5) == 0;
        if (errno == ENOTSUP || ((errno == EPERM || errno == EACCES) && !userAttribute))
            continue;
        return failure("copy", from, errno);
    }
    return std::nullopt;
}

// Mode, owner (when root may set it), attributes and times, in the order that keeps each.
FileError finish(const std::string& from, const std::string& to, const struct stat& info) {
    if (::geteuid() == 0)
        ::lchown(to.c_str(), info.st_uid, info.st_gid);
    if (S_ISLNK(info.st_mode)) {
        const timespec times[2] = {info.st_atim, info.st_mtim};
        ::utimensat(AT_FDCWD, to.c_str(), times, AT_SYMLINK_NOFOLLOW); // not every FS keeps these
        return std::nullopt;
    }
    if (FileError error = copyAttributes(from, to, false))
        return error;
    if (::chmod(to.c_str(), info.st_mode & 07777) != 0)
        return failure("copy", from, errno);
    if (FileError error = copyAttributes(from, to, true))
        return error;
    const timespec times[2] = {info.st_atim, info.st_mtim};
    if (::utimensat(AT_FDCWD, to.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
        return failure("copy", from, errno);
    return std::nullopt;
}

constexpr std::size_t kChunk = 1 << 20;
constexpr std::size_t kBlock = 4096;

bool allZero(const char* data, std::size_t size) {
    return size == 0 || (data[0] == 0 && std::memcmp(data, data + 1, size - 1) == 0);
}

// Writes the chunk's non-zero blocks at their offsets; zero blocks stay holes.
bool writeSparse(int out, const char* data, std::size_t size, off_t offset) {
    std::size_t start = 0;
    while (start < size) {
        while (start < size && allZero(data + start, std::min(kBlock, size - start)))
            start += kBlock;
        std::size_t end = start;
        while (end < size && !allZero(data + end, std::min(kBlock, size - end)))
            end += kBlock;
        end = std::min(end, size);
        for (std::size_t done = start; done < end;) {
            const ssize_t n = ::pwrite(out, data + done, end - done, offset + off_t(done));
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                return false;
            done += std::size_t(n);
        }
        start = end;
    }
    return true;
}

class Copier {
public:
    Copier(const CopyObserver& observer) : m_observer(observer) {}

    FileError copyFile(const std::string& from, const std::string& to) {
        ScopedFd in(::open(from.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
        if (in.get() < 0)
            return failure("read", from, errno);
        struct stat info {};
        if (::fstat(in.get(), &info) != 0)
            return failure("read", from, errno);
        ScopedFd out(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (out.get() < 0)
            return failure("copy", from, errno);
        if (FileError error = copyData(in.get(), out.get(), info.st_size, from))
            return error;
        if (::ftruncate(out.get(), info.st_size) != 0)
            return failure("copy", from, errno);
        // Closing can report a write that failed late (FUSE reports them here).
        if (out.close() != 0)
            return failure("copy", from, errno);
        return finish(from, to, info);
    }

    bool report(std::int64_t bytes, std::int64_t entries) {
        m_bytes += bytes;
        m_entries += entries;
        return !m_observer || m_observer(m_bytes, m_entries);
    }

private:
    // Only the ranges that hold data are read; within them, zero blocks are skipped too.
    FileError copyData(int in, int out, off_t size, const std::string& from) {
        std::vector<char> buffer(kChunk);
        bool seeks = true;
        for (off_t offset = 0; offset < size;) {
            off_t data = offset, hole = size;
            if (seeks) {
                data = ::lseek(in, offset, SEEK_DATA);
                if (data < 0 && errno == ENXIO)
                    return std::nullopt;
                if (data < 0) {
                    seeks = false;
                    data = offset;
                } else {
                    hole = ::lseek(in, data, SEEK_HOLE);
                    if (hole < 0)
                        hole = size;
                }
            }
            for (off_t at = data; at < hole;) {
                const ssize_t n = ::pread(in, buffer.data(), std::size_t(std::min<off_t>(kChunk, hole - at)), at);
                if (n < 0 && errno == EINTR)
                    continue;
                if (n < 0)
                    return failure("read", from, errno);
                if (n == 0) // the file shrank while it was read
                    return std::nullopt;
                if (!writeSparse(out, buffer.data(), std::size_t(n), at))
                    return failure("copy", from, errno);
                at += n;
                if (!report(n, 0))
                    return kCancelled;
            }
            offset = hole;
        }
        return std::nullopt;
    }

    const CopyObserver& m_observer;
    std::int64_t m_bytes = 0;
    std::int64_t m_entries = 0;
};

FileError copyLink(const std::string& from, const std::string& to) {
    struct stat info {};
    if (::lstat(from.c_str(), &info) != 0)
        return failure("read", from, errno);
    std::vector<char> target(std::size_t(info.st_size > 0 ? info.st_size : PATH_MAX) + 1);
    const ssize_t length = ::readlink(from.c_str(), target.data(), target.size());
    if (length < 0 || std::size_t(length) >= target.size())
        return failure("read", from, length < 0 ? errno : ENAMETOOLONG);
    if (::symlink(std::string(target.data(), std::size_t(length)).c_str(), to.c_str()) != 0)
        return failure("copy", from, errno);
    return finish(from, to, info);
}

} // namespace

FileError copySurveyed(const std::string& from, const std::string& to, const TreeSurvey& survey,
                       const CopyObserver& observer) {
    Copier copier(observer);
    std::map<std::pair<std::uint64_t, std::uint64_t>, std::string> firstLink;
    std::vector<const TreeEntry*> folders;
    for (const TreeEntry& entry : survey.entries) {
        const std::string source = joined(from, entry.relative);
        const std::string target = joined(to, entry.relative);
        FileError error;
        if (entry.isFolder()) {
            if (::mkdir(target.c_str(), 0700) != 0)
                error = failure("copy", source, errno);
            folders.push_back(&entry);
        } else if (S_ISLNK(entry.mode)) {
            error = copyLink(source, target);
        } else if (entry.links > 1 && firstLink.count({entry.device, entry.inode})) {
            if (::link(firstLink[{entry.device, entry.inode}].c_str(), target.c_str()) != 0)
                error = failure("copy", source, errno);
        } else {
            error = copier.copyFile(source, target);
            if (entry.links > 1)
                firstLink[{entry.device, entry.inode}] = target;
        }
        // Gone since the survey: nothing to copy, and nothing of it will be removed.
        if (error && !entry.relative.empty() && !existsNoFollow(source))
            error.reset();
        if (error)
            return error;
        if (!copier.report(0, 1))
            return kCancelled;
    }
    // Deepest first, after everything inside is written: a read-only folder could not be
    // filled, and filling a folder changes its times.
    for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
        const std::string source = joined(from, (*folder)->relative);
        struct stat info {};
        if (::lstat(source.c_str(), &info) != 0)
            return failure("read", source, errno);
        if (FileError error = finish(source, joined(to, (*folder)->relative), info))
            return error;
    }
    return std::nullopt;
}

} // namespace platform
