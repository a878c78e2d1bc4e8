#include "velmar/quil/api/DeviceStatusAPI.h"

#include "api/Endpoint.h"
#include "velmar/quil/api/DeviceAPI.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

namespace {

const std::string& statusPath() {
    static const std::string path("/device/device_status");
    return path;
}

}  // namespace

// "catagory" is the key the service reads, misspelt as it is.
utils::ErrorType DeviceStatusAPI::setDeviceStatus(const std::string& baseUrl,
                                                  const std::string& catagory,
                                                  const std::string& status) {
    const std::string method("POST");
    detail::Params params;
    params["catagory"] = catagory;
    params["status"] = status;
    std::string response;
    utils::ErrorType result = DeviceAPI::request(response, baseUrl, statusPath(), method, params);
    VLOG(2) << "Set device status result ["
            << "catagory: " << catagory << "; "
            << "status: " << status << "; "
            << "response: " << response << "; "
            << "error code: " << result << "]";
    return result;
}

utils::ErrorType DeviceStatusAPI::getDeviceStatus(std::string& status, const std::string& baseUrl,
                                                  const std::string& catagory) {
    const std::string method("GET");
    detail::Params params;
    params["catagory"] = catagory;
    std::string response;
    // Judged by the answer alone: a failed request leaves an empty one.
    utils::ErrorType result = DeviceAPI::request(response, baseUrl, statusPath(), method, params);
    json::JSONObjectCleaner cleaner;
    json_object* root = detail::parseAnswer(cleaner, response);
    if (root == nullptr || !json::JSONUtils::getString(root, "data", status)) {
        VLOG(4) << "Invalid response: " << response;
        return utils::ERROR_HTTP_FAILED;
    }
    return result;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
