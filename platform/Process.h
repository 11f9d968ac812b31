#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// What one child process did: its exit status (128 + signal number when a signal ended it,
// -1 when it could not be started) and the bytes it wrote to its two outputs.
struct ProcessResult {
    int status = -1;
    std::string out;
    std::string err;
};

enum class OutputCapture {
    // Two pipes, read to their ends after the child exits. The child's output must fit in the
    // pipe buffers, and no grandchild may keep the pipes open.
    Pipes,
    // Two anonymous in-memory files. For children that leave a daemon behind (which keeps its
    // outputs open for its whole life) or that may write more than a pipe holds.
    MemoryFiles,
};

// Told of a child's standard output as it arrives, in chunks as the pipe delivers them.
using OutputChunks = std::function<void(std::string_view chunk)>;

// Runs `program` (an absolute path, no shell, no PATH search) with `args` and waits for it.
// With `stdinBytes` the child's standard input is a pipe that receives exactly those bytes in
// one write and is then closed; without, it reads from /dev/null. The child starts in
// `workingDirectory` when one is given. With `onOutput`, standard output is a pipe read while
// the child runs (whatever `capture` says), handed over as it comes and kept in the result
// too; no grandchild may keep it open. Never throws.
ProcessResult runProcess(const std::string& program, const std::vector<std::string>& args,
                         std::optional<std::string_view> stdinBytes,
                         OutputCapture capture = OutputCapture::Pipes,
                         const std::string& workingDirectory = {},
                         const OutputChunks& onOutput = {});

// While one lives, a process that runProcess runs on this thread is asked to stop (SIGTERM)
// as soon as `*stop` turns true, and runProcess returns once it has. For work that may be
// cancelled: elsewhere a child runs to its end.
class StopWhen {
public:
    explicit StopWhen(const std::atomic<bool>* stop);
    ~StopWhen();
    StopWhen(const StopWhen&) = delete;
    StopWhen& operator=(const StopWhen&) = delete;

private:
    const std::atomic<bool>* m_previous;
};

// Overwrites a buffer that held a secret before it is released.
void wipe(std::string& secret);
void wipe(void* data, std::size_t size);

} // namespace platform
