#pragma once

#include "Files.h"

#include <cstdint>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

// Moving a user's item is done in steps that can each be checked: survey the tree (and refuse
// what cannot be moved safely), copy exactly what the survey saw, and later remove of the
// original only the entries that are still what was copied.
namespace platform {

// What an entry was when it was surveyed. An entry is removed later only if it still is.
struct TreeEntry {
    std::string relative; // "" for the item itself, else "a/b" below it
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    timespec modified{};
    std::uint32_t mode = 0; // type and permission bits
    std::uint32_t links = 1;

    bool isFolder() const;
    bool sameAs(const TreeEntry& other) const;
};

// The item's entries in walking order: every folder before what it holds.
struct TreeSurvey {
    std::vector<TreeEntry> entries;
    std::int64_t totalBytes = 0;
};

// Walks `path` without following links. Refuses, before anything is touched: devices,
// pipes and sockets; a mount point at or below `path` (a drive, a share, a bind mount);
// files that are immutable or append-only, which could be copied but never removed.
FileError surveyTree(const std::string& path, TreeSurvey& survey);

// Told of the work as it goes, after each bounded chunk; answering false stops the copy,
// which then fails with kCancelled.
using CopyObserver = std::function<bool(std::int64_t bytesDone, std::int64_t entriesDone)>;
inline const std::string kCancelled = "Cancelled.";

// Copies the surveyed entries of `from` to `to`, which must not exist, keeping what
// `cp -a --sparse=always` keeps: modes, times, links as links, hard links within the item as
// hard links, holes, extended attributes and ACLs where the target takes them, and the owner
// when run as root. Folder modes are applied after their contents are written, so read-only
// folders copy. Entries that appeared after the survey are not copied. A failed copy leaves
// what it made for the caller to remove.
FileError copySurveyed(const std::string& from, const std::string& to, const TreeSurvey& survey,
                       const CopyObserver& observer = {});

} // namespace platform
