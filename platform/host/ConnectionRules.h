// Internal: the host's rules for every connection it makes. One source,
// compiled into the Linux port's transport and into the library's own
// libcurl handle (the multipart log upload), which cannot call the port
// because a firmware may link another one:
//
//  * no proxy but the one $VELMAR_PROXY names; the environment's proxy
//    variables (http_proxy, HTTPS_PROXY, ALL_PROXY, no_proxy) are ignored,
//    since a signed request and its credential cookies must not go wherever
//    a login environment points;
//  * HTTP(S) only, peer and host name always verified;
//  * trust is libcurl's system store plus the bundle $VELMAR_CA_FILE names,
//    never the bundle instead of the system store;
//  * while the system clock reads earlier than this build's time, a
//    certificate that is not yet valid is accepted (chain, name and expiry
//    are still checked), so that a device that boots in the past reaches its
//    time service.
//
// The last two need libcurl's OpenSSL flavour (CURLOPT_SSL_CTX_FUNCTION); with
// another TLS backend only a transfer that needs them is refused, rather than
// trusted otherwise; every other transfer is as libcurl makes it.
#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>

#include "velmar/Export.h"

namespace velmar {
namespace http {
namespace detail {

class ConnectionRules {
  public:
    // Reads the clock once: one decision for the whole transfer.
    ConnectionRules();

    // True when the system clock read earlier than this build: the transfer
    // will not check certificate dates. A caller that keeps connections open
    // must not let one made in that state serve a call made in the other.
    bool datesUnchecked() const { return mDatesUnchecked; }

    // Sets the rules on `curl` for one transfer to `url`. Returns CURLE_OK;
    // CURLE_SSL_CACERT_BADFILE when the bundle $VELMAR_CA_FILE names cannot
    // be read; otherwise the code of the option libcurl refused. `error`
    // tells why. Safe from several threads; this object must outlive the
    // transfer, since libcurl borrows from it.
    CURLcode apply(CURL* curl, const std::string& url, std::string& error);

  private:
    bool mDatesUnchecked;
    std::shared_ptr<const std::string> mExtraBundle;
};

// The build time the clock is compared with, in seconds since the epoch.
long long buildTime();

// Tests only: makes `seconds` since the epoch the build time the clock is
// compared with, and returns the one it replaces.
VELMAR_PORT_EXPORT long long setBuildTimeForTest(long long seconds);

}  // namespace detail
}  // namespace http
}  // namespace velmar
