#pragma once

// Small pieces shared by the file operations of this folder; not for use elsewhere.

#include "SystemCalls.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <string>
#include <unistd.h>

namespace platform {

inline std::string fileName(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// An entry of a surveyed tree by its path below `root` ("" is the root itself).
inline std::string joined(const std::string& root, const std::string& relative) {
    return relative.empty() ? root : root + "/" + relative;
}

inline std::string quoted(const std::string& name) { return "\u201C" + name + "\u201D"; }

// "Couldn’t copy “name”: reason." — the words a person sees for a failed step.
inline std::string failure(const char* verb, const std::string& path, int error) {
    return std::string("Couldn\u2019t ") + verb + " " + quoted(fileName(path)) + ": " +
           std::strerror(error) + ".";
}

// Before working through the entries of `folder` one by one. On FUSE (the vault) one listing
// brings every entry's attributes at once, and the look-ups that follow for the next second
// need no request each; elsewhere it costs a read of a folder already in memory.
class FolderAhead {
public:
    void enter(const std::string& folder) {
        if (folder == m_folder)
            return;
        m_folder = folder;
        if (DIR* dir = ::opendir(folder.c_str())) {
            while (::readdir(dir)) {
            }
            ::closedir(dir);
        }
    }

private:
    std::string m_folder;
};

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
    // Closing can report a write that failed late.
    int close() {
        const int result = sys::close(m_fd);
        m_fd = -1;
        return result;
    }

private:
    int m_fd;
};

} // namespace platform
