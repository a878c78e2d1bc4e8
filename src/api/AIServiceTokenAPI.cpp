#include "velmar/quil/api/AIServiceTokenAPI.h"

#include "api/Endpoint.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

namespace {

// "token" and "expiresIn" of the answer's "data"; false at the first one
// missing, with what was read before it kept.
bool readData(json_object* root, std::string& token, long long& expiresIn) {
    json_object* data = nullptr;
    if (!json::JSONUtils::getJSONObject(root, "data", data)) return false;
    if (!json::JSONUtils::getString(data, "token", token)) return false;
    return json::JSONUtils::getInt(data, "expiresIn", expiresIn);
}

}  // namespace

utils::ErrorType AIServiceTokenAPI::getServiceToken(std::string& token, long long& expiresIn,
                                                    const std::string& baseUrl) {
    static const std::string path("/device/aiservice/token/");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");
    std::string response;
    utils::ErrorType result = detail::sendSigned(response, baseUrl, path, method, {});
    if (result != utils::ERROR_NONE) {
        VLOG(4) << "Failed to get ai service token ("
                << "response: " << response << ", "
                << "error code: " << result << ")";
        return result;
    }

    json::JSONObjectCleaner cleaner;
    json_object* root = detail::parseAnswer(cleaner, response);
    if (root == nullptr) {
        VLOG(4) << "Invalid response: " << response;
        return utils::ERROR_TOKEN_INVALID;
    }
    long long code = -1;
    if (!json::JSONUtils::getInt(root, "code", code)) {
        VLOG(4) << "Failed to get ai service token (response: " << response << ")";
        return utils::ERROR_TOKEN_INVALID;
    }
    if (code != 0) {
        // A refusal is no failure of the call: callers tell it by the empty token.
        VLOG(3) << "invalid code: " << code;
        token.clear();
        expiresIn = 0;
        return utils::ERROR_NONE;
    }
    if (!readData(root, token, expiresIn)) {
        VLOG(4) << "Failed to get ai service token (response: " << response << ")";
        return utils::ERROR_TOKEN_INVALID;
    }
    return utils::ERROR_NONE;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
