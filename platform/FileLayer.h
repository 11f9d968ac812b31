#pragma once

#include "TreeCopy.h"
#include "TreeRemoval.h"

#include <string>

namespace platform {

// The file operations that move a user's items, behind one seam so that tests can watch
// their order (a copy must be on stable storage before its original goes) and stop them
// part-way. The base class does them for real.
class FileLayer {
public:
    virtual ~FileLayer() = default;

    virtual FileError survey(const std::string& path, TreeSurvey& survey);
    virtual FileError copy(const std::string& from, const std::string& to, const TreeSurvey& survey,
                           const CopyObserver& observer);
    // Puts everything written to the file system that holds `path` on stable storage.
    virtual FileError flush(const std::string& path);
    // Within one file system, never replacing anything at `to`.
    virtual FileError rename(const std::string& from, const std::string& to);
    // Removes what the survey saw and is unchanged (see removeSurveyed).
    virtual FileError remove(const std::string& root, const TreeSurvey& survey, bool makeWritable);
    // Removes one of the app's own copies whole (see removeTree).
    virtual FileError erase(const std::string& path, const CopyObserver& observer = {});
};

} // namespace platform
