#pragma once

#include "Files.h"

#include <string>

namespace platform {

// The file operations that move a user's items, behind one seam so that tests can watch
// their order (a copy must be on stable storage before its original goes). The base class
// does them for real.
class FileLayer {
public:
    virtual ~FileLayer() = default;

    virtual FileError copyTree(const std::string& from, const std::string& to);
    virtual FileError removeTree(const std::string& path);
    // Puts everything written to the file system that holds `path` on stable storage.
    virtual FileError flush(const std::string& path);
    // A rename within a file system; across file systems a copy, flushed, and only then the
    // removal of the original. A copy that fails is removed again.
    virtual FileError moveItem(const std::string& from, const std::string& to);
};

} // namespace platform
