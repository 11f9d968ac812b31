#include "Process.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace platform {

namespace {

// Closes a descriptor when it goes out of scope, so that no early return leaks one into a
// later child.
class Fd {
public:
    Fd() = default;
    explicit Fd(int fd) : m_fd(fd) {}
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    ~Fd() { reset(); }

    int get() const { return m_fd; }
    bool valid() const { return m_fd >= 0; }
    void reset(int fd = -1) {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = fd;
    }

private:
    int m_fd = -1;
};

struct PipeFds {
    Fd read;
    Fd write;
    bool open() {
        int fds[2];
        if (::pipe2(fds, O_CLOEXEC) != 0)
            return false;
        read.reset(fds[0]);
        write.reset(fds[1]);
        return true;
    }
};

std::string readToEnd(int fd) {
    std::string data;
    char buffer[4096];
    for (;;) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n > 0)
            data.append(buffer, static_cast<std::size_t>(n));
        else if (n == 0 || errno != EINTR)
            break;
    }
    return data;
}

std::string readMemoryFile(int fd) {
    if (::lseek(fd, 0, SEEK_SET) != 0)
        return {};
    return readToEnd(fd);
}

// Writes everything, with SIGPIPE held back: a child that exits without reading its input
// must not take this process down with it.
void writeAllIgnoringPipe(int fd, std::string_view bytes) {
    sigset_t pipeSet, oldSet;
    sigemptyset(&pipeSet);
    sigaddset(&pipeSet, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipeSet, &oldSet);

    bool brokenPipe = false;
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n > 0) {
            done += static_cast<std::size_t>(n);
        } else if (n < 0 && errno == EINTR) {
            continue;
        } else {
            brokenPipe = (n < 0 && errno == EPIPE);
            break;
        }
    }

    if (brokenPipe && !sigismember(&oldSet, SIGPIPE)) {
        const timespec noWait{0, 0};
        while (sigtimedwait(&pipeSet, nullptr, &noWait) > 0) {
        }
    }
    pthread_sigmask(SIG_SETMASK, &oldSet, nullptr);
}

thread_local const std::atomic<bool>* t_stop = nullptr;

int waitForExit(pid_t pid) {
    int raw = 0;
    bool asked = false;
    for (;;) {
        const pid_t done = ::waitpid(pid, &raw, t_stop ? WNOHANG : 0);
        if (done == pid)
            break;
        if (done < 0 && errno != EINTR)
            return -1;
        if (done == 0) {
            if (!asked && t_stop->load()) {
                ::kill(pid, SIGTERM);
                asked = true;
            }
            ::usleep(5000);
        }
    }
    if (WIFEXITED(raw))
        return WEXITSTATUS(raw);
    if (WIFSIGNALED(raw))
        return 128 + WTERMSIG(raw);
    return -1;
}

// Reads standard output as it arrives, and standard error beside it when that is a pipe too
// (a child blocked on a full error pipe would never finish its output), until both end. A
// stop asked for meanwhile ends the child as waitForExit would.
void readWhileRunning(int out, int err, pid_t pid, const OutputChunks& onOutput,
                      ProcessResult& result) {
    pollfd fds[2] = {{out, POLLIN, 0}, {err, POLLIN, 0}};
    std::string* into[2] = {&result.out, &result.err};
    bool asked = false;
    char buffer[4096];
    while (fds[0].fd >= 0 || fds[1].fd >= 0) {
        // Woken now and then to look at the stop, which has no descriptor of its own.
        const int ready = ::poll(fds, 2, t_stop ? 20 : -1);
        if (t_stop && !asked && t_stop->load()) {
            ::kill(pid, SIGTERM);
            asked = true;
        }
        if (ready < 0 && errno != EINTR)
            return;
        for (int i = 0; ready > 0 && i < 2; ++i) {
            if (fds[i].fd < 0 || fds[i].revents == 0)
                continue;
            const ssize_t n = ::read(fds[i].fd, buffer, sizeof buffer);
            if (n > 0) {
                into[i]->append(buffer, std::size_t(n));
                if (i == 0)
                    onOutput(std::string_view(buffer, std::size_t(n)));
            } else if (n == 0 || errno != EINTR) {
                fds[i].fd = -1;
            }
        }
    }
}

} // namespace

