#pragma once

#include <functional>
#include <string>
#include <vector>

namespace hdiutil {

struct ToolConfig {
    // gocryptfs's scrypt cost for new vaults, as log2(N). 17 takes about 0.4 s and 128 MiB
    // per unlock here: twice gocryptfs's default, still quick to open.
    int scryptLogN = 17;
    // Called with a backup's archive after it is written and before it is verified; only
    // tests set it, to damage the archive.
    std::function<void(const std::string& archive)> beforeVerifying;
};

// Carries out one disk-image tool command with gocryptfs and fusermount3. Returns the exit
// status; `out` receives the answer (a property list where asked for) and `err` a one-line
// reason when the status is not 0. Passwords are read from `stdinFd` only.
int runTool(const std::vector<std::string>& args, const ToolConfig& config, int stdinFd,
            std::string& out, std::string& err);

} // namespace hdiutil
