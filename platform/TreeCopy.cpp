#include "TreeCopy.h"

#include "FileSupport.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <map>
#include <memory>
#include <new>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace platform {

namespace {

bool isAcl(const char* name) { return std::strncmp(name, "system.posix_acl_", 17) == 0; }

// One end of an attribute copy: an open file or folder where there is one (fewer path walks,
// and on the vault's FUSE mount fewer requests), else a path that is not followed.
struct Node {
    const std::string& path;
    int fd = -1;

    ssize_t list(char* names, std::size_t size) const {
        return fd >= 0 ? ::flistxattr(fd, names, size) : ::llistxattr(path.c_str(), names, size);
    }
    ssize_t get(const char* name, void* value, std::size_t size) const {
        return fd >= 0 ? ::fgetxattr(fd, name, value, size) : ::lgetxattr(path.c_str(), name, value, size);
    }
    int set(const char* name, const void* value, std::size_t size) const {
        return fd >= 0 ? ::fsetxattr(fd, name, value, size, 0) : ::lsetxattr(path.c_str(), name, value, size, 0);
    }
    int chown(uid_t uid, gid_t gid) const {
        return fd >= 0 ? ::fchown(fd, uid, gid) : ::lchown(path.c_str(), uid, gid);
    }
    int chmod(mode_t mode) const { return fd >= 0 ? ::fchmod(fd, mode) : ::chmod(path.c_str(), mode); }
    int setTimes(const timespec times[2]) const {
        return fd >= 0 ? ::futimens(fd, times) : ::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
    }
};

// The names of the extended attributes of `from`, NUL-separated; empty where it has none or
// the file system keeps none.
std::vector<char> attributeNames(const Node& from) {
    ssize_t length = from.list(nullptr, 0);
    if (length <= 0)
        return {};
    std::vector<char> names(std::size_t(length) + 1);
    length = from.list(names.data(), names.size());
    names.resize(std::size_t(std::max<ssize_t>(length, 0)));
    return names;
}

// Extended attributes, and ACLs (which are attributes too), where the target takes them.
FileError copyAttributes(const Node& from, const Node& to, const std::vector<char>& names, bool acls) {
    for (const char* name = names.data(); name < names.data() + names.size(); name += std::strlen(name) + 1) {
        if (isAcl(name) != acls)
            continue;
        ssize_t size = from.get(name, nullptr, 0);
        std::vector<char> value(std::size_t(std::max<ssize_t>(size, 0)) + 1);
        size = from.get(name, value.data(), value.size());
        if (size < 0)
            return failure("read", from.path, errno);
        if (to.set(name, value.data(), std::size_t(size)) == 0)
            continue;
        const bool userAttribute = std::strncmp(name, "user.", 5) == 0;
        if (errno == ENOTSUP || ((errno == EPERM || errno == EACCES) && !userAttribute))
            continue;
        return failure("copy", from.path, errno);
    }
    return std::nullopt;
}

// Owner (when root may set it), attributes, mode and times, in the order that keeps each:
// user attributes before the mode (a read-only file takes none), ACLs after it (setting the
// mode rewrites the ACL's mask), times last. `made` is the target as it was created, so that
// what it already has is not set again.
FileError finish(const Node& from, const Node& to, const struct stat& info, const struct stat& made) {
    if (::geteuid() == 0 && (made.st_uid != info.st_uid || made.st_gid != info.st_gid))
        to.chown(info.st_uid, info.st_gid);
    const timespec times[2] = {info.st_atim, info.st_mtim};
    if (S_ISLNK(info.st_mode)) {
        to.setTimes(times); // not every file system keeps these
        return std::nullopt;
    }
    const std::vector<char> names = attributeNames(from);
    if (FileError error = copyAttributes(from, to, names, false))
        return error;
    // A changed owner drops the set-user and set-group bits: the mode goes on again then.
    if ((made.st_mode & 07777) != (info.st_mode & 07777) || made.st_uid != info.st_uid ||
        made.st_gid != info.st_gid) {
        if (to.chmod(info.st_mode & 07777) != 0)
            return failure("copy", from.path, errno);
    }
    if (FileError error = copyAttributes(from, to, names, true))
        return error;
    if (to.setTimes(times) != 0)
        return failure("copy", from.path, errno);
    return std::nullopt;
}

// What is set on a target that was just made: nothing known, so everything is set.
struct stat unknownTarget() {
    struct stat made {};
    made.st_uid = uid_t(-1);
    made.st_gid = gid_t(-1);
    made.st_mode = 0;
    return made;
}

// Bounded, so that a cancel is seen soon; and the vault's FUSE mount moves 128 KiB per
// request, so reading it in bigger pieces only stalls its read-ahead.
constexpr std::size_t kChunk = 128 << 10;
constexpr std::size_t kBlock = 4096;
constexpr decltype(statfs::f_type) kFuseMagic = 0x65735546;

bool allZero(const char* data, std::size_t size) {
    return size == 0 || (data[0] == 0 && std::memcmp(data, data + 1, size - 1) == 0);
}

// Writes the chunk's non-zero blocks at their offsets; zero blocks stay holes. Returns where
// the last write ended, or -1.
off_t writeSparse(int out, const char* data, std::size_t size, off_t offset) {
    off_t written = 0;
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
                return -1;
            done += std::size_t(n);
            written = offset + off_t(done);
        }
        start = end;
    }
    return written;
}

