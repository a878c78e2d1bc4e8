// Look-up through a given resolver list with c-ares. The sockets are watched
// with poll() (not select(), which breaks on descriptors above 1023 in a
// long-running daemon) and the whole look-up is bounded by the caller's
// deadline, not by c-ares's own retry schedule.
#include "Resolver.h"

#include <ares.h>
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <vector>

namespace velmar {
namespace http {
namespace detail {

namespace {

using Clock = std::chrono::steady_clock;

void initLibrary() {
    static std::once_flag once;
    std::call_once(once, [] { ares_library_init(ARES_LIB_INIT_ALL); });
}

struct Lookup {
    bool done = false;
    int status = ARES_ETIMEOUT;
    std::string address;
    std::vector<pollfd> sockets;
};

void onSocketState(void* data, ares_socket_t fd, int readable, int writable) {
    auto& sockets = static_cast<Lookup*>(data)->sockets;
    auto it =
        std::find_if(sockets.begin(), sockets.end(), [fd](const pollfd& p) { return p.fd == fd; });
    if (!readable && !writable) {
        if (it != sockets.end()) sockets.erase(it);
        return;
    }
    short events = static_cast<short>((readable ? POLLIN : 0) | (writable ? POLLOUT : 0));
    if (it == sockets.end()) {
        sockets.push_back(pollfd{fd, events, 0});
    } else {
        it->events = events;
    }
}

void onAnswer(void* arg, int status, int, ares_addrinfo* result) {
    Lookup* lookup = static_cast<Lookup*>(arg);
    if (!lookup->done) {
        lookup->done = true;
        lookup->status = status;
        for (ares_addrinfo_node* node = result ? result->nodes : nullptr; node != nullptr;
             node = node->ai_next) {
            // GCOVR_EXCL_BR_START: the look-up asks for IPv4 addresses only
            if (node->ai_family != AF_INET || node->ai_addr == nullptr) continue;
            char text[INET_ADDRSTRLEN];
            const auto* in = reinterpret_cast<const sockaddr_in*>(node->ai_addr);
            if (inet_ntop(AF_INET, &in->sin_addr, text, sizeof(text)) != nullptr) {
                // GCOVR_EXCL_BR_STOP
                lookup->address = text;
                break;
            }
        }
    }
    if (result != nullptr) ares_freeaddrinfo(result);
}

int millisecondsUntil(Clock::time_point deadline) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::max<long long>(0, left.count()));
}

}  // namespace

bool resolveIPv4(const std::string& host, const std::string& servers, Clock::time_point deadline,
                 std::string& address, std::string& error) {
    initLibrary();
    Lookup lookup;
    const int budget = std::max(1, millisecondsUntil(deadline));

    ares_options options;
    std::memset(&options, 0, sizeof(options));
    // Only the given servers answer: no hosts file, no search domains.
    options.flags = ARES_FLAG_NOSEARCH | ARES_FLAG_NOALIASES;
    char lookups[] = "b";
    options.lookups = lookups;
    // Several tries fit in the budget; the deadline below is what really bounds it.
    options.timeout = std::max(50, budget / 3);
    options.tries = 3;
    options.sock_state_cb = onSocketState;
    options.sock_state_cb_data = &lookup;
    ares_channel channel = nullptr;
    int rc = ares_init_options(&channel, &options,
                               ARES_OPT_FLAGS | ARES_OPT_LOOKUPS | ARES_OPT_TIMEOUTMS |
                                   ARES_OPT_TRIES | ARES_OPT_SOCK_STATE_CB);
    // GCOVR_EXCL_START: c-ares fails to set up only without memory
    if (rc != ARES_SUCCESS) {
        error = std::string("resolver could not be set up: ") + ares_strerror(rc);
        return false;
    }
    // GCOVR_EXCL_STOP
    rc = ares_set_servers_ports_csv(channel, servers.c_str());
    if (rc != ARES_SUCCESS) {
        ares_destroy(channel);
        error = "bad resolver list \"" + servers + "\": " + ares_strerror(rc);
        return false;
    }

    ares_addrinfo_hints hints;
    std::memset(&hints, 0, sizeof(hints));
    hints.ai_family = AF_INET;
    hints.ai_flags = ARES_AI_NOSORT;
    ares_getaddrinfo(channel, host.c_str(), nullptr, &hints, onAnswer, &lookup);

    while (!lookup.done) {
        const int left = millisecondsUntil(deadline);
        if (left <= 0) {
            ares_cancel(channel);  // completes the look-up with ARES_ECANCELLED
            lookup.status = ARES_ETIMEOUT;
            break;
        }
        timeval limit{left / 1000, (left % 1000) * 1000};
        timeval next;
        timeval* wait = ares_timeout(channel, &limit, &next);
        const int waitMs = static_cast<int>(wait->tv_sec * 1000 + (wait->tv_usec + 999) / 1000);
        // A copy: processing a socket may open or close others.
        std::vector<pollfd> ready = lookup.sockets;
        int n = ::poll(ready.data(), ready.size(), waitMs);
        if (n < 0) {
            if (errno == EINTR) continue;
            ares_cancel(channel);
            lookup.status = ARES_ECONNREFUSED;
            break;
        }
        if (n == 0) {
            ares_process_fd(channel, ARES_SOCKET_BAD, ARES_SOCKET_BAD);  // time-outs and retries
            continue;
        }
        for (const pollfd& p : ready) {
            if (p.revents == 0) continue;
            ares_socket_t readFd =
                (p.revents & (POLLIN | POLLERR | POLLHUP)) ? p.fd : ARES_SOCKET_BAD;
            ares_socket_t writeFd = (p.revents & POLLOUT) ? p.fd : ARES_SOCKET_BAD;
            ares_process_fd(channel, readFd, writeFd);
        }
    }
    ares_destroy(channel);

    if (lookup.status != ARES_SUCCESS || lookup.address.empty()) {
        const int status = lookup.status == ARES_SUCCESS ? ARES_ENODATA : lookup.status;
        error = "could not resolve " + host + " through " + servers + ": " + ares_strerror(status);
        return false;
    }
    address = lookup.address;
    return true;
}

}  // namespace detail
}  // namespace http
}  // namespace velmar
