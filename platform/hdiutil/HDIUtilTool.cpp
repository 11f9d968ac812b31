#include "HDIUtilTool.h"

#include "Mounts.h"
#include "Password.h"
#include "ToolCommand.h"
#include "platform/Process.h"

#include <plist/plist.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <dirent.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace hdiutil {

namespace {

constexpr const char* kVolumeNameAttribute = "user.morvanta.volname";
constexpr const char* kConfigFile = "gocryptfs.conf";

// A failed step: the reason becomes the tool's one line on standard error.
struct Failure {
    std::string reason;
};

std::string findProgram(const char* name) {
    for (const char* dir : {"/usr/bin/", "/usr/local/bin/", "/bin/"}) {
        const std::string path = std::string(dir) + name;
        if (::access(path.c_str(), X_OK) == 0)
            return path;
    }
    throw Failure{std::string(name) + " is not installed"};
}

std::string lastLine(std::string_view text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' '))
        text.remove_suffix(1);
    const std::size_t start = text.rfind('\n');
    return std::string(start == std::string_view::npos ? text : text.substr(start + 1));
}

std::string reasonOf(const platform::ProcessResult& run, const std::string& what) {
    const std::string line = lastLine(run.err.empty() ? run.out : run.err);
    if (!line.empty())
        return line;
    return what + " exited with status " + std::to_string(run.status);
}

std::string absolutePath(const std::string& path) {
    std::error_code ec;
    const fs::path absolute = fs::absolute(path, ec);
    std::string text = (ec ? fs::path(path) : absolute).lexically_normal().string();
    while (text.size() > 1 && text.back() == '/')
        text.pop_back();
    return text;
}

bool isDirectory(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool exists(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0;
}

bool isEmptyDirectory(const std::string& path) {
    DIR* dir = ::opendir(path.c_str());
    if (!dir)
        return false;
    bool empty = true;
    while (const dirent* entry = ::readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            empty = false;
            break;
        }
    }
    ::closedir(dir);
    return empty;
}

// The image must be a gocryptfs folder; its canonical path names its mounts.
std::string canonicalImage(const std::string& target) {
    const std::string image = absolutePath(target);
    if (!isDirectory(image) || !exists(image + "/" + kConfigFile))
        throw Failure{"not a recognized disk image: " + image};
    char resolved[PATH_MAX];
    if (!::realpath(image.c_str(), resolved))
        throw Failure{image + ": " + std::strerror(errno)};
    return resolved;
}

Secret readPassword(int stdinFd) {
    const Secret input = readAllSecret(stdinFd);
    std::vector<Secret> passwords = splitPasswords(input, 1);
    if (const std::string problem = passwordProblem(passwords[0].bytes()); !problem.empty())
        throw Failure{problem};
    return std::move(passwords[0]);
}

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
    return name;
}

