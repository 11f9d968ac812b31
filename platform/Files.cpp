#include "Files.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

std::string fileName(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string failure(const char* verb, const std::string& path, int error) {
    return std::string("Couldn\u2019t ") + verb + " \u201C" + fileName(path) + "\u201D: " +
           std::strerror(error) + ".";
}

class ScopedFd {
public:
    explicit ScopedFd(int fd) : m_fd(fd) {}
    ScopedFd(const ScopedFd&) = delete;
    ScopedFd& operator=(const ScopedFd&) = delete;
    ~ScopedFd() {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    int get() const { return m_fd; }
    // Closing can report a write that failed late (FUSE reports them here).
    int close() {
        const int result = ::close(m_fd);
        m_fd = -1;
        return result;
    }

private:
    int m_fd;
};

bool copyBytes(int in, int out) {
    // copy_file_range lets the kernel do the work; where it cannot, plain reads and writes.
    for (;;) {
        const ssize_t n = ::copy_file_range(in, nullptr, out, nullptr, 1 << 30, 0);
        if (n == 0)
            return true;
        if (n > 0)
            continue;
        if (errno == EINTR)
            continue;
        if (errno != EXDEV && errno != ENOSYS && errno != EINVAL && errno != EOPNOTSUPP)
            return false;
        break;
    }
    std::vector<char> buffer(1 << 20);
    for (;;) {
        const ssize_t n = ::read(in, buffer.data(), buffer.size());
        if (n == 0)
            return true;
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        for (ssize_t done = 0; done < n;) {
            const ssize_t written = ::write(out, buffer.data() + done, std::size_t(n - done));
            if (written < 0) {
                if (errno == EINTR)
                    continue;
                return false;
            }
            done += written;
        }
    }
}

FileError copyFile(const std::string& from, const std::string& to, const struct stat& info) {
    ScopedFd in(::open(from.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (in.get() < 0)
        return failure("read", from, errno);
    ScopedFd out(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (out.get() < 0)
        return failure("copy", from, errno);
    if (!copyBytes(in.get(), out.get()))
        return failure("copy", from, errno);
    const timespec times[2] = {info.st_atim, info.st_mtim};
    if (::fchmod(out.get(), info.st_mode & 07777) != 0 || ::futimens(out.get(), times) != 0)
        return failure("copy", from, errno);
    if (out.close() != 0)
        return failure("copy", from, errno);
    return std::nullopt;
}

FileError copyLink(const std::string& from, const std::string& to, const struct stat& info) {
    std::vector<char> target(std::size_t(info.st_size > 0 ? info.st_size : PATH_MAX) + 1);
    const ssize_t length = ::readlink(from.c_str(), target.data(), target.size());
    if (length < 0 || std::size_t(length) >= target.size())
        return failure("read", from, length < 0 ? errno : ENAMETOOLONG);
    if (::symlink(std::string(target.data(), std::size_t(length)).c_str(), to.c_str()) != 0)
        return failure("copy", from, errno);
    const timespec times[2] = {info.st_atim, info.st_mtim};
    ::utimensat(AT_FDCWD, to.c_str(), times, AT_SYMLINK_NOFOLLOW); // not every FS keeps these
    return std::nullopt;
}

FileError copyFolder(const std::string& from, const std::string& to, const struct stat& info) {
    if (::mkdir(to.c_str(), 0700) != 0)
        return failure("copy", from, errno);
    DIR* dir = ::opendir(from.c_str());
    if (!dir)
        return failure("read", from, errno);
    std::vector<std::string> names;
    errno = 0;
    while (const dirent* entry = ::readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
            names.emplace_back(entry->d_name);
    }
    const int readError = errno;
    ::closedir(dir);
    if (readError != 0)
        return failure("read", from, readError);

    for (const std::string& name : names) {
        if (FileError error = copyTree(from + "/" + name, to + "/" + name))
            return error;
    }
    // Last, so that copying the contents does not change the folder's own times, and a
    // read-only folder can still be filled.
    const timespec times[2] = {info.st_atim, info.st_mtim};
    if (::chmod(to.c_str(), info.st_mode & 07777) != 0 ||
        ::utimensat(AT_FDCWD, to.c_str(), times, 0) != 0)
        return failure("copy", from, errno);
    return std::nullopt;
}

} // namespace

bool existsNoFollow(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0;
}

bool isDirectoryNoFollow(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

FileError copyTree(const std::string& from, const std::string& to) {
    struct stat info {};
    if (::lstat(from.c_str(), &info) != 0)
        return failure("read", from, errno);
    if (S_ISREG(info.st_mode))
        return copyFile(from, to, info);
    if (S_ISDIR(info.st_mode))
        return copyFolder(from, to, info);
    if (S_ISLNK(info.st_mode))
        return copyLink(from, to, info);
    return "\u201C" + fileName(from) +
           "\u201D is a device, pipe or socket, which can\u2019t be kept in the vault.";
}

FileError removeTree(const std::string& path) {
    std::error_code error;
    std::filesystem::remove_all(path, error);
    if (error)
        return failure("remove", path, error.value());
    return std::nullopt;
}

namespace {

// May this process unlink the entry `name` (described by `entry`) from `folder`?
bool mayUnlinkFrom(const std::string& folder, const struct stat& entry) {
    struct stat info {};
    if (::access(folder.c_str(), W_OK | X_OK) != 0 || ::stat(folder.c_str(), &info) != 0)
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
