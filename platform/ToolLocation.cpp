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

std::string hdiutilProgramPath() {
#ifdef __APPLE__
    return "/usr/bin/hdiutil";
#else
    return executableDirectory() + "/morvanta-hdiutil";
#endif
}

} // namespace platform
