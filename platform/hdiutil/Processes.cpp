#include "Processes.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace hdiutil {

namespace {

// Calls `visit` with the pid and arguments of every gocryptfs process.
void forEachGocryptfs(const std::function<void(pid_t, const std::vector<std::string>&)>& visit) {
    DIR* proc = ::opendir("/proc");
    if (!proc)
        return;
    while (const dirent* entry = ::readdir(proc)) {
        char* end = nullptr;
        const long pid = std::strtol(entry->d_name, &end, 10);
        if (pid <= 0 || *end != '\0')
            continue;
        std::ifstream file("/proc/" + std::string(entry->d_name) + "/cmdline", std::ios::binary);
        std::vector<std::string> argv;
        for (std::string arg; std::getline(file, arg, '\0');)
            argv.push_back(arg);
        if (!argv.empty() && fs::path(argv[0]).filename() == "gocryptfs")
            visit(static_cast<pid_t>(pid), argv);
    }
    ::closedir(proc);
}

// The fields of /proc/PID/stat after the command name, which may itself hold spaces and
// parentheses: [0] is the state (field 3), [19] the start time (field 22).
std::vector<std::string> statFields(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string stat;
    std::getline(file, stat);
    const std::size_t end = stat.rfind(')');
    std::vector<std::string> fields;
    if (end == std::string::npos)
        return fields;
    std::istringstream rest(stat.substr(end + 1));
    for (std::string field; rest >> field;)
        fields.push_back(field);
    return fields;
}

// A process that has exited but not yet been reaped (a zombie) counts as gone.
bool isRunning(pid_t pid) {
    const std::vector<std::string> fields = statFields(pid);
    return !fields.empty() && fields[0] != "Z" && fields[0] != "X";
}

void signalAll(const std::vector<pid_t>& pids, int signal) {
    for (const pid_t pid : pids)
        ::kill(pid, signal);
}

std::string ownerRecordPath(const std::string& mountPoint) {
    const fs::path path(mountPoint);
    // Mount points never start with a dot, so a record never takes a mount point's name.
    return (path.parent_path() / ("." + path.filename().string() + ".owner")).string();
}

} // namespace

std::vector<pid_t> daemonsServing(const std::string& fsName) {
    std::vector<pid_t> pids;
    forEachGocryptfs([&](pid_t pid, const std::vector<std::string>& argv) {
        for (std::size_t i = 1; i < argv.size(); ++i) {
            if ((argv[i] == "-fsname" && i + 1 < argv.size() && argv[i + 1] == fsName) ||
                argv[i] == "-fsname=" + fsName) {
                pids.push_back(pid);
                return;
            }
        }
    });
    return pids;
}

std::vector<pid_t> gocryptfsProcessesNaming(const std::vector<std::string>& folders) {
    std::vector<pid_t> pids;
    forEachGocryptfs([&](pid_t pid, const std::vector<std::string>& argv) {
        std::error_code ec;
        const fs::path cwd = fs::read_symlink("/proc/" + std::to_string(pid) + "/cwd", ec);
        for (std::size_t i = 1; i < argv.size(); ++i) {
            const fs::path arg(argv[i]);
            std::string path = (arg.is_absolute() ? arg : cwd / arg).lexically_normal().string();
            while (path.size() > 1 && path.back() == '/')
                path.pop_back();
            if (std::find(folders.begin(), folders.end(), path) != folders.end()) {
                pids.push_back(pid);
                return;
            }
        }
    });
    return pids;
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

void endProcesses(const std::vector<pid_t>& pids, std::chrono::milliseconds grace) {
    if (waitForExit(pids, grace))
        return;
    signalAll(pids, SIGTERM);
    if (waitForExit(pids, std::chrono::seconds(2)))
        return;
    signalAll(pids, SIGKILL);
    waitForExit(pids, std::chrono::seconds(1));
}

std::optional<ProcessIdentity> identityOf(pid_t pid) {
    const std::vector<std::string> fields = statFields(pid);
    if (fields.size() < 20)
        return std::nullopt;
    return ProcessIdentity{pid, std::strtoull(fields[19].c_str(), nullptr, 10)};
}

bool isAlive(const ProcessIdentity& process) {
    const std::optional<ProcessIdentity> now = identityOf(process.pid);
    return now && now->startTime == process.startTime && isRunning(process.pid);
}

bool recordOwner(const std::string& mountPoint, const ProcessIdentity& owner) {
    const std::string path = ownerRecordPath(mountPoint);
    ::unlink(path.c_str());
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0)
        return false;
    const std::string text =
        std::to_string(owner.pid) + " " + std::to_string(owner.startTime) + "\n";
    const bool written = ::write(fd, text.data(), text.size()) == ssize_t(text.size());
    ::close(fd);
    return written;
}

std::optional<ProcessIdentity> ownerOf(const std::string& mountPoint) {
    const std::string path = ownerRecordPath(mountPoint);
    // Only a plain file of this user counts: anything else was not written by us.
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode) || info.st_uid != ::getuid())
        return std::nullopt;
    std::ifstream file(path);
    long long pid = 0;
    unsigned long long startTime = 0;
    if (!(file >> pid >> startTime) || pid <= 0)
        return std::nullopt;
    return ProcessIdentity{static_cast<pid_t>(pid), startTime};
}

void forgetOwner(const std::string& mountPoint) {
    ::unlink(ownerRecordPath(mountPoint).c_str());
}

} // namespace hdiutil
