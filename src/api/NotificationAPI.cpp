#include "velmar/quil/api/NotificationAPI.h"

#include "api/Endpoint.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType NotificationAPI::send(std::string& response, const std::string& baseUrl,
                                       const VePushType& type, const std::string& title,
                                       const std::string& abstract,
                                       const std::string& extraAttributes) {
    static const std::string path("/device/land_notification/");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("POST");
    detail::Params params;
    params["type"] = detail::decimal(static_cast<long>(type));
    params["title"] = title;
    params["abstract"] = abstract;
    params["extraAttributes"] = extraAttributes;
    return detail::sendSigned(response, baseUrl, path, method, params);
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
