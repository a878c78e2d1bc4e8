// Device tools run through the shell. posix_spawn rather than popen: the
// child gets none of the daemon's descriptors, default signal dispositions
// and an empty standard input, and it is always reaped.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "velmar/utils/ExecUtils.h"

extern char** environ;

namespace velmar {
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

}  // namespace

int ExecUtils::exec(std::string& output, const std::string& command) {
    output.clear();
    const std::string line = underRoot(command);

    int pipeFds[2];
    if (::pipe2(pipeFds, O_CLOEXEC) != 0) return -1;

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
#if defined(__GLIBC__) && (__GLIBC__ > 2 || (__GLIBC__ == 2 && __GLIBC_MINOR__ >= 34))
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
#endif
    // A daemon that ignores SIGPIPE or blocks signals must not pass that on.
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    char shell[] = "/bin/sh";
    char dashC[] = "-c";
    char* argv[] = {shell, dashC, const_cast<char*>(line.c_str()), nullptr};
    pid_t pid = -1;
    const int spawned = ::posix_spawn(&pid, shell, &actions, &attributes, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    ::close(pipeFds[1]);
    if (spawned != 0) {
        ::close(pipeFds[0]);
        return -1;
    }

    char buffer[4096];
    for (;;) {
        ssize_t n = ::read(pipeFds[0], buffer, sizeof(buffer));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        const size_t room = kMaxOutputBytes - output.size();
        output.append(buffer, static_cast<size_t>(n) < room ? static_cast<size_t>(n) : room);
    }
    ::close(pipeFds[0]);

    int status = 0;
    pid_t reaped;
    do {
        reaped = ::waitpid(pid, &status, 0);
    } while (reaped < 0 && errno == EINTR);
    if (reaped != pid) return -1;
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
    return -1;
}

}  // namespace utils
}  // namespace velmar
