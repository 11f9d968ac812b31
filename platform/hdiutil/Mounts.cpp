#include "Mounts.h"

#include "ToolSteps.h"
#include "platform/RuntimeFolder.h"

#include <fstream>
#include <sys/stat.h>
#include <sstream>

namespace hdiutil {

namespace {

constexpr std::string_view kFsNamePrefix = "morvanta:";

// mountinfo writes space, tab, newline and backslash as \ooo.
std::string unescapeOctal(std::string_view field) {
    std::string out;
    out.reserve(field.size());
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            const std::string_view digits = field.substr(i + 1, 3);
            if (digits.find_first_not_of("01234567") == std::string_view::npos) {
                out.push_back(static_cast<char>(std::stoi(std::string(digits), nullptr, 8)));
                i += 3;
                continue;
            }
        }
        out.push_back(field[i]);
    }
    return out;
}

std::vector<std::string_view> splitSpaces(std::string_view line) {
    std::vector<std::string_view> fields;
    std::size_t pos = 0;
    while (pos < line.size()) {
        const std::size_t end = std::min(line.find(' ', pos), line.size());
        if (end > pos)
            fields.push_back(line.substr(pos, end - pos));
        pos = end + 1;
    }
    return fields;
}

bool keepsLiterally(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           c == '/' || c == '.' || c == '_' || c == '-' || c == '~';
}

int hexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

std::string trimTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return std::string(path);
}

} // namespace

std::vector<MountEntry> parseMountInfo(std::string_view text) {
    std::vector<MountEntry> entries;
    std::size_t pos = 0;
    while (pos < text.size()) {
        const std::size_t end = std::min(text.find('\n', pos), text.size());
        const std::vector<std::string_view> fields = splitSpaces(text.substr(pos, end - pos));
        pos = end + 1;

        // id parent dev root mountpoint options [optional...] - fstype source superoptions
        std::size_t separator = 6;
        while (separator < fields.size() && fields[separator] != "-")
            ++separator;
        if (fields.size() < 5 || separator + 2 >= fields.size())
            continue;
        entries.push_back({unescapeOctal(fields[4]), unescapeOctal(fields[separator + 1]),
                           unescapeOctal(fields[separator + 2])});
    }
    return entries;
}

std::vector<MountEntry> currentMounts() {
    std::ifstream file("/proc/self/mountinfo");
    std::stringstream text;
    text << file.rdbuf();
    return parseMountInfo(text.str());
}

std::string fsNameForImage(std::string_view canonicalImagePath) {
    static constexpr char hex[] = "0123456789ABCDEF";
    std::string name(kFsNamePrefix);
    for (const char ch : canonicalImagePath) {
        const auto c = static_cast<unsigned char>(ch);
        if (keepsLiterally(c)) {
            name.push_back(ch);
        } else {
            name.push_back('%');
            name.push_back(hex[c >> 4]);
            name.push_back(hex[c & 0xF]);
        }
    }
    return name;
}

std::optional<std::string> imageForFsName(std::string_view fsName) {
    if (fsName.substr(0, kFsNamePrefix.size()) != kFsNamePrefix)
        return std::nullopt;
    fsName.remove_prefix(kFsNamePrefix.size());
    std::string path;
    for (std::size_t i = 0; i < fsName.size(); ++i) {
        if (fsName[i] != '%') {
            path.push_back(fsName[i]);
            continue;
        }
        if (i + 2 >= fsName.size())
            return std::nullopt;
        const int high = hexValue(fsName[i + 1]);
        const int low = hexValue(fsName[i + 2]);
        if (high < 0 || low < 0)
            return std::nullopt;
        path.push_back(static_cast<char>(high * 16 + low));
        i += 2;
    }
    return path;
}

std::vector<MountEntry> ownMounts(const std::vector<MountEntry>& mounts) {
    std::vector<MountEntry> own;
    for (const MountEntry& entry : mounts) {
        if (entry.fsType == kFsType && imageForFsName(entry.source))
            own.push_back(entry);
    }
    return own;
}

std::optional<MountEntry> mountOfImage(const std::vector<MountEntry>& mounts,
                                       std::string_view canonicalImagePath) {
    for (const MountEntry& entry : ownMounts(mounts)) {
        if (imageForFsName(entry.source) == canonicalImagePath)
            return entry;
    }
    return std::nullopt;
}

std::optional<MountEntry> mountAt(const std::vector<MountEntry>& mounts,
                                  std::string_view mountPoint) {
    const std::string wanted = trimTrailingSlashes(mountPoint);
    // The last entry wins: it is the one on top when mounts are stacked.
    std::optional<MountEntry> found;
    for (const MountEntry& entry : mounts) {
        if (entry.mountPoint == wanted)
            found = entry;
    }
    return found;
}

std::string privateMountRoot(std::string& error) {
    return platform::privateRuntimeFolder(error);
}

std::string chooseMountPoint(const std::string& root, const std::string& volumeName) {
    const std::vector<MountEntry> mounts = currentMounts();
    for (int n = 0; n < 100; ++n) {
        const std::string candidate =
            root + "/" + volumeName + (n == 0 ? std::string() : " " + std::to_string(n));
        if (mountAt(mounts, candidate))
            continue;
        if (!exists(candidate)) {
            if (::mkdir(candidate.c_str(), 0700) == 0)
                return candidate;
            continue;
        }
        // Left behind by an earlier run, perhaps loosened since: never mounted on as it is.
        if (isDirectory(candidate) && isEmptyDirectory(candidate) &&
            ::chmod(candidate.c_str(), 0700) == 0)
            return candidate;
    }
    throw Failure{"no free mount point for " + volumeName + " in " + root};
}

} // namespace hdiutil
