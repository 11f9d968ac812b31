#include "Backup.h"

#include "Mounts.h"
#include "ToolSteps.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace hdiutil {

namespace {

// Asked to stop (the app cancelled the backup, or the session is ending): 7z is stopped and
// the unfinished archive removed on the way out, so nothing half-written stays beside the
// destination and the previous backup is untouched.
std::atomic<bool> g_stopRequested = false;

void requestStop(int) { g_stopRequested = true; }

void stopOnTermination() {
    struct sigaction action {};
    action.sa_handler = requestStop;
    sigemptyset(&action.sa_mask);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(signal, &action, nullptr);
}


// Only a vault this tool attached is copied. A plain folder where a mount used to be (the
// mount vanished from outside) is empty or worse, and an archive of it put in place of the
// last good backup would lose everything that backup held.
void requireAttachedVault(const std::string& source) {
    const auto mounted = mountAt(currentMounts(), source);
    if (!mounted)
        throw Failure{source + " is not an attached vault: nothing to back up"};
    if (mounted->fsType != kFsType || !imageForFsName(mounted->source))
        throw Failure{source + " was not attached by this tool"};
}

// What is at the destination may only be replaced when it is a file: renaming over a link
// would drop the link rather than write where it points, and folders, pipes and devices
// are nothing a backup should take the place of.
void requireReplaceableDestination(const std::string& destination, bool overwrite) {
    struct stat info {};
    if (::lstat(destination.c_str(), &info) != 0)
        return;
    if (S_ISDIR(info.st_mode))
        throw Failure{destination + " is a folder"};
    if (S_ISLNK(info.st_mode))
        throw Failure{destination + " is a symbolic link, which a backup does not replace"};
    if (!S_ISREG(info.st_mode))
        throw Failure{destination + " is not a regular file, which a backup does not replace"};
    if (!overwrite)
        throw Failure{"File exists: " + destination};
}

// What the app is told of a backup's progress, as the disk-image tool tells it with
// -puppetstrings: "PERCENT:<n>" lines, each written out at once. Writing the archive takes
// most of the time; reading it back, far faster, takes the last tenth.
class ProgressLines {
public:
    explicit ProgressLines(bool wanted) : m_wanted(wanted) {}
    void writing(int percent) { report(percent * 9 / 10); }
    void checking(int percent) { report(90 + percent / 10); }

private:
    void report(int percent) {
        if (!m_wanted || percent <= m_last)
            return;
        m_last = percent;
        std::printf("PERCENT:%d\n", percent);
        std::fflush(stdout);
    }
    bool m_wanted;
    int m_last = -1;
};

} // namespace

void SevenZipProgress::feed(std::string_view chunk, const std::function<void(int)>& onPercent) {
    for (const char c : chunk) {
        if (c != '\b' && c != '\r' && c != '\n') {
            // The percentage is all that is wanted of an update: its start is enough.
            if (m_update.size() < 16)
                m_update.push_back(c);
            continue;
        }
        const std::size_t start = m_update.find_first_not_of(' ');
        std::size_t end = start;
        while (end < m_update.size() && end - start < 3 && m_update[end] >= '0' && m_update[end] <= '9')
            ++end;
        if (start != std::string::npos && end > start && end < m_update.size() && m_update[end] == '%')
            onPercent(std::min(100, std::stoi(m_update.substr(start, end - start))));
        m_update.clear();
    }
}

// A 7-Zip archive (AES-256, names encrypted too) that any archive manager opens with the
// password. It is written beside the destination and renamed over it only when complete, so
// a failure never costs an earlier backup.
std::string createCopy(const ToolCommand& command, const ToolConfig& config, int stdinFd) {
    const std::string source = absolutePath(command.sourceFolder);
    requireAttachedVault(source);
    const std::string destination = absolutePath(command.target);
    const std::string folder = fs::path(destination).parent_path().string();
    if (!isDirectory(folder))
        throw Failure{"No such folder: " + folder};
    requireReplaceableDestination(destination, command.overwrite);
    const std::string sevenZip = findProgram("7z");
    const Secret password = readPassword(stdinFd);
    stopOnTermination();
    const platform::StopWhen stop(&g_stopRequested);

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
    ProgressLines progress(command.puppetStrings);
    SevenZipProgress writing;
    const platform::ProcessResult run = platform::runProcess(
        sevenZip, {"a", "-t7z", "-mhe=on", "-mx=1", "-bsp1", "-p", "-snl", "-y", partial.path(), "."},
        line.bytes(), platform::OutputCapture::MemoryFiles, source, [&](std::string_view chunk) {
            writing.feed(chunk, [&](int percent) { progress.writing(percent); });
        });
    if (g_stopRequested)
        throw Failure{"the backup was cancelled"};
    if (run.status != 0)
        throw Failure{"7z: " + reasonOf(run, "7z")};

    // A backup is only a backup once it has been read back: opened with the password and
    // every file checked. One that fails is never put in place of the previous one. (Without
    // -p, 7z asks for the password on standard input; a bare -p would mean an empty one.)
    if (config.beforeVerifying)
        config.beforeVerifying(partial.path());
    SevenZipProgress checking;
    const platform::ProcessResult check = platform::runProcess(
        sevenZip, {"t", "-bsp1", partial.path()}, line.bytes(), platform::OutputCapture::MemoryFiles,
        {}, [&](std::string_view chunk) {
            checking.feed(chunk, [&](int percent) { progress.checking(percent); });
        });
    if (g_stopRequested)
        throw Failure{"the backup was cancelled"};
    if (check.status != 0)
        throw Failure{"the backup could not be read back: " + reasonOf(check, "7z t")};
    // A small archive is read back before 7-Zip says more than "0%".
    progress.checking(100);
    ::chmod(partial.path().c_str(), 0600);
    // Checked again: something may have been put there while the archive was written.
    requireReplaceableDestination(destination, command.overwrite);
    if (::rename(partial.path().c_str(), destination.c_str()) != 0)
        throw Failure{destination + ": " + std::strerror(errno)};
    partial.keep();
    return {};
}

} // namespace hdiutil
