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

// What `path` holds, itself included: its entries, and the bytes of its regular files (up to
// the largest count 64 bits hold). Links are not followed; an unreadable folder counts as
// empty.
struct TreeTotals {
    std::int64_t entries = 0;
    std::int64_t bytes = 0;
};
TreeTotals countTree(const std::string& path);

// Removes `path` and everything below it, opening up read-only folders first. For the app's
// own copies only: staging leftovers and items deleted from the vault. The observer hears of
// the entries and bytes removed so far before each next one; answering false stops the
// removal, part done, with kCancelled.
FileError removeTree(const std::string& path, const CopyObserver& observer = {});

// A survey as bytes, for handing it to the administrator's removal helper on a pipe.
std::string encodeSurvey(const TreeSurvey& survey);
bool decodeSurvey(std::string_view bytes, TreeSurvey& survey);

} // namespace platform
