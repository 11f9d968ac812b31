#pragma once

#include <string>

namespace platform {

// Morvanta's private folder of the user, for its mount points and the socket that finds
// the running instance: "morvanta" in $XDG_RUNTIME_DIR when that is set and absolute, else
// in /run/user/UID when that is a folder of the user, else "morvanta-UID" in $TMPDIR or
// /tmp. Every process of the user finds the same folder whatever its environment lacks.
// Made when missing; always the user's own and mode 0700. Empty with `error` set when no
// safe folder can be had.
std::string privateRuntimeFolder(std::string& error);

} // namespace platform
