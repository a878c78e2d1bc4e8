#pragma once

#include <map>
#include <string>
#include <vector>

#include "velmar/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace http {

using utils::ErrorType;

// Blocking HTTP(S) transport. Every overload returns true when an HTTP answer
// was received (whatever its status) and false on a transport failure; it
// fills the HTTP status (0 when no answer came), the body, an error value
// (0 on success) and an error text.
//
// Wire form: a "GET" carries `params` (already encoded) as the query string,
// any other method as an application/x-www-form-urlencoded body. Base URL and
// path are joined with exactly one "/" between them. `headers` are complete
// header lines ("Name: value"); empty entries are ignored.
class VELMAR_PORT_EXPORT HTTPRequest {
  public:
    // Full URL. `cookie`, when not empty, is sent as the Cookie header value.
    static bool httpRequest(int& status, std::string& response, ErrorType& error,
                            std::string& errorMessage, const std::string& url,
                            const std::string& params, const std::string& method,
                            const std::vector<std::string>& headers, int timeoutMs,
                            const std::string& cookie);

    // Full URL, the host resolved through the given resolvers ("a.b.c.d,..."
    // with an optional ":port" each) and pinned for this request. The list is
    // replaced by $VELMAR_DNS_SERVERS when that is set.
    static bool httpRequest(int& status, std::string& response, ErrorType& error,
                            std::string& errorMessage, const std::string& url,
                            const std::string& params, const std::string& method,
                            const std::vector<std::string>& headers, int timeoutMs,
                            const std::string& cookie, const std::string& dnsServers);

    // Base URL and path with an encoded parameter string.
    static bool httpRequest(int& status, std::string& response, ErrorType& error,
                            std::string& errorMessage, const std::string& baseUrl,
                            const std::string& path, const std::string& params,
                            const std::string& method, const std::vector<std::string>& headers,
                            int timeoutMs);

    // Base URL and path with multi-valued form fields: every value of every
    // key is sent as its own key=value pair, keys in map order.
    static bool httpRequest(int& status, std::string& response, ErrorType& error,
                            std::string& errorMessage, const std::string& baseUrl,
                            const std::string& path,
                            const std::map<std::string, std::vector<std::string>>& fields,
                            const std::string& method, const std::vector<std::string>& headers,
                            int timeoutMs);

    // "k1=v1&k2=v2" in map order; everything but RFC 3986 unreserved
    // characters is percent-encoded.
    static std::string encodeHTTPParams(const std::map<std::string, std::string>& params);

    // "Cookie: k1=v1; k2=v2" in map order, values as they are.
    static std::string buildCookieHeader(const std::map<std::string, std::string>& cookies);
};

}  // namespace http
}  // namespace velmar