// Mount points are named after the volume; a second vault with the same name gets
// "Name 1", "Name 2", … as on macOS.
std::string chooseMountPoint(const std::string& root, const std::string& volumeName) {
    const std::vector<MountEntry> mounts = currentMounts();
    for (int n = 0; n < 100; ++n) {
        const std::string candidate =
            root + "/" + volumeName + (n == 0 ? std::string() : " " + std::to_string(n));
        if (mountAt(mounts, candidate))
            continue;
        if (!exists(candidate)) {
            if (::mkdir(candidate.c_str(), 0700) == 0)
                return candidate;
            continue;
        }
        if (isDirectory(candidate) && isEmptyDirectory(candidate) &&
            ::chmod(candidate.c_str(), 0700) == 0)
            return candidate;
    }
    throw Failure{"no free mount point for " + volumeName + " in " + root};
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

// The gocryptfs processes serving a mount, found by the -fsname they were started with.
std::vector<pid_t> daemonsServing(const std::string& fsName) {
    std::vector<pid_t> pids;
    DIR* proc = ::opendir("/proc");
    if (!proc)
        return pids;
    while (const dirent* entry = ::readdir(proc)) {
        char* end = nullptr;
        const long pid = std::strtol(entry->d_name, &end, 10);
        if (pid <= 0 || *end != '\0')
            continue;
        std::ifstream file("/proc/" + std::string(entry->d_name) + "/cmdline", std::ios::binary);
        std::vector<std::string> argv;
        for (std::string arg; std::getline(file, arg, '\0');)
            argv.push_back(arg);
        if (argv.empty() || fs::path(argv[0]).filename() != "gocryptfs")
            continue;
        for (std::size_t i = 1; i < argv.size(); ++i) {
            if ((argv[i] == "-fsname" && i + 1 < argv.size() && argv[i + 1] == fsName) ||
                argv[i] == "-fsname=" + fsName) {
                pids.push_back(static_cast<pid_t>(pid));
                break;
            }
        }
    }
    ::closedir(proc);
    return pids;
}

// A process that has exited but not yet been reaped (a zombie) counts as gone.
bool isRunning(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string stat;
    std::getline(file, stat);
    const std::size_t end = stat.rfind(')');
    if (end == std::string::npos || end + 2 >= stat.size())
        return false;
    const char state = stat[end + 2];
    return state != 'Z' && state != 'X';
}

bool waitForExit(const std::vector<pid_t>& pids, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        bool anyAlive = false;
        for (const pid_t pid : pids)
            anyAlive = anyAlive || isRunning(pid);
        if (!anyAlive)
            return true;
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

void signalAll(const std::vector<pid_t>& pids, int signal) {
    for (const pid_t pid : pids)
        ::kill(pid, signal);
}

// Removes a file on every path out unless told to keep it.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string path) : m_path(std::move(path)) {}
    ~TemporaryFile() {
        if (!m_path.empty())
            ::unlink(m_path.c_str());
    }
    const std::string& path() const { return m_path; }
    void keep() { m_path.clear(); }

private:
    std::string m_path;
};

// --- the verbs ---------------------------------------------------------------------------

// A compressed, encrypted copy of a folder: a 7-Zip archive (AES-256, names encrypted too)
// that any archive manager opens with the password. It is written beside the destination and
// renamed over it only when complete, so a failure never costs an earlier backup.
std::string createCopy(const ToolCommand& command, const ToolConfig& config, int stdinFd) {
    const std::string source = absolutePath(command.sourceFolder);
    if (!isDirectory(source))
        throw Failure{"No such folder: " + source};
    const std::string destination = absolutePath(command.target);
    const std::string folder = fs::path(destination).parent_path().string();
    if (!isDirectory(folder))
        throw Failure{"No such folder: " + folder};
    if (isDirectory(destination))
        throw Failure{destination + " is a folder"};
    if (exists(destination) && !command.overwrite)
        throw Failure{"File exists: " + destination};
    const std::string sevenZip = findProgram("7z");
    const Secret password = readPassword(stdinFd);

    std::string pattern = destination + ".partial-XXXXXX";
    const int fd = ::mkstemp(pattern.data());
    if (fd < 0)
        throw Failure{folder + ": " + std::strerror(errno)};
    ::close(fd);
    TemporaryFile partial(pattern);
    // 7z adds to an archive that exists; it must start from nothing.
    ::unlink(partial.path().c_str());

    // Run inside the folder so that the archive holds its contents at the top, hidden files
    // and all. -mx=1: the fast setting; higher levels cost several times the time for little.
    const Secret line = password.asLine();
    const platform::ProcessResult run = platform::runProcess(
        sevenZip, {"a", "-t7z", "-mhe=on", "-mx=1", "-bd", "-p", "-snl", "-y", partial.path(), "."},
        line.bytes(), platform::OutputCapture::MemoryFiles, source);
    if (run.status != 0)
        throw Failure{"7z: " + reasonOf(run, "7z")};

    // A backup is only a backup once it has been read back: opened with the password and
    // every file checked. One that fails is never put in place of the previous one. (Without
    // -p, 7z asks for the password on standard input; a bare -p would mean an empty one.)
    if (config.beforeVerifying)
        config.beforeVerifying(partial.path());
    const platform::ProcessResult check = platform::runProcess(
        sevenZip, {"t", "-bd", partial.path()}, line.bytes(),
        platform::OutputCapture::MemoryFiles);
    if (check.status != 0)
        throw Failure{"the backup could not be read back: " + reasonOf(check, "7z t")};
    ::chmod(partial.path().c_str(), 0600);
    if (::rename(partial.path().c_str(), destination.c_str()) != 0)
        throw Failure{destination + ": " + std::strerror(errno)};
    partial.keep();
    return {};
}

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
    const std::vector<Secret> passwords = splitPasswords(input, 2);
    if (const std::string problem = passwordProblem(passwords[0].bytes()); !problem.empty())
        throw Failure{"Password incorrect."};
    if (const std::string problem = passwordProblem(passwords[1].bytes()); !problem.empty())
        throw Failure{"new password: " + problem};

    // Left by a re-key that was interrupted; the configuration itself is replaced
    // atomically, so the leftover is garbage, and gocryptfs refuses to start while it is there.
    ::unlink((image + "/gocryptfs.conf.tmp").c_str());

    std::string lines;
    lines.reserve(passwords[0].bytes().size() + passwords[1].bytes().size() + 2);
    lines.append(passwords[0].bytes()).append("\n").append(passwords[1].bytes()).append("\n");
    const Secret both(std::move(lines));
    const platform::ProcessResult run =
        platform::runProcess(gocryptfs, {"-passwd", "-q", image}, both.bytes());
    if (run.status != 0)
        throw Failure{reasonOf(run, "gocryptfs -passwd")};
    return {};
}

