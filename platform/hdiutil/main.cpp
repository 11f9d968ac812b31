// morvanta-hdiutil: the disk-image tool of Morvanta on Linux. It takes the argument lists and
// standard-input bytes of the macOS disk-image tool and carries them out with gocryptfs.

#include "HDIUtilTool.h"
#include "platform/Hardening.h"

#include <cstdio>
#include <unistd.h>

int main(int argc, char** argv) {
    platform::hardenProcess();

    std::vector<std::string> args(argv + 1, argv + argc);
    std::string out, err;
    const int status = hdiutil::runTool(args, hdiutil::ToolConfig{}, STDIN_FILENO, out, err);
    std::fwrite(out.data(), 1, out.size(), stdout);
    std::fwrite(err.data(), 1, err.size(), stderr);
    return status;
}
