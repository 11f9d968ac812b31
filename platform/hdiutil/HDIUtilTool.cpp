#include "HDIUtilTool.h"

#include "Backup.h"
#include "Mounts.h"
#include "Processes.h"
#include "ToolCommand.h"
#include "ToolSteps.h"

#include <plist/plist.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace hdiutil {

namespace {

constexpr const char* kVolumeNameAttribute = "user.morvanta.volname";

std::string volumeNameOf(const std::string& image) {
    char buffer[256];
    const ssize_t n = ::getxattr(image.c_str(), kVolumeNameAttribute, buffer, sizeof buffer);
    std::string name = n > 0 ? std::string(buffer, static_cast<std::size_t>(n))
                             : fs::path(image).stem().string();
    // A volume name is one path component.
    for (char& c : name) {
        if (c == '/' || c == '\0' || c == '\n')
            c = ':';
    }
    if (name.empty() || name == "." || name == "..")
        name = "untitled";
    // Names with a leading dot are kept for the records beside the mount points.
    if (name.front() == '.')
        name.front() = '_';
    return name;
}

std::string plistXml(plist_t root) {
    char* xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(root, &xml, &length);
    std::string text(xml ? xml : "", length);
    plist_to_xml_free(xml);
    plist_free(root);
    return text;
}

plist_t systemEntities(const std::string& mountPoint) {
    plist_t entity = plist_new_dict();
    plist_dict_set_item(entity, "mount-point", plist_new_string(mountPoint.c_str()));
    plist_dict_set_item(entity, "volume-kind", plist_new_string("gocryptfs"));
    plist_t entities = plist_new_array();
    plist_array_append_item(entities, entity);
    return entities;
}

// --- the verbs ---------------------------------------------------------------------------

std::string create(const ToolCommand& command, const ToolConfig& config, int stdinFd) {
    if (!command.sourceFolder.empty())
        return createCopy(command, config, stdinFd);
    if (command.overwrite)
        throw Failure{"-ov only goes with -srcfolder: a vault is never overwritten"};

    const std::string image = absolutePath(command.target);
    if (exists(image))
        throw Failure{"File exists: " + image};
    if (!isDirectory(fs::path(image).parent_path().string()))
        throw Failure{"No such folder: " + fs::path(image).parent_path().string()};
    const std::string gocryptfs = findProgram("gocryptfs");
    const Secret password = readPassword(stdinFd);

    if (::mkdir(image.c_str(), 0700) != 0)
        throw Failure{image + ": " + std::strerror(errno)};
    const Secret line = password.asLine();
    const platform::ProcessResult run = platform::runProcess(
        gocryptfs, {"-init", "-q", "-scryptn", std::to_string(config.scryptLogN), image},
        line.bytes());
    if (run.status != 0) {
        fs::remove_all(image); // a failed -init writes nothing, but be sure
        throw Failure{reasonOf(run, "gocryptfs -init")};
    }
    // Where the file system has no user attributes the folder's name stands in.
    const std::string& name = command.volumeName;
    if (!name.empty())
        ::setxattr(image.c_str(), kVolumeNameAttribute, name.data(), name.size(), 0);
    return {};
}

// Re-keys a detached vault: gocryptfs re-encrypts its master key under the new password.
std::string changePassword(const ToolCommand& command, int stdinFd) {
    const std::string image = canonicalImage(command.target);
    if (const auto mounted = mountOfImage(currentMounts(), image))
        throw Failure{"the image is attached at " + mounted->mountPoint};
    const std::string gocryptfs = findProgram("gocryptfs");

    const Secret input = readAllSecret(stdinFd);
    const auto passwords = splitPasswordPair(input);
    if (!passwords)
        throw Failure{"expected the old and the new password, each ended by one NUL character"};
    const auto& [oldPassword, newPassword] = *passwords;
    if (const std::string problem = passwordProblem(oldPassword.bytes()); !problem.empty())
        throw Failure{"Password incorrect."};
    if (const std::string problem = passwordProblem(newPassword.bytes()); !problem.empty())
        throw Failure{"new password: " + problem};

    // Left by a re-key that was interrupted; the configuration itself is replaced
    // atomically, so the leftover is garbage, and gocryptfs refuses to start while it is there.
    ::unlink((image + "/gocryptfs.conf.tmp").c_str());

    std::string lines;
    lines.reserve(oldPassword.bytes().size() + newPassword.bytes().size() + 2);
    lines.append(oldPassword.bytes()).append("\n").append(newPassword.bytes()).append("\n");
    const Secret both(std::move(lines));
    const platform::ProcessResult run =
        platform::runProcess(gocryptfs, {"-passwd", "-q", image}, both.bytes());
    if (run.status != 0)
        throw Failure{reasonOf(run, "gocryptfs -passwd")};
    return {};
}

// gocryptfs mounts one vault twice without complaint, and two daemons writing one vault
// damage it: a vault that gocryptfs serves outside Morvanta (mounted by hand, or being
// re-keyed) is left alone. Such a mount names the vault's absolute path, commas replaced.
void refuseVaultServedElsewhere(const std::string& image, const std::string& given) {
    const std::vector<std::string> names{image, given};
    for (const MountEntry& entry : currentMounts()) {
        for (std::string name : names) {
            std::replace(name.begin(), name.end(), ',', '_');
            if (entry.fsType == kFsType && entry.source == name)
                throw Failure{"the vault is already mounted by gocryptfs at " + entry.mountPoint};
        }
    }
    // A daemon whose mount was just taken away from outside needs a moment to exit.
    const std::vector<pid_t> pids = gocryptfsProcessesNaming(names);
    if (!waitForExit(pids, std::chrono::seconds(1)))
        throw Failure{"gocryptfs is already running on the vault (process " +
                      std::to_string(pids.front()) + ")"};
}

std::string attach(const ToolCommand& command, int stdinFd) {
    const std::string image = canonicalImage(command.target);
    if (const auto mounted = mountOfImage(currentMounts(), image))
        throw Failure{"the image is already attached at " + mounted->mountPoint};
    refuseVaultServedElsewhere(image, absolutePath(command.target));
    const std::string gocryptfs = findProgram("gocryptfs");
    const Secret password = readPassword(stdinFd);

    std::string error;
    const std::string root = privateMountRoot(error);
    if (root.empty())
        throw Failure{error};
    const std::string mountPoint = chooseMountPoint(root, volumeNameOf(image));
    const std::string fsName = fsNameForImage(image);
    // Our caller is the app that will hold the vault open.
    if (const auto owner = identityOf(::getppid()))
        recordOwner(mountPoint, *owner);

    // gocryptfs leaves a daemon that keeps its outputs open: they must not be pipes that
    // anyone waits on, so they go to in-memory files.
    const Secret line = password.asLine();
    const platform::ProcessResult run = platform::runProcess(
        gocryptfs,
        // -acl: ACLs are kept like any other attribute of the files moved in.
        {"-q", "-nosyslog", "-acl", "-fsname", fsName, "-ko", "nosuid,nodev", image, mountPoint},
        line.bytes(), platform::OutputCapture::MemoryFiles);
    if (run.status != 0) {
        forgetOwner(mountPoint);
        ::rmdir(mountPoint.c_str());
        throw Failure{reasonOf(run, "gocryptfs")};
    }
    const auto mounted = mountAt(currentMounts(), mountPoint);
    if (!mounted || mounted->source != fsName)
        throw Failure{"gocryptfs reported success but " + mountPoint + " is not mounted"};

    if (!command.plist)
        return mountPoint + "\n";
    plist_t root_ = plist_new_dict();
    plist_dict_set_item(root_, "system-entities", systemEntities(mountPoint));
    return plistXml(root_);
}

// A mount that vanished from outside leaves its folder behind, and its daemon may still be
// on its way out (or serving files opened before a lazy unmount). Only what belongs to our
// own private mount root is touched, and only an empty folder is taken away.
void clearVanishedMount(const std::string& mountPoint) {
    std::string error;
    const std::string root = privateMountRoot(error);
    struct stat info {};
    if (root.empty() || fs::path(mountPoint).parent_path() != root ||
        ::lstat(mountPoint.c_str(), &info) != 0 || !S_ISDIR(info.st_mode))
        return;
    endProcesses(gocryptfsProcessesNaming({mountPoint}), std::chrono::milliseconds(300));
    if (::rmdir(mountPoint.c_str()) == 0)
        forgetOwner(mountPoint);
}

std::string detach(const ToolCommand& command) {
    const std::string mountPoint = absolutePath(command.target);
    const auto mounted = mountAt(currentMounts(), mountPoint);
    if (!mounted) {
        clearVanishedMount(mountPoint);
        throw Failure{"not attached: " + mountPoint};
    }
    if (mounted->fsType != kFsType || !imageForFsName(mounted->source))
        throw Failure{mountPoint + " was not attached by this tool"};

    // Found before the unmount, while the mount still names them.
    const std::vector<pid_t> daemons = daemonsServing(mounted->source);
    const std::string fusermount = findProgram("fusermount3");
    // A lazy unmount takes the volume away at once even while files on it are open; the
    // daemon goes on serving those until they close, unless stopped below.
    const std::vector<std::string> args =
        command.force ? std::vector<std::string>{"-u", "-z", mountPoint}
                      : std::vector<std::string>{"-u", mountPoint};
    const platform::ProcessResult run = platform::runProcess(fusermount, args, std::nullopt);
    // fusermount3 exits 1 for every error, so the mount table says what happened.
    if (mountAt(currentMounts(), mountPoint))
        throw Failure{reasonOf(run, "fusermount3")};

    // Forced means locked now: whatever still holds a file open loses it rather than keep
    // reading the vault. After a plain unmount the daemon has nothing left and exits; it is
    // waited for all the same, so that the next attach finds the vault served by nobody.
    endProcesses(daemons, std::chrono::milliseconds(300));
    forgetOwner(mountPoint);
    // An empty folder left behind would catch files saved "into the vault" in plain text.
    ::rmdir(mountPoint.c_str());
    return {};
}

std::string info(const ToolCommand& command) {
    const std::vector<MountEntry> own = ownMounts(currentMounts());
    if (!command.plist) {
        std::string text;
        for (const MountEntry& entry : own)
            text += "image-path: " + *imageForFsName(entry.source) + "\n\t" + entry.mountPoint + "\n";
        return text;
    }
    plist_t images = plist_new_array();
    for (const MountEntry& entry : own) {
        plist_t image = plist_new_dict();
        plist_dict_set_item(image, "image-path",
                            plist_new_string(imageForFsName(entry.source)->c_str()));
        plist_dict_set_item(image, "system-entities", systemEntities(entry.mountPoint));
        // Whether the app that attached it still runs; left out when nobody knows.
        if (const auto owner = ownerOf(entry.mountPoint))
            plist_dict_set_item(image, "owner-alive", plist_new_bool(isAlive(*owner)));
        plist_array_append_item(images, image);
    }
    plist_t root = plist_new_dict();
    plist_dict_set_item(root, "images", images);
    return plistXml(root);
}

const char* verbName(ToolCommand::Verb verb) {
    switch (verb) {
    case ToolCommand::Verb::Create:
        return "create";
    case ToolCommand::Verb::Attach:
        return "attach";
    case ToolCommand::Verb::Detach:
        return "detach";
    case ToolCommand::Verb::ChangePassword:
        return "chpass";
    case ToolCommand::Verb::Info:
        return "info";
    }
    return "";
}

} // namespace

int runTool(const std::vector<std::string>& args, const ToolConfig& config, int stdinFd,
            std::string& out, std::string& err) {
    ToolCommand command;
    std::string usageError;
    if (!parseToolCommand(args, command, usageError)) {
        err = "morvanta-hdiutil: " + usageError + "\n";
        return 2;
    }
    try {
        switch (command.verb) {
        case ToolCommand::Verb::Create:
            out = create(command, config, stdinFd);
            break;
        case ToolCommand::Verb::Attach:
            out = attach(command, stdinFd);
            break;
        case ToolCommand::Verb::Detach:
            out = detach(command);
            break;
        case ToolCommand::Verb::Info:
            out = info(command);
            break;
        case ToolCommand::Verb::ChangePassword:
            out = changePassword(command, stdinFd);
            break;
        }
    } catch (const Failure& failure) {
        err = std::string("morvanta-hdiutil: ") + verbName(command.verb) + " failed - " +
              failure.reason + "\n";
        return 1;
    }
    return 0;
}

} // namespace hdiutil
