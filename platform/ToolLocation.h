#pragma once

#include <string>

namespace platform {

// The disk-image tool the engine runs: /usr/bin/hdiutil on macOS; elsewhere Morvanta's own
// morvanta-hdiutil, which is installed beside the application's executable.
std::string hdiutilProgramPath();

// The folder of the running executable.
std::string executableDirectory();

} // namespace platform
