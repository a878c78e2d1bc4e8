// Internal to the ports: text forms shared by the host and the fake transport.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace velmar {
namespace http {
namespace detail {

// Multi-valued form fields as one urlencoded body: every value of every key
// as its own pair, keys in map order, values in list order.
std::string encodeFormFields(const std::map<std::string, std::vector<std::string>>& fields);

// Base URL and path joined with exactly one "/" between them.
std::string joinUrl(const std::string& baseUrl, const std::string& path);

// Why a request cannot go out as given, "" when it can: a method that is no
// HTTP token, or a line break in the URL, the cookie or a header line (it
// would end the line and forge another).
std::string refusal(const std::string& method, const std::string& url, const std::string& cookie,
                    const std::vector<std::string>& headers);

}  // namespace detail
}  // namespace http
}  // namespace velmar
