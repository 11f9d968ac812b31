// The disk-image tool as shipped, but with gocryptfs's cheapest key derivation.

#include "platform/hdiutil/HDIUtilTool.h"

#include <cstdio>
#include <unistd.h>

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    std::string out, err;
    const int status = hdiutil::runTool(args, hdiutil::ToolConfig{10}, STDIN_FILENO, out, err);
    std::fwrite(out.data(), 1, out.size(), stdout);
    std::fwrite(err.data(), 1, err.size(), stderr);
    return status;
}
