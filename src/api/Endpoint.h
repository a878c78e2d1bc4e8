// The shape every endpoint on the signed request shares, and the small
// pieces of answer handling they all need.
//
// An endpoint's path is a function-local static string, built once on first
// use. Its line carries gcovr's branch exclusion with the reason "init guard":
// the branches the compiler adds there for the thread-safe initialisation are
// taken only by a thread that waits for another's initialisation or by an
// allocation failure.
#pragma once

#include <json-c/json.h>

#include <map>
#include <string>

#include "velmar/json/JSONUtils.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {
namespace detail {

using Params = std::map<std::string, std::string>;

// Sends through the signed request and hands the caller the body whatever the
// outcome: on failure `response` becomes empty (the signed request itself
// would leave it untouched). Returns the signed request's status.
utils::ErrorType sendSigned(std::string& response, const std::string& baseUrl,
                            const std::string& path, const std::string& method,
                            const Params& params);

// Parses an answer with json-c; the object belongs to `cleaner`. Null when
// the text is not JSON, and when it nests deeper than json-c's parser goes:
// nothing defines such an answer, and it is refused like one that is no JSON.
json_object* parseAnswer(json::JSONObjectCleaner& cleaner, const std::string& text);

// A caller's value made one path segment of a URL in `segment`: the
// characters that would end the segment, start a query or fragment, or
// escape ('/', '\\', '?', '#', '%', blanks and control characters) are
// percent-encoded; any other value is kept byte for byte. False for a whole
// "." or "..", which would climb the path however it is encoded (servers
// decode "%2E" before they resolve dot segments): such a request is not sent.
bool pathSegment(const std::string& value, std::string& segment);

// True when `value` can stand in a Cookie header: no ';' or ',' that would
// start another cookie, no control character that would end the line.
bool isCookieValue(const std::string& value);

// Decimal text of an integer, as the services expect it ("%lld" / "%llu").
std::string decimal(long long value);
std::string decimalUnsigned(unsigned long long value);

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
