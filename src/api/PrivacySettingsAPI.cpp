#include "velmar/quil/api/PrivacySettingsAPI.h"

#include "api/Endpoint.h"
#include "api/RapidAnswer.h"
#include "velmar/quil/api/DeviceAPI.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

namespace {

const std::string& privacyPath() {
    static const std::string path(
        "/userprofile/user_privacy_on_device");  // GCOVR_EXCL_BR_LINE: init guard
    return path;
}

// True when the answer is understood and "code" is 0; logs why not otherwise.
bool accepted(const detail::RapidAnswer& answer, const std::string& text) {
    int code = 0;
    if (!answer.parsed() || !answer.getInt("code", code)) {
        VLOG(4) << "Invalid response: " << text;
        return false;
    }
    if (code != 0) {
        VLOG(4) << "Failed response: " << text;
        return false;
    }
    return true;
}

}  // namespace

utils::ErrorType PrivacySettingsAPI::setPrivacySettings(const std::string& baseUrl,
                                                        unsigned long long userId,
                                                        const std::string& value) {
    const std::string method("POST");
    detail::Params params;
    params["userId"] = detail::decimalUnsigned(userId);
    params["value"] = value;
    std::string response;
    utils::ErrorType result = DeviceAPI::request(response, baseUrl, privacyPath(), method, params);
    if (result != utils::ERROR_NONE) return result;
    detail::RapidAnswer answer(response);
    return accepted(answer, response) ? utils::ERROR_NONE : utils::ERROR_HTTP_FAILED;
}

utils::ErrorType PrivacySettingsAPI::getPrivacySettings(std::string& settings,
                                                        const std::string& baseUrl,
                                                        unsigned long long userId) {
    const std::string method("GET");
    detail::Params params;
    params["userId"] = detail::decimalUnsigned(userId);
    std::string response;
    // A failed request leaves an empty answer, which the checks below refuse.
    utils::ErrorType result = DeviceAPI::request(response, baseUrl, privacyPath(), method, params);
    detail::RapidAnswer answer(response);
    if (!accepted(answer, response)) return utils::ERROR_HTTP_FAILED;
    const rapidjson::Value* data = answer.getObject("data");
    if (data == nullptr) {
        VLOG(4) << "Invalid response: " << response;
        return utils::ERROR_HTTP_FAILED;
    }
    settings = detail::prettyText(*data);
    return result;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
