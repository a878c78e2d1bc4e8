#include "Connections.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace quilcloud {

namespace {

bool endpointOf(const sockaddr_storage& address, std::string& text, int& port) {
    char buffer[INET6_ADDRSTRLEN] = {};
    if (address.ss_family == AF_INET) {
        auto* v4 = reinterpret_cast<const sockaddr_in*>(&address);
        if (!inet_ntop(AF_INET, &v4->sin_addr, buffer, sizeof(buffer))) return false;
        port = ntohs(v4->sin_port);
    } else if (address.ss_family == AF_INET6) {
        auto* v6 = reinterpret_cast<const sockaddr_in6*>(&address);
        if (!inet_ntop(AF_INET6, &v6->sin6_addr, buffer, sizeof(buffer))) return false;
        port = ntohs(v6->sin6_port);
    } else {
        return false;
    }
    text = buffer;
    return true;
}

std::vector<int> openDescriptors() {
    std::vector<int> fds;
    if (DIR* dir = opendir("/proc/self/fd")) {
        while (dirent* entry = readdir(dir)) {
            if (entry->d_name[0] < '0' || entry->d_name[0] > '9') continue;
            fds.push_back(std::atoi(entry->d_name));
        }
        closedir(dir);
        return fds;
    }
    for (int fd = 0; fd < 4096; ++fd)
        fds.push_back(fd);
    return fds;
}

}  // namespace

int forEachConnection(const std::string& localAddress, int localPort,
                      const std::string& peerAddress, int peerPort,
                      const std::function<void(int fd)>& action) {
    int matched = 0;
    for (int fd : openDescriptors()) {
        int copy = fcntl(fd, F_DUPFD_CLOEXEC, 0);
        if (copy < 0) continue;
        int type = 0;
        socklen_t typeLength = sizeof(type);
        sockaddr_storage local{}, peer{};
        socklen_t localLength = sizeof(local), peerLength = sizeof(peer);
        std::string localText, peerText;
        int localPortSeen = 0, peerPortSeen = 0;
        if (getsockopt(copy, SOL_SOCKET, SO_TYPE, &type, &typeLength) == 0 && type == SOCK_STREAM &&
            getsockname(copy, reinterpret_cast<sockaddr*>(&local), &localLength) == 0 &&
            getpeername(copy, reinterpret_cast<sockaddr*>(&peer), &peerLength) == 0 &&
            endpointOf(local, localText, localPortSeen) && localPortSeen == localPort &&
            localText == localAddress && endpointOf(peer, peerText, peerPortSeen) &&
            (peerAddress.empty() || (peerText == peerAddress && peerPortSeen == peerPort))) {
            ++matched;
            action(copy);
        }
        ::close(copy);
    }
    return matched;
}

int shutDownConnections(const std::string& localAddress, int localPort,
                        const std::string& peerAddress, int peerPort) {
    return forEachConnection(localAddress, localPort, peerAddress, peerPort,
                             [](int fd) { ::shutdown(fd, SHUT_RDWR); });
}

}  // namespace quilcloud
