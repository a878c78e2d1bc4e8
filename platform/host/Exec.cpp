// Device tools run through the shell: fork and exec, so that the child gets
// only descriptors 0, 1 and 2 on every C library (posix_spawn can close the
// rest only on recent ones), default signal dispositions, an empty standard
// input and a process group of its own, which is killed when the tool
// overruns its deadline. The call ends when the tool itself has exited, even
// if a background child of it still holds its output open.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>

#include "TestHooks.h"
#include "velmar/utils/ExecUtils.h"
#include "velmar/utils/Logging.h"

extern char** environ;

namespace velmar {

namespace host {
namespace detail {

namespace {

// A tool is a local script; the bind script may make one cloud call of its
// own, which the transport bounds at 15 s. Twice that lets a slow but
// working tool finish, and still frees the administrator lock long before a
// daemon's watchdog would act.
constexpr int kToolTimeoutMs = 30000;
std::atomic<int> gToolTimeoutMs{0};

}  // namespace

int toolTimeoutMs() {
    const int set = gToolTimeoutMs.load(std::memory_order_relaxed);
    return set > 0 ? set : kToolTimeoutMs;
}

void setToolTimeoutMsForTest(int ms) {
    gToolTimeoutMs.store(ms, std::memory_order_relaxed);
}

}  // namespace detail
}  // namespace host

namespace utils {

namespace {

// Tools print a line or a small JSON object; anything past this is drained
// and dropped so that the tool never blocks on a full pipe.
constexpr size_t kMaxOutputBytes = 1024 * 1024;

std::string shellQuoted(const std::string& text) {
    std::string out = "'";
    for (char c : text) {
        if (c == '\'') {
            out += "'\\''";
        } else {
            out += c;
        }
    }
    return out + "'";
}

// Under $VELMAR_ROOT a tool named by its absolute path is the one in the
// sandbox; the rest of the command line is left as it is.
std::string underRoot(const std::string& command) {
    const char* root = std::getenv("VELMAR_ROOT");
    if (root == nullptr || root[0] == '\0') return command;
    const size_t start = command.find_first_not_of(" \t");
    if (start == std::string::npos || command[start] != '/') return command;
    std::string base = root;
    while (!base.empty() && base.back() == '/')
        base.pop_back();
    return command.substr(0, start) + shellQuoted(base) + command.substr(start);
}

// The highest descriptor the child may have inherited.
int highestDescriptor() {
    struct rlimit limit;
    // GCOVR_EXCL_BR_START: the limit is always there, and only an unlimited hard one lifts it
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return 65535;
    // GCOVR_EXCL_BR_STOP
    return static_cast<int>(std::min<rlim_t>(limit.rlim_cur, 1 << 20)) - 1;
}

// In the child: close every descriptor from `first` on, in one system call
// where the kernel has it.
// GCOVR_EXCL_START: runs in the child, which execs before gcov writes its counts.
void closeFrom(int first, int highest) {
#if defined(SYS_close_range)
    if (::syscall(SYS_close_range, first, ~0U, 0) == 0) return;
#endif
    for (int fd = first; fd <= highest; ++fd)
        ::close(fd);
}
// GCOVR_EXCL_STOP

enum class Outcome { Exited, TimedOut, Lost };

// Reads the tool's output into `output` until the tool has exited, and
// reaps it into `status`. TimedOut when the deadline passed first: the tool's
// process group is then killed and the tool reaped. Lost when its exit could
// not be read (a daemon that ignores SIGCHLD has its children reaped for it).
Outcome collect(pid_t pid, int fd, int timeoutMs, std::string& output, int& status) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    bool open = true;
    int pauseMs = 1;
    for (;;) {
        // Exit first, then drain: what the tool wrote before exiting is kept.
        const pid_t reaped = ::waitpid(pid, &status, WNOHANG);
        const int waitError = errno;
        while (open) {
            char buffer[4096];
            const ssize_t n = ::read(fd, buffer, sizeof(buffer));
            if (n < 0 && errno == EINTR) continue;
            if (n < 0 && errno == EAGAIN) break;
            if (n <= 0) {
                open = false;
                break;
            }
            const size_t room = kMaxOutputBytes - output.size();
            output.append(buffer, std::min(static_cast<size_t>(n), room));
        }
        if (reaped == pid) return Outcome::Exited;
        if (reaped < 0 && waitError != EINTR) return Outcome::Lost;
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) break;
        // Output wakes the loop at once; the exit is looked for at growing
        // intervals, since nothing signals it without a SIGCHLD handler,
        // which a library must not install.
        pollfd waitFor{fd, POLLIN, 0};
        ::poll(&waitFor, open ? 1 : 0, static_cast<int>(std::min<long long>(pauseMs, left)));
        pauseMs = std::min(pauseMs * 2, 50);
    }
    ::kill(-pid, SIGKILL);
    ::kill(pid, SIGKILL);
    // A tool stuck in uninterruptible I/O dies only when that ends: the call
    // waits a moment for it, never longer, and leaves it to be reaped later.
    for (int i = 0; i < 100 && ::waitpid(pid, &status, WNOHANG) == 0; ++i)
        ::poll(nullptr, 0, 10);
    return Outcome::TimedOut;
}

}  // namespace

