// The sockets of the server's own connections. cpp-httplib hands a handler no
// socket, yet a fault (reset, truncated body) and a fast shutdown need one.
#pragma once

#include <functional>
#include <string>

namespace quilcloud {

// Calls `action` with a descriptor for every connected TCP socket of this
// process whose local end is `localAddress`:`localPort` and, when
// `peerAddress` is not empty, whose remote end is `peerAddress`:`peerPort`.
// Each candidate is duplicated before it is checked and acted on, so a
// descriptor closed (and its number reused) meanwhile is never touched.
// Returns how many sockets matched.
int forEachConnection(const std::string& localAddress, int localPort,
                      const std::string& peerAddress, int peerPort,
                      const std::function<void(int fd)>& action);

// Ends those connections at once: both directions shut down, so the peer sees
// the connection closed and the server's own reads and writes on it fail.
int shutDownConnections(const std::string& localAddress, int localPort,
                        const std::string& peerAddress = "", int peerPort = 0);

}  // namespace quilcloud
