#include "TreeRemoval.h"

#include "FileSupport.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>

namespace platform {

namespace {

// The entry at `path` now, described as a survey would.
bool current(const std::string& path, TreeEntry& entry) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0)
        return false;
    entry.device = info.st_dev;
    entry.inode = info.st_ino;
    entry.size = info.st_size;
    entry.modified = info.st_mtim;
    entry.mode = info.st_mode;
    entry.links = std::uint32_t(info.st_nlink);
    return true;
}

} // namespace

FileError removeSurveyed(const std::string& root, const TreeSurvey& survey, bool makeWritable) {
    FileError first;
    if (makeWritable) {
        for (const TreeEntry& entry : survey.entries) {
            TreeEntry now;
            const std::string path = joined(root, entry.relative);
            if (entry.isFolder() && current(path, now) && now.sameAs(entry) &&
                (now.mode & 0700) != 0700)
                ::chmod(path.c_str(), (now.mode | 0700) & 07777);
        }
    }
    FolderAhead ahead;
    for (auto entry = survey.entries.rbegin(); entry != survey.entries.rend(); ++entry) {
        const std::string path = joined(root, entry->relative);
        if (!entry->relative.empty())
            ahead.enter(path.substr(0, path.rfind('/')));
        TreeEntry now;
        if (!current(path, now) || !now.sameAs(*entry))
            continue;
        if (entry->isFolder() ? ::rmdir(path.c_str()) == 0 : ::unlink(path.c_str()) == 0)
            continue;
        // A folder that gained entries stays, and so do they.
        if (errno != ENOTEMPTY && errno != EEXIST && !first)
            first = failure("remove", path, errno);
    }
    return first;
}

bool removableLeft(const std::string& root, const TreeSurvey& survey) {
    for (const TreeEntry& entry : survey.entries) {
        const std::string path = joined(root, entry.relative);
        TreeEntry now;
        if (!current(path, now) || !now.sameAs(entry))
            continue;
        if (!entry.isFolder())
            return true;
        if (DIR* dir = ::opendir(path.c_str())) {
            int names = 0;
            while (::readdir(dir) && names <= 2)
                ++names;
            ::closedir(dir);
            if (names <= 2)
                return true;
        }
    }
    return false;
}

bool untouched(const std::string& root, const TreeSurvey& survey) {
    for (const TreeEntry& entry : survey.entries) {
        if (!existsNoFollow(joined(root, entry.relative)))
            return false;
    }
    return true;
}

TreeTotals countTree(const std::string& path) {
    TreeTotals totals;
    // Sparse files can add up past what 64 bits hold.
    const auto add = [&totals](const struct stat& info) {
        ++totals.entries;
        if (S_ISREG(info.st_mode) && __builtin_add_overflow(totals.bytes, info.st_size, &totals.bytes))
            totals.bytes = std::numeric_limits<std::int64_t>::max();
    };
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0)
        return totals;
    add(info);
    std::vector<std::string> folders;
    if (S_ISDIR(info.st_mode))
        folders.push_back(path);
    while (!folders.empty()) {
        const std::string folder = std::move(folders.back());
        folders.pop_back();
        DIR* dir = ::opendir(folder.c_str());
        if (!dir)
            continue;
        while (const dirent* entry = ::readdir(dir)) {
            if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
                continue;
            // Looked up beside the open folder: on a FUSE mount one request rather than a walk.
            if (::fstatat(::dirfd(dir), entry->d_name, &info, AT_SYMLINK_NOFOLLOW) != 0)
                continue;
            add(info);
            if (S_ISDIR(info.st_mode))
                folders.push_back(folder + '/' + entry->d_name);
        }
        ::closedir(dir);
    }
    return totals;
}

namespace {

struct Removal {
    const CopyObserver& observer;
    std::int64_t entries = 0;
    std::int64_t bytes = 0;
};

FileError removeBelow(const std::string& path, Removal& done) {
    if (done.observer && !done.observer(done.bytes, done.entries))
        return kCancelled;
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0)
        return errno == ENOENT ? FileError() : failure("remove", path, errno);
    if (!S_ISDIR(info.st_mode)) {
        if (::unlink(path.c_str()) != 0)
            return failure("remove", path, errno);
        ++done.entries;
        done.bytes += S_ISREG(info.st_mode) ? info.st_size : 0;
        return std::nullopt;
    }
    if ((info.st_mode & 0700) != 0700)
        ::chmod(path.c_str(), (info.st_mode | 0700) & 07777);
    FileError first;
    if (DIR* dir = ::opendir(path.c_str())) {
        std::vector<std::string> names;
        while (const dirent* entry = ::readdir(dir)) {
            if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
                names.emplace_back(entry->d_name);
        }
        ::closedir(dir);
        for (const std::string& name : names) {
            FileError error = removeBelow(path + "/" + name, done);
            if (error && !first)
                first = error;
        }
    }
    if (::rmdir(path.c_str()) != 0 && !first)
        first = failure("remove", path, errno);
    if (!first)
        ++done.entries;
    return first;
}

} // namespace

FileError removeTree(const std::string& path, const CopyObserver& observer) {
    Removal done{observer};
    return removeBelow(path, done);
}

// One record per entry: seven numbers, a space after each, the relative path, a NUL.
std::string encodeSurvey(const TreeSurvey& survey) {
    std::string bytes;
    for (const TreeEntry& e : survey.entries) {
        char numbers[160];
        std::snprintf(numbers, sizeof numbers, "%" PRIu64 " %" PRIu64 " %" PRId64 " %lld %ld %u %u ",
                      e.device, e.inode, e.size, static_cast<long long>(e.modified.tv_sec),
                      e.modified.tv_nsec, e.mode, e.links);
        bytes.append(numbers).append(e.relative).push_back('\0');
    }
    return bytes;
}

bool decodeSurvey(std::string_view bytes, TreeSurvey& survey) {
    survey = {};
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\0');
        if (end == std::string_view::npos)
            return false;
        const std::string record(bytes.substr(0, end));
        bytes.remove_prefix(end + 1);
        TreeEntry e;
        long long seconds = 0;
        int used = 0;
        if (std::sscanf(record.c_str(), "%" SCNu64 " %" SCNu64 " %" SCNd64 " %lld %ld %u %u%n",
                        &e.device, &e.inode, &e.size, &seconds, &e.modified.tv_nsec, &e.mode,
                        &e.links, &used) != 7 || std::size_t(used) >= record.size() ||
            record[std::size_t(used)] != ' ')
            return false;
        e.modified.tv_sec = seconds;
        e.relative = record.substr(std::size_t(used) + 1);
        survey.entries.push_back(std::move(e));
    }
    return !survey.entries.empty() && survey.entries.front().relative.empty();
}

} // namespace platform
