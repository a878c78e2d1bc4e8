// Peak resident memory of one run of a command, its standard output thrown
// away: how much a fresh process needs for one call (libraries loaded, TLS
// set up, the request made). Prints the figure in KiB; fails with the
// command. scripts/footprint runs it on `quilctl presence` and on the curl
// tool making the same request.
//
// usage: bench_peakrss COMMAND [ARG...]
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <cstdio>

extern char** environ;

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_peakrss COMMAND [ARG...]\n");
        return 2;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    const int spawned = posix_spawnp(&pid, argv[1], &actions, nullptr, argv + 1, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        std::fprintf(stderr, "bench_peakrss: cannot run %s\n", argv[1]);
        return 1;
    }
    int status = 0;
    struct rusage usage {};
    if (wait4(pid, &status, 0, &usage) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "bench_peakrss: %s failed\n", argv[1]);
        return 1;
    }
    std::printf("%lld\n", static_cast<long long>(usage.ru_maxrss));
    return 0;
}
