// Peak resident memory of one `quilctl presence` run over HTTPS against a
// fixed-answer server on loopback: what one signed call costs a fresh process
// (libraries loaded, TLS set up, the request made). Prints the figure in KiB.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <cstdio>

#include "HostEnvironment.h"

extern char** environ;

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench_footprint QUILCTL\n");
        return 2;
    }
    bench::Sandbox device;
    bench::CertificateFiles certificate;
    std::string error;
    if (!quilcloud::makeCertificates(device.path(""), {}, certificate, error)) {
        std::fprintf(stderr, "bench_footprint: %s\n", error.c_str());
        return 1;
    }
    bench::LoopbackServer server(&certificate, bench::kPresenceBody);
    if (!server.start()) {
        std::fprintf(stderr, "bench_footprint: %s\n", server.error().c_str());
        return 1;
    }
    device.configure(server.baseUrl());
    setenv("VELMAR_ROOT", device.root().c_str(), 1);
    setenv("VELMAR_CA_FILE", certificate.caFile.c_str(), 1);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    char* const args[] = {argv[1], const_cast<char*>("presence"), nullptr};
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, argv[1], &actions, nullptr, args, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        std::fprintf(stderr, "bench_footprint: cannot run %s\n", argv[1]);
        return 1;
    }
    int status = 0;
    struct rusage usage {};
    if (wait4(pid, &status, 0, &usage) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "bench_footprint: quilctl presence failed\n");
        return 1;
    }
    std::printf("%ld\n", usage.ru_maxrss);
    return 0;
}
