// A stand-in for the speaker's log daemon: binds the datagram socket syslog()
// writes to (normally /dev/log) and drains it, so that the library's log
// lines cost what they cost on the device: one send on a connected socket.
// Runs until killed.
//
// usage: bench_logd SOCKET_PATH
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench_logd SOCKET_PATH\n");
        return 2;
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (std::strlen(argv[1]) >= sizeof(address.sun_path)) {
        std::fprintf(stderr, "bench_logd: path too long\n");
        return 2;
    }
    std::strcpy(address.sun_path, argv[1]);
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
        std::fprintf(stderr, "bench_logd: cannot bind %s: %s\n", argv[1], std::strerror(errno));
        return 1;
    }
    char line[8192];
    for (;;) {
        if (recv(fd, line, sizeof(line), 0) < 0 && errno != EINTR) return 1;
    }
}
