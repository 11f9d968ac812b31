#pragma once

#include "TreeCopy.h"

#include <atomic>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// Removes from `root` only the surveyed entries that are still what the survey saw, children
// before their folders, and folders only once empty. Anything new or changed stays. With
// `makeWritable`, read-only folders of the caller's own are opened up first (for the app's
// own copies). Returns the first failure, if any; what is left shows on disk.
FileError removeSurveyed(const std::string& root, const TreeSurvey& survey, bool makeWritable);

// Whether anything the survey saw is still there unchanged and could go: a file or link, or
// a folder that holds nothing. (A folder holding new entries stays in any case.)
bool removableLeft(const std::string& root, const TreeSurvey& survey);

// Whether no surveyed entry has gone yet: the original is still whole.
bool untouched(const std::string& root, const TreeSurvey& survey);

// Removes `path` and everything below it, opening up read-only folders first. For the app's
// own copies only: staging leftovers and items deleted from the vault. Stops with kCancelled,
// part done, once `*stop` turns true.
FileError removeTree(const std::string& path, const std::atomic<bool>* stop = nullptr);

// A survey as bytes, for handing it to the administrator's removal helper on a pipe.
std::string encodeSurvey(const TreeSurvey& survey);
bool decodeSurvey(std::string_view bytes, TreeSurvey& survey);

} // namespace platform
