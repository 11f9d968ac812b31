#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hdiutil {

// One line of /proc/self/mountinfo, with the octal escapes undone.
struct MountEntry {
    std::string mountPoint;
    std::string fsType;
    std::string source;
};

std::vector<MountEntry> parseMountInfo(std::string_view text);
std::vector<MountEntry> currentMounts();

// Our mounts carry the image's path in their source column, so that they can be told apart
// from every other FUSE mount and traced back to their image. Characters that the mount
// option parser or mountinfo would mangle are percent-encoded.
std::string fsNameForImage(std::string_view canonicalImagePath);
std::optional<std::string> imageForFsName(std::string_view fsName);

inline constexpr std::string_view kFsType = "fuse.gocryptfs";

// The mounts of this tool (any image), or of one image.
std::vector<MountEntry> ownMounts(const std::vector<MountEntry>& mounts);
std::optional<MountEntry> mountOfImage(const std::vector<MountEntry>& mounts,
                                       std::string_view canonicalImagePath);
std::optional<MountEntry> mountAt(const std::vector<MountEntry>& mounts,
                                  std::string_view mountPoint);

// The folder that holds our mount points: the user's private runtime folder, which no file
// manager lists. Empty with `error` set when no safe folder can be had.
std::string privateMountRoot(std::string& error);

// A free mount point in `root`, made (or an empty one left behind, taken back) private to
// the user. Named after the volume; a second vault with the same name gets "Name 1", ….
std::string chooseMountPoint(const std::string& root, const std::string& volumeName);

} // namespace hdiutil
