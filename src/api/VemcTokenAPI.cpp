#include "velmar/quil/api/VemcTokenAPI.h"

#include "api/AccountScope.h"
#include "api/RapidAnswer.h"
#include "velmar/quil/QuilConfigUtils.h"
#include "velmar/quil/api/DeviceAPI.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType VemcTokenAPI::getToken(std::string& token, const std::string& baseUrl) {
    static const std::string path("/vemc/token/linux");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");
    std::string userId;
    if (!detail::superAdminUserId(userId)) return utils::ERROR_GENERAL;
    std::string deviceId;
    if (!QuilConfigUtils::getDeviceID(deviceId)) {
        VLOG(4) << "Failed to get device id";
        return utils::ERROR_GENERAL;
    }
    detail::Params params;
    params["userId"] = userId;
    params["clientId"] = deviceId;
    std::string response;
    utils::ErrorType result = DeviceAPI::request(response, baseUrl, path, method, params);
    // A refused answer is reported by the untouched token only; the messaging
    // agent relies on it.
    return detail::readLenientAnswer(result, response, &token);
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
