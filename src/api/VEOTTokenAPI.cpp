#include "velmar/quil/api/VEOTTokenAPI.h"

#include "api/Endpoint.h"
#include "api/RapidAnswer.h"
#include "velmar/quil/api/DeviceAPI.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType VEOTTokenAPI::upload(const std::string& token, const std::string& sessionId,
                                      const std::string& userId, const std::string& baseUrl) {
    // The upload path ends in a slash, the download path does not: the
    // service routes them so.
    static const std::string path("/device/veot/token/upload/");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("POST");
    detail::Params params;
    params["token"] = token;
    params["sessionId"] = sessionId;
    params["userId"] = userId;
    std::string response;
    utils::ErrorType result = DeviceAPI::request(response, baseUrl, path, method, params);
    VLOG(2) << "veot token upload response: " << response;
    if (result != utils::ERROR_NONE) {
        VLOG(4) << "Failed to upload veot token ("
                << "response: " << response << ", "
                << "error code: " << result << ")";
        return result;
    }
    detail::RapidAnswer answer(response);
    int code = 0;
    if (!answer.getInt("code", code)) {
        VLOG(4) << "Invalid response: " << response;
        return utils::ERROR_INVALID_RESPONSE;
    }
    if (code == 0) return utils::ERROR_NONE;
    return code == 1 ? utils::ERROR_TOKEN_REFUSED : utils::ERROR_GENERAL;
}

utils::ErrorType VEOTTokenAPI::download(std::string& sessionId, std::string& token, int& expire,
                                        const std::string& baseUrl) {
    static const std::string path("/device/veot/token/download");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");
    std::string response;
    utils::ErrorType result = DeviceAPI::request(response, baseUrl, path, method, {});
    VLOG(2) << "veot token download response: " << response;
    if (result != utils::ERROR_NONE) {
        VLOG(4) << "DeviceAPI::request() failed with code: " << result;
        return result;
    }
    detail::RapidAnswer answer(response);
    // JSON null is JSON: it fails the shape check below, not this one.
    if (!answer.wellFormed()) {
        VLOG(4) << "Invalid response: " << response;
        return utils::ERROR_INVALID_RESPONSE;
    }
    int code = 0;
    std::string message;
    const rapidjson::Value* data = answer.getObject("data");
    if (!answer.getInt("code", code) || !answer.getString("message", message) || data == nullptr) {
        VLOG(4) << "Invalid JSON response: " << response;
        return utils::ERROR_INVALID_RESPONSE;
    }
    if (code != 0) {
        VLOG(4) << "Request not success: " << response;
        return utils::ERROR_GENERAL;
    }
    // Members in the answer's order; a wrong type stops the walk, keeping
    // what was already taken.
    for (auto it = data->MemberBegin(); it != data->MemberEnd(); ++it) {
        const std::string name = detail::stringOf(it->name);
        const rapidjson::Value& value = it->value;
        if (name == "sessionID" || name == "token") {
            if (!value.IsString()) {
                VLOG(4) << "Invalid JSON response: " << response;
                return utils::ERROR_INVALID_RESPONSE;
            }
            (name == "token" ? token : sessionId) = detail::stringOf(value);
        } else if (name == "expire") {
            if (!value.IsInt()) {
                VLOG(4) << "Invalid JSON response: " << response;
                return utils::ERROR_INVALID_RESPONSE;
            }
            expire = value.GetInt();
        }
    }
    return utils::ERROR_NONE;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
