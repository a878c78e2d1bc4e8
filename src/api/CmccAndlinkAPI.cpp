#include "velmar/quil/api/CmccAndlinkAPI.h"

#include "api/Endpoint.h"
#include "api/RapidAnswer.h"
#include "velmar/quil/QuilConfigUtils.h"
#include "velmar/quil/api/DeviceAPI.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

namespace {

// Both calls need the IoT device ID and a readable hardware name.
bool readIdentity(std::string& veotDid, std::string& hardware) {
    if (!QuilConfigUtils::getVeotDID(veotDid)) {
        VLOG(4) << "Failed to get veot did";
        return false;
    }
    if (!QuilConfigUtils::getHardware(hardware)) {
        VLOG(4) << "Failed to get hardware";
        return false;
    }
    return true;
}

}  // namespace

// A refused or unreadable answer still gives the request's 0: callers look at
// the ID itself, and the log line is the only trace.
utils::ErrorType CmccAndlinkAPI::getDeviceID(std::string& cmccDeviceId,
                                             const std::string& baseUrl) {
    static const std::string path("/device/andlink/cmcc_device_id");
    const std::string method("GET");
    std::string veotDid;
    std::string hardware;
    if (!readIdentity(veotDid, hardware)) return utils::ERROR_GENERAL;
    detail::Params params;
    params["hardware"] = hardware;
    params["veotDID"] = veotDid;  // spelled so by the reading side of the service
    std::string response;
    utils::ErrorType result = DeviceAPI::request(response, baseUrl, path, method, params);
    VLOG(2) << "Get andlink did response: " << response;
    return detail::readLenientAnswer(result, response, &cmccDeviceId);
}

utils::ErrorType CmccAndlinkAPI::setDeviceID(const std::string& cmccDeviceId,
                                             const std::string& baseUrl) {
    // Storing is a GET as well; the service is built so.
    static const std::string path("/app/set_cmcc_id/linux");
    const std::string method("GET");
    std::string veotDid;
    std::string hardware;  // must be readable, though the service does not take it
    if (!readIdentity(veotDid, hardware)) return utils::ERROR_GENERAL;
    detail::Params params;
    params["veotDid"] = veotDid;  // and so by the writing side
    params["cmccDeviceId"] = cmccDeviceId;
    std::string response;
    utils::ErrorType result = DeviceAPI::request(response, baseUrl, path, method, params);
    VLOG(2) << "set andlink did response: " << response;
    return detail::readLenientAnswer(result, response, nullptr);
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