std::string attach(const ToolCommand& command, int stdinFd) {
    const std::string image = canonicalImage(command.target);
    if (const auto mounted = mountOfImage(currentMounts(), image))
        throw Failure{"the image is already attached at " + mounted->mountPoint};
    const std::string gocryptfs = findProgram("gocryptfs");
    const Secret password = readPassword(stdinFd);

    std::string error;
    const std::string root = privateMountRoot(error);
    if (root.empty())
        throw Failure{error};
    const std::string mountPoint = chooseMountPoint(root, volumeNameOf(image));
    const std::string fsName = fsNameForImage(image);

    // gocryptfs leaves a daemon that keeps its outputs open: they must not be pipes that
    // anyone waits on, so they go to in-memory files.
    const Secret line = password.asLine();
    const platform::ProcessResult run = platform::runProcess(
        gocryptfs,
        // -acl: ACLs are kept like any other attribute of the files moved in.
        {"-q", "-nosyslog", "-acl", "-fsname", fsName, "-ko", "nosuid,nodev", image, mountPoint},
        line.bytes(), platform::OutputCapture::MemoryFiles);
    if (run.status != 0) {
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

std::string detach(const ToolCommand& command) {
    const std::string mountPoint = absolutePath(command.target);
    const auto mounted = mountAt(currentMounts(), mountPoint);
    if (!mounted)
        throw Failure{"not attached: " + mountPoint};
    if (mounted->fsType != kFsType || !imageForFsName(mounted->source))
        throw Failure{mountPoint + " was not attached by this tool"};

    // Found before the unmount, while the mount still names them.
    const std::vector<pid_t> daemons =
        command.force ? daemonsServing(mounted->source) : std::vector<pid_t>{};
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
    // reading the vault. (After a plain unmount the daemon has nothing left and exits.)
    if (!waitForExit(daemons, std::chrono::milliseconds(300))) {
        signalAll(daemons, SIGTERM);
        if (!waitForExit(daemons, std::chrono::seconds(2)))
            signalAll(daemons, SIGKILL);
    }
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
