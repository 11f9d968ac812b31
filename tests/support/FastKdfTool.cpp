// The disk-image tool as shipped, but with gocryptfs's cheapest key derivation. With
// MORVANTA_TEST_DAMAGE_BACKUP=1 it damages each backup before verifying it.

#include "platform/hdiutil/HDIUtilTool.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    std::string out, err;
    hdiutil::ToolConfig config{10, {}};
    if (const char* damage = std::getenv("MORVANTA_TEST_DAMAGE_BACKUP"); damage && *damage == '1') {
        config.beforeVerifying = [](const std::string& archive) {
            std::fstream file(archive, std::ios::in | std::ios::out | std::ios::binary);
            file.seekp(48);
            file.write("damage", 6);
        };
    }
    const int status = hdiutil::runTool(args, config, STDIN_FILENO, out, err);
    std::fwrite(out.data(), 1, out.size(), stdout);
    std::fwrite(err.data(), 1, err.size(), stderr);
    return status;
}
