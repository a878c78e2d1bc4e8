#include "api/Endpoint.h"

#include <cstdio>

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
