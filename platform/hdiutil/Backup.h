#pragma once

#include "HDIUtilTool.h"
#include "ToolCommand.h"

#include <string>

namespace hdiutil {

// create -srcfolder MOUNT -format UDZO: a compressed, encrypted copy of an attached vault's
// contents. Returns the tool's answer (nothing); throws Failure.
std::string createCopy(const ToolCommand& command, const ToolConfig& config, int stdinFd);

} // namespace hdiutil
