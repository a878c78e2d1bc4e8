#include "velmar/quil/api/PresenceAPI.h"

#include "api/Endpoint.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType PresenceAPI::getPresence(std::string& response, const std::string& baseUrl) {
    static const std::string path("/device/presence/");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");
    detail::Params params;
    return detail::sendSigned(response, baseUrl, path, method, params);
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
