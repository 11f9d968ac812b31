#include "ToolCommand.h"

#include <functional>
#include <map>

namespace hdiutil {

namespace {

using Verb = ToolCommand::Verb;

struct Option {
    std::string* value = nullptr; // takes a value
    bool* flag = nullptr;         // or is a switch
};

bool parseOptions(const std::vector<std::string>& args, const std::map<std::string, Option>& known,
                  ToolCommand& command, bool needsTarget, std::string& error) {
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const auto option = known.find(arg);
        if (option != known.end()) {
            if (option->second.flag) {
                *option->second.flag = true;
            } else if (i + 1 < args.size()) {
                *option->second.value = args[++i];
            } else {
                error = arg + " needs a value";
                return false;
            }
        } else if (!arg.empty() && arg[0] == '-') {
            error = "unknown option " + arg + " for " + args[0];
            return false;
        } else if (command.target.empty() && needsTarget) {
            command.target = arg;
        } else {
            error = "unexpected argument " + arg;
            return false;
        }
    }
    if (needsTarget && command.target.empty()) {
        error = args[0] + " needs a path";
        return false;
    }
    return true;
}

} // namespace

bool parseToolCommand(const std::vector<std::string>& args, ToolCommand& command,
                      std::string& error) {
    command = ToolCommand{};
    if (args.empty()) {
        error = "no verb given (create, attach, detach, chpass or info)";
        return false;
    }
    const std::string& verb = args[0];
    // Accepted and checked, but meaningless for gocryptfs: it grows on demand and has no
    // file-system or container type of its own.
    std::string size, type, fileSystem;

    if (verb == "create") {
        command.verb = Verb::Create;
        const std::map<std::string, Option> known = {
            {"-encryption", {&command.encryption}}, {"-stdinpass", {nullptr, &command.stdinPass}},
            {"-size", {&size}},                     {"-type", {&type}},
            {"-fs", {&fileSystem}},                 {"-volname", {&command.volumeName}},
            {"-srcfolder", {&command.sourceFolder}}, {"-format", {&command.format}},
            {"-ov", {nullptr, &command.overwrite}}, {"-puppetstrings", {nullptr, &command.puppetStrings}}};
        if (!parseOptions(args, known, command, true, error))
            return false;
        if (command.encryption != "AES-256") {
            error = "only -encryption AES-256 is supported";
            return false;
        }
        if (!command.stdinPass) {
            error = "create needs -stdinpass: the password is read from standard input only";
            return false;
        }
        if (!type.empty() && type != "SPARSEBUNDLE") {
            error = "unsupported image type " + type + " (SPARSEBUNDLE only)";
            return false;
        }
        if (!command.format.empty() && command.format != "UDZO") {
            error = "unsupported image format " + command.format + " (UDZO only)";
            return false;
        }
        if (command.sourceFolder.empty() != command.format.empty()) {
            error = "-srcfolder and -format UDZO go together";
            return false;
        }
        return true;
    }
    if (verb == "attach") {
        command.verb = Verb::Attach;
        bool noBrowse = false; // our mounts are always private and hidden
        const std::map<std::string, Option> known = {{"-stdinpass", {nullptr, &command.stdinPass}},
                                                     {"-plist", {nullptr, &command.plist}},
                                                     {"-nobrowse", {nullptr, &noBrowse}}};
        if (!parseOptions(args, known, command, true, error))
            return false;
        if (!command.stdinPass) {
            error = "attach needs -stdinpass: the password is read from standard input only";
            return false;
        }
        return true;
    }
    if (verb == "detach") {
        command.verb = Verb::Detach;
        const std::map<std::string, Option> known = {{"-force", {nullptr, &command.force}}};
        return parseOptions(args, known, command, true, error);
    }
    if (verb == "chpass") {
        command.verb = Verb::ChangePassword;
        const std::map<std::string, Option> known = {
            {"-oldstdinpass", {nullptr, &command.oldStdinPass}},
            {"-newstdinpass", {nullptr, &command.newStdinPass}}};
        if (!parseOptions(args, known, command, true, error))
            return false;
        if (!command.oldStdinPass || !command.newStdinPass) {
            error = "chpass needs -oldstdinpass and -newstdinpass";
            return false;
        }
        return true;
    }
    if (verb == "info") {
        command.verb = Verb::Info;
        const std::map<std::string, Option> known = {{"-plist", {nullptr, &command.plist}}};
        return parseOptions(args, known, command, false, error);
    }
    error = "unknown verb " + verb;
    return false;
}

} // namespace hdiutil
