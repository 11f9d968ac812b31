#pragma once

// Small steps the verbs of the disk-image tool share: failing with a reason, finding the
// helper programs, looking at paths, reading the password.

#include "Password.h"
#include "platform/Process.h"

#include <string>
#include <string_view>

namespace hdiutil {

// A failed step: the reason becomes the tool's one line on standard error.
struct Failure {
    std::string reason;
};

inline constexpr const char* kConfigFile = "gocryptfs.conf";

// The absolute path of a helper program in the system's folders; throws when missing.
std::string findProgram(const char* name);
// The last line a failed helper wrote, or its exit status when it wrote nothing.
std::string reasonOf(const platform::ProcessResult& run, const std::string& what);

// Made absolute and normalised, without resolving links, with no trailing slash.
std::string absolutePath(const std::string& path);
bool isDirectory(const std::string& path); // following links
bool exists(const std::string& path);      // not following links
bool isEmptyDirectory(const std::string& path);

// The image must be a gocryptfs folder; its canonical path names its mounts.
std::string canonicalImage(const std::string& target);

// Reads the one password of create and attach from `stdinFd`, refusing what gocryptfs
// would not take exactly as given.
Secret readPassword(int stdinFd);

// Removes a file on every path out unless told to keep it.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string path) : m_path(std::move(path)) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile();
    const std::string& path() const { return m_path; }
    void keep() { m_path.clear(); }

private:
    std::string m_path;
};

} // namespace hdiutil
