#pragma once

#include "HDIUtilTool.h"
#include "ToolCommand.h"

#include <functional>
#include <string>
#include <string_view>

namespace hdiutil {

// create -srcfolder MOUNT -format UDZO: a compressed, encrypted copy of an attached vault's
// contents. Returns the tool's answer (nothing); throws Failure.
std::string createCopy(const ToolCommand& command, const ToolConfig& config, int stdinFd);

// Reads 7-Zip's progress (-bsp1) as it arrives. Each update overwrites the one before behind
// a run of backspaces and starts with the percentage ("  42% 3 + name"); only that leading
// number counts, since a file name may hold a percent sign of its own. Chunks may end
// anywhere, even inside a number.
class SevenZipProgress {
public:
    void feed(std::string_view chunk, const std::function<void(int percent)>& onPercent);

private:
    std::string m_update; // the start of the update being read
};

} // namespace hdiutil
