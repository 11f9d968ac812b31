#pragma once

#include <string>
#include <vector>

namespace hdiutil {

// One invocation of the disk-image tool, as the vault engine spells it.
struct ToolCommand {
    enum class Verb { Create, Attach, Detach, Info, ChangePassword };
    Verb verb = Verb::Info;

    bool stdinPass = false;    // -stdinpass: the password comes on standard input
    bool oldStdinPass = false; // chpass -oldstdinpass
    bool newStdinPass = false; // chpass -newstdinpass
    bool plist = false;        // -plist: answer with a property list
    bool force = false;        // detach -force
    bool overwrite = false;    // create -ov
    bool puppetStrings = false; // -puppetstrings: progress as "PERCENT:<n>" lines on stdout
    std::string encryption;    // create -encryption
    std::string volumeName;    // create -volname
    std::string sourceFolder;  // create -srcfolder: a compressed copy of a folder
    std::string format;        // create -format
    std::string target;        // the image, the mount point or the copy's destination
};

// Parses an argument list; on a bad one returns false with `error` saying why.
bool parseToolCommand(const std::vector<std::string>& args, ToolCommand& command,
                      std::string& error);

} // namespace hdiutil