class Copier {
public:
    Copier(const CopyObserver& observer, bool directWrites)
        : m_observer(observer), m_buffer(static_cast<char*>(std::aligned_alloc(kBlock, kChunk))),
          m_directWrites(directWrites) {
        if (!m_buffer)
            throw std::bad_alloc();
    }

    FileError copyFile(const std::string& from, const std::string& to) {
        ScopedFd in(::open(from.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
        if (in.get() < 0)
            return failure("read", from, errno);
        struct stat info {};
        if (::fstat(in.get(), &info) != 0)
            return failure("read", from, errno);
        // Made with its own permissions where the umask allows (and writable by its owner,
        // who sets its attributes), so that usually none need setting again.
        ScopedFd out(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                            (info.st_mode & 0777) | S_IWUSR));
        if (out.get() < 0)
            return failure("copy", from, errno);
        if (m_directWrites)
            ::fcntl(out.get(), F_SETFL, O_DIRECT); // where it is refused, through the cache
        // Read now, while the attributes from creating it are fresh: on FUSE a write makes
        // them stale and a later look would cost a request.
        struct stat made {};
        if (::fstat(out.get(), &made) != 0)
            made = unknownTarget();
        off_t end = 0;
        if (FileError error = copyData(in.get(), out.get(), info, from, end))
            return error;
        if (end != info.st_size && ::ftruncate(out.get(), info.st_size) != 0)
            return failure("copy", from, errno);
        if (FileError error = finish(Node{from, in.get()}, Node{to, out.get()}, info, made))
            return error;
        // Closing can report a write that failed late (FUSE reports them here).
        if (out.close() != 0)
            return failure("copy", from, errno);
        return std::nullopt;
    }

    bool report(std::int64_t bytes, std::int64_t entries) {
        m_bytes += bytes;
        m_entries += entries;
        return !m_observer || m_observer(m_bytes, m_entries);
    }

private:
    // Only the ranges that hold data are read; within them, zero blocks are skipped too. A
    // file with as many blocks as bytes has no holes to look for: the seeks are left out
    // (two requests per file on the vault), and zero blocks are still skipped as read.
    FileError copyData(int in, int out, const struct stat& info, const std::string& from, off_t& end) {
        const off_t size = info.st_size;
        bool seeks = off_t(info.st_blocks) * 512 < size;
        // Doubles the read-ahead: on FUSE two requests in flight, so the vault decrypts the
        // next piece while this one is written.
        if (size > off_t(kChunk))
            ::posix_fadvise(in, 0, 0, POSIX_FADV_SEQUENTIAL);
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
                const ssize_t n = ::pread(in, m_buffer.get(), std::size_t(std::min<off_t>(kChunk, hole - at)), at);
                if (n < 0 && errno == EINTR)
                    continue;
                if (n < 0)
                    return failure("read", from, errno);
                if (n == 0) // the file shrank while it was read
                    return std::nullopt;
                off_t written = writeSparse(out, m_buffer.get(), std::size_t(n), at);
                if (written < 0 && errno == EINVAL && m_directWrites) {
                    // A FUSE file system that takes the flag but not the writes.
                    m_directWrites = false;
                    ::fcntl(out, F_SETFL, 0);
                    written = writeSparse(out, m_buffer.get(), std::size_t(n), at);
                }
                if (written < 0)
                    return failure("copy", from, errno);
                if (written > 0)
                    end = written;
                at += n;
                if (!report(n, 0))
                    return kCancelled;
            }
            offset = hole;
        }
        return std::nullopt;
    }

    const CopyObserver& m_observer;
    struct Free {
        void operator()(char* data) const { std::free(data); }
    };
    // One for the whole copy, not one per file. Page-aligned: a direct write from a buffer
    // that spans one page more than FUSE takes at once is split in two, and the encrypted
    // file then lies in about three times as many pieces on disk (each one a discard, and
    // time, when it is deleted).
    std::unique_ptr<char, Free> m_buffer;
    bool m_directWrites;
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
    return finish(Node{from}, Node{to}, info, unknownTarget());
}

} // namespace

FileError copySurveyed(const std::string& from, const std::string& to, const TreeSurvey& survey,
                       const CopyObserver& observer) {
    // Into a FUSE file system (the vault), written past the page cache: the data is not held
    // twice in memory, as the files over FUSE and as the encrypted image below, and the next
    // one to open a file does not first have to throw its cached pages away (FUSE does that
    // on every open).
    const std::size_t slash = to.rfind('/');
    struct statfs target {};
    const bool fuse = ::statfs(slash == std::string::npos ? "." : slash == 0 ? "/" : to.substr(0, slash).c_str(),
                               &target) == 0 && target.f_type == kFuseMagic;
    Copier copier(observer, fuse);
    std::map<std::pair<std::uint64_t, std::uint64_t>, std::string> firstLink;
    std::vector<const TreeEntry*> folders;
    FolderAhead ahead;
    for (const TreeEntry& entry : survey.entries) {
        const std::string source = joined(from, entry.relative);
        const std::string target = joined(to, entry.relative);
        if (!entry.relative.empty())
            ahead.enter(source.substr(0, source.rfind('/')));
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
        const std::string target = joined(to, (*folder)->relative);
        if (FileError error = finish(Node{source}, Node{target}, info, unknownTarget()))
            return error;
    }
    return std::nullopt;
}

} // namespace platform
