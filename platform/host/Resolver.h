// Internal to the Linux port: host look-up through a caller-chosen resolver
// list, for the transport overload that must not depend on the system's.
#pragma once

#include <chrono>
#include <string>

namespace velmar {
namespace http {
namespace detail {

// The first IPv4 address of `host` as `servers` ("a.b.c.d[:port],...") answer
// it, given up at `deadline`. False with a reason in `error` otherwise.
bool resolveIPv4(const std::string& host, const std::string& servers,
                 std::chrono::steady_clock::time_point deadline, std::string& address,
                 std::string& error);

}  // namespace detail
}  // namespace http
}  // namespace velmar
