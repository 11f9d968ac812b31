#include "ToolLocation.h"

#include <climits>
#include <filesystem>
#include <unistd.h>

namespace platform {

std::string executableDirectory() {
    std::error_code ec;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::string(".") : self.parent_path().string();
}

std::string helperProgramPath(const std::string& name) {
    const std::filesystem::path here = executableDirectory();
    const std::filesystem::path beside = here / name;
    if (::access(beside.c_str(), X_OK) == 0)
        return beside.string();
    // Written out in full: pkexec matches the path against the polkit action's.
    return (here / MORVANTA_HELPERS_FROM_BINDIR / name).lexically_normal().string();
}

std::string hdiutilProgramPath() {
#ifdef __APPLE__
    return "/usr/bin/hdiutil";
#else
    return helperProgramPath("morvanta-hdiutil");
#endif
}

} // namespace platform