StopWhen::StopWhen(const std::atomic<bool>* stop) : m_previous(t_stop) { t_stop = stop; }

StopWhen::~StopWhen() { t_stop = m_previous; }

ProcessResult runProcess(const std::string& program, const std::vector<std::string>& args,
                         std::optional<std::string_view> stdinBytes, OutputCapture capture,
                         const std::string& workingDirectory, const OutputChunks& onOutput) {
    ProcessResult result;
    auto fail = [&](const char* what, int error) {
        result.status = -1;
        result.err = "Could not start " + program + ": " + what + ": " + std::strerror(error);
        return result;
    };

    PipeFds input;
    Fd devNull;
    if (stdinBytes) {
        if (!input.open())
            return fail("pipe", errno);
    } else {
        devNull.reset(::open("/dev/null", O_RDONLY | O_CLOEXEC));
        if (!devNull.valid())
            return fail("/dev/null", errno);
    }

    const bool pipeOut = capture == OutputCapture::Pipes || onOutput;
    const bool pipeErr = capture == OutputCapture::Pipes;
    PipeFds outPipe, errPipe;
    Fd outFile, errFile;
    if ((pipeOut && !outPipe.open()) || (pipeErr && !errPipe.open()))
        return fail("pipe", errno);
    if (!pipeOut)
        outFile.reset(::memfd_create("stdout", MFD_CLOEXEC));
    if (!pipeErr)
        errFile.reset(::memfd_create("stderr", MFD_CLOEXEC));
    if ((!pipeOut && !outFile.valid()) || (!pipeErr && !errFile.valid()))
        return fail("memfd_create", errno);
    const int childOut = pipeOut ? outPipe.write.get() : outFile.get();
    const int childErr = pipeErr ? errPipe.write.get() : errFile.get();
    const int childIn = stdinBytes ? input.read.get() : devNull.get();

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, childIn, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, childOut, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, childErr, STDERR_FILENO);
    if (!workingDirectory.empty())
        posix_spawn_file_actions_addchdir_np(&actions, workingDirectory.c_str());

    // The child starts with default signal handling and nothing blocked, whatever this
    // process has set up for itself.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none, defaults;
    sigemptyset(&none);
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    sigaddset(&defaults, SIGINT);
    sigaddset(&defaults, SIGTERM);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    std::vector<char*> argv;
    argv.reserve(args.size() + 2);
    argv.push_back(const_cast<char*>(program.c_str()));
    for (const std::string& arg : args)
        argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);

    pid_t pid = -1;
    const int spawnError =
        ::posix_spawn(&pid, program.c_str(), &actions, &attributes, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (spawnError != 0)
        return fail("exec", spawnError);

    // Only the child may hold the write ends now, or reading them would never end.
    input.read.reset();
    outPipe.write.reset();
    errPipe.write.reset();

    if (stdinBytes) {
        writeAllIgnoringPipe(input.write.get(), *stdinBytes);
        input.write.reset();
    }

    if (onOutput)
        readWhileRunning(outPipe.read.get(), pipeErr ? errPipe.read.get() : -1, pid, onOutput, result);
    result.status = waitForExit(pid);
    if (!onOutput)
        result.out = pipeOut ? readToEnd(outPipe.read.get()) : readMemoryFile(outFile.get());
    if (!onOutput || !pipeErr)
        result.err = pipeErr ? readToEnd(errPipe.read.get()) : readMemoryFile(errFile.get());
    return result;
}

void wipe(void* data, std::size_t size) {
    if (data && size)
        ::explicit_bzero(data, size);
}

void wipe(std::string& secret) {
    wipe(secret.data(), secret.capacity());
    secret.clear();
}

} // namespace platform
