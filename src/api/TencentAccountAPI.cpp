#include "velmar/quil/api/TencentAccountAPI.h"

#include "api/Endpoint.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType TencentAccountAPI::getTencentAccount(TencentAccount& account,
                                                      const std::string& baseUrl) {
    static const std::string path("/device/tencent/account");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");
    std::string response;
    utils::ErrorType result = detail::sendSigned(response, baseUrl, path, method, {});
    if (result != utils::ERROR_NONE) {
        VLOG(4) << "DeviceAPI::request() failed";
        return result;
    }
    json::JSONObjectCleaner cleaner;
    json_object* root = detail::parseAnswer(cleaner, response);
    if (root == nullptr) {
        VLOG(4) << "Invalid response: " << response;
        return utils::ERROR_INVALID_RESPONSE;
    }
    long long code = -1;
    if (!json::JSONUtils::getInt(root, "code", code)) {
        VLOG(4) << "Failed to get tencent account (response: " << response << ")";
        return utils::ERROR_INVALID_RESPONSE;
    }
    if (code == 1) {
        VLOG(4) << "No super admin: " << response;
        return utils::ERROR_NO_SUPER_ADMIN;
    }
    if (code != 0) {
        VLOG(4) << "unknown error. response: " << response;
        return utils::ERROR_GENERAL;
    }
    json_object* data = nullptr;
    if (!json::JSONUtils::getJSONObject(root, "data", data)) {
        VLOG(4) << "Invalid response: " << response;
        return utils::ERROR_INVALID_RESPONSE;
    }
    // A key the service left out keeps the caller's value; a "data" that is
    // no object holds no keys, so the account comes back as it was, with 0.
    json::JSONUtils::getString(data, "txAppID", account.txAppID);
    json::JSONUtils::getString(data, "txID", account.txID);
    json::JSONUtils::getString(data, "txIDType", account.txIDType);
    json::JSONUtils::getString(data, "txVendorUID", account.txVendorUID);
    json::JSONUtils::getString(data, "txAccessToken", account.txAccessToken);
    json::JSONUtils::getString(data, "txRefreshToken", account.txRefreshToken);
    json::JSONUtils::getInt(data, "txExpiresIn", account.txExpiresIn);
    return utils::ERROR_NONE;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
