#pragma once

// What the tool learns from /proc: the gocryptfs processes behind a vault, and whether the
// Morvanta that attached a vault still runs.

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace hdiutil {

// The gocryptfs processes serving a mount, found by the -fsname they were started with.
std::vector<pid_t> daemonsServing(const std::string& fsName);
// gocryptfs processes of anyone's making that name `folder` (an absolute path) among their
// arguments; relative arguments are taken from the process's working folder. Compared as
// text, so that no path on a hung mount is ever looked up.
std::vector<pid_t> gocryptfsProcessesNaming(const std::vector<std::string>& folders);

// Whether the processes all exited (or became zombies) within `limit`.
bool waitForExit(const std::vector<pid_t>& pids, std::chrono::milliseconds limit);
// Waits for the processes to exit, asks them to stop and finally kills them, so that a
// detached vault is served by nobody.
void endProcesses(const std::vector<pid_t>& pids, std::chrono::milliseconds grace);

// A process as it was when seen: a pid is reused once its process is gone, the pair of pid
// and start time (clock ticks after boot) is not.
struct ProcessIdentity {
    pid_t pid = 0;
    unsigned long long startTime = 0;
};
std::optional<ProcessIdentity> identityOf(pid_t pid);
bool isAlive(const ProcessIdentity& process);

// Who attached a mount, kept in a file beside its mount point in the private mount root, so
// that a later start of the app can tell its own running first instance's mount from one
// left by a crash. Unknown (empty) when there is no record we wrote.
bool recordOwner(const std::string& mountPoint, const ProcessIdentity& owner);
std::optional<ProcessIdentity> ownerOf(const std::string& mountPoint);
void forgetOwner(const std::string& mountPoint);

} // namespace hdiutil
