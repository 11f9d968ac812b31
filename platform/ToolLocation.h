#pragma once

#include <string>

namespace platform {

// The disk-image tool the engine runs: /usr/bin/hdiutil on macOS; elsewhere Morvanta's own
// morvanta-hdiutil.
std::string hdiutilProgramPath();

// One of Morvanta's own helper programs: beside the executable in a build folder, otherwise
// in the installation's helper folder (/usr/libexec/morvanta beside /usr/bin).
std::string helperProgramPath(const std::string& name);

// The folder of the running executable.
std::string executableDirectory();

} // namespace platform