int ExecUtils::exec(std::string& output, const std::string& command) {
    output.clear();
    const std::string line = underRoot(command);

    // Everything the child needs is made before the fork: between fork and
    // exec only async-signal-safe calls are allowed in a threaded daemon.
    int pipeFds[2];
    if (::pipe2(pipeFds, O_CLOEXEC) != 0) return -1;
    char shell[] = "/bin/sh";
    char dashC[] = "-c";
    char devNull[] = "/dev/null";
    char* argv[] = {shell, dashC, const_cast<char*>(line.c_str()), nullptr};
    const int highestFd = highestDescriptor();
    // No signal handler of the daemon may run in the child before exec.
    sigset_t all;
    sigset_t previous;
    sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &previous);
    const pid_t pid = ::fork();
    if (pid == 0) {  // GCOVR_EXCL_BR_LINE: the child's side is counted in the child
        // GCOVR_EXCL_START: the child, which execs before gcov writes its counts.
        ::setpgid(0, 0);
        ::dup2(pipeFds[1], STDOUT_FILENO);
        ::fcntl(STDOUT_FILENO, F_SETFD, 0);  // when the pipe already was 1
        const int in = ::open(devNull, O_RDONLY);
        if (in > STDIN_FILENO) {
            ::dup2(in, STDIN_FILENO);
        }
        closeFrom(STDERR_FILENO + 1, highestFd);
        // A daemon that ignores SIGPIPE or blocks signals must not pass that on.
        struct sigaction dflt;
        std::memset(&dflt, 0, sizeof(dflt));
        dflt.sa_handler = SIG_DFL;
        for (int s = 1; s < NSIG; ++s)
            ::sigaction(s, &dflt, nullptr);
        sigset_t none;
        sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        ::execve(shell, argv, environ);
        ::_exit(127);
        // GCOVR_EXCL_STOP
    }
    ::pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    ::close(pipeFds[1]);
    if (pid < 0) {
        ::close(pipeFds[0]);
        return -1;
    }
    ::setpgid(pid, pid);  // also here, so that a kill cannot come before the child's own call

    const int timeoutMs = host::detail::toolTimeoutMs();
    int status = 0;
    const Outcome outcome = collect(pid, pipeFds[0], timeoutMs, output, status);
    ::close(pipeFds[0]);
    if (outcome == Outcome::TimedOut) {
        VLOG(4) << "tool killed: no exit within " << timeoutMs << " ms: " << command;
        return -1;
    }
    if (outcome == Outcome::Lost) {
        VLOG(4) << "tool's exit status lost (SIGCHLD ignored?): " << command;
        return -1;
    }
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);  // GCOVR_EXCL_BR_LINE: as below
    return -1;  // GCOVR_EXCL_LINE: waitpid() without WUNTRACED reports an exit or a signal
}

}  // namespace utils
}  // namespace velmar
