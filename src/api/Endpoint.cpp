#include "api/Endpoint.h"

#include <cstdio>
#include <cstring>

#include "velmar/quil/api/DeviceAPI.h"

namespace velmar {
namespace quil {
namespace api {
namespace detail {

utils::ErrorType sendSigned(std::string& response, const std::string& baseUrl,
                            const std::string& path, const std::string& method,
                            const Params& params) {
    std::string answer;
    utils::ErrorType result = DeviceAPI::request(answer, baseUrl, path, method, params);
    response.swap(answer);
    return result;
}

json_object* parseAnswer(json::JSONObjectCleaner& cleaner, const std::string& text) {
    return cleaner.add(json_tokener_parse(text.c_str()));
}

bool pathSegment(const std::string& value, std::string& out) {
    static const char kHex[] = "0123456789ABCDEF";
    out.clear();
    if (value == "." || value == "..") return false;
    out.reserve(value.size());
    for (unsigned char c : value) {
        if (c <= ' ' || c == 0x7f || std::strchr("/\\?#%", c) != nullptr) {
            out += '%';
            out += kHex[c >> 4];
            out += kHex[c & 15];
        } else {
            out += static_cast<char>(c);
        }
    }
    return true;
}

bool isCookieValue(const std::string& value) {
    for (unsigned char c : value) {
        if (c < ' ' || c == 0x7f || c == ';' || c == ',') return false;
    }
    return true;
}

std::string decimal(long long value) {
    char buffer[32];
    std::snprintf(buffer, sizeof(buffer), "%lld", value);
    return buffer;
}

std::string decimalUnsigned(unsigned long long value) {
    char buffer[32];
    std::snprintf(buffer, sizeof(buffer), "%llu", value);
    return buffer;
}

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
