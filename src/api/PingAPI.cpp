#include "velmar/quil/api/PingAPI.h"

#include "api/Endpoint.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType PingAPI::pingDevice(std::string& response, const std::string& baseUrl,
                                     const std::string& pingLevel) {
    static const std::string path("/device/ping/");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("POST");
    detail::Params params;
    params["pingLevel"] = pingLevel;
    return detail::sendSigned(response, baseUrl, path, method, params);
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
