#include "velmar/quil/api/WorkDayConfigAPI.h"

#include "api/Endpoint.h"
#include "velmar/quil/api/DeviceAPI.h"

namespace velmar {
namespace quil {
namespace api {

namespace {

constexpr int kNotModified = 304;

}  // namespace

utils::ErrorType WorkDayConfigAPI::getWorkDayConfig(std::string& config, const std::string& baseUrl,
                                                    const std::string& version) {
    static const std::string path("/device/workday/config");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");
    detail::Params params;
    params["version"] = version;
    std::string response;
    int httpStatus = -1;
    utils::ErrorType result =
        DeviceAPI::request(response, httpStatus, baseUrl, path, method, params);
    // 304 means the caller's copy for `version` is current, whatever the
    // request layer made of that status.
    if (httpStatus == kNotModified) {
        config.clear();
        return utils::ERROR_NONE;
    }
    config.swap(response);
    return result;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
