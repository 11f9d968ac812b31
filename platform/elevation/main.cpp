// morvanta-remove-original: removes the original of an item that Morvanta has copied into the
// vault, when the user's own rights do not reach far enough. Morvanta runs it through pkexec,
// so polkit asks for an administrator's consent first, with the message of Morvanta's action.
//
// Usage: morvanta-remove-original /absolute/path < survey
// The survey (what Morvanta copied, entry by entry) arrives on standard input; only entries
// that are still exactly what was copied are removed, folders only once empty. Parts of the
// operating system are never removed, whatever the consent.

#include "platform/Files.h"
#include "platform/TreeRemoval.h"

#include <cstdio>
#include <filesystem>
#include <iterator>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    if (argc != 2 || argv[1][0] != '/') {
        std::fprintf(stderr, "usage: morvanta-remove-original /absolute/path < survey\n");
        return 2;
    }
    // The folders resolved, the item itself not: a link is removed, never what it points to.
    const fs::path given = fs::path(argv[1]).lexically_normal();
    std::error_code error;
    const fs::path folder = fs::canonical(given.parent_path(), error);
    const std::string path = (error ? given : folder / given.filename()).string();
    if (platform::isProtectedSystemPath(path, {})) {
        std::fprintf(stderr, "morvanta-remove-original: %s is part of the system\n", path.c_str());
        return 2;
    }
    const std::string input((std::istreambuf_iterator<char>(std::cin)), std::istreambuf_iterator<char>());
    platform::TreeSurvey survey;
    if (!platform::decodeSurvey(input, survey)) {
        std::fprintf(stderr, "morvanta-remove-original: no valid survey on standard input\n");
        return 2;
    }
    if (const platform::FileError failure = platform::removeSurveyed(path, survey, false)) {
        std::fprintf(stderr, "morvanta-remove-original: %s\n", failure->c_str());
        return 1;
    }
    return 0;
}
