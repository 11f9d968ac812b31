#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

// File operations on the user's items: copies that keep what a move keeps, and moves that
// work across file systems. Each returns the reason for a failure, in words for the user, or
// nothing on success. Links are never followed.
namespace platform {

using FileError = std::optional<std::string>;

// Whether anything, a dangling link included, is at `path`.
bool existsNoFollow(const std::string& path);
bool isDirectoryNoFollow(const std::string& path);

// Whether this process may remove `path` and everything below it: every folder involved is
// writable and on a writable file system, and no sticky folder protects another user's
// entry. Asked before removing, so that a removal that would fail part-way is not begun.
bool canRemoveTree(const std::string& path);

// Renames `from` to `to` without replacing anything there. OtherFileSystem when the two are
// on different file systems (a move is then a copy); Failed with errno set otherwise.
enum class RenameResult { Renamed, OtherFileSystem, Failed };
RenameResult renameWithinFileSystem(const std::string& from, const std::string& to);
std::string failureToMove(const std::string& from, int error);

// Whether `path` (absolute, with its folders resolved) is part of the operating system, or a
// folder that holds others' things (the root, /home, the home folder itself): never moved.
bool isProtectedSystemPath(const std::string& path, const std::string& home);

// Whether a file system is mounted at `path` (false when nothing readable is there, as with
// a FUSE mount whose daemon has died).
bool isMountPoint(const std::string& path);

// The entry's size in bytes as the file system reports it for the entry itself.
std::optional<std::int64_t> entrySize(const std::string& path);

// When the entry was created, where the file system records it; otherwise when its
// metadata last changed, which for an item copied into the vault is when it arrived.
std::optional<timespec> creationTime(const std::string& path);

} // namespace platform
