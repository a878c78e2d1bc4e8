#include "velmar/quil/api/PlayResourceAPI.h"

#include "api/Endpoint.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType PlayResourceAPI::getPlayResource(std::string& result, const std::string& baseUrl,
                                                  std::string deviceId, const std::string& alarmId,
                                                  const std::string& cpId, const std::string& cp) {
    static const std::string path(
        "/babycourse/device/next/play");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");
    detail::Params params;
    params["deviceId"] = std::move(deviceId);  // the caller's, not the stored identity
    params["alarmId"] = alarmId;
    params["cpId"] = cpId;
    params["cp"] = cp;
    return detail::sendSigned(result, baseUrl, path, method, params);
}

utils::ErrorType PlayResourceAPI::setPlayResourceStatus(
    const std::string& baseUrl, const std::string& deviceId, const std::string& alarmId,
    const std::string& playCPId, const std::string& playCP, const int& playIndex,
    const int& playPosition) {
    static const std::string path(
        "/babycourse/device/play/update");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("POST");
    detail::Params params;
    params["deviceId"] = deviceId;
    params["alarmId"] = alarmId;
    params["playCPId"] = playCPId;
    params["playCP"] = playCP;
    params["playIndex"] = detail::decimal(playIndex);
    params["playPosition"] = detail::decimal(playPosition);
    std::string response;
    utils::ErrorType status = detail::sendSigned(response, baseUrl, path, method, params);
    // The answer is only logged, also when the request failed.
    VLOG(4) << "!!!!!!response is :" << response;
    return status;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
