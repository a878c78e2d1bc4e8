#include "api/AccountScope.h"

#include "velmar/quil/QuilConfigUtils.h"
#include "velmar/quil/api/DeviceAPI.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {
namespace detail {

bool superAdminUserId(std::string& userId) {
    long long id = 0;
    // A stored ID that passed the platform's test but does not parse throws
    // out of here as out of every signed request: the platform's test is
    // what keeps such a text away.
    if (!QuilConfigUtils::getSuperAdmin(id)) {
        VLOG(4) << "Failed to get user id";
        return false;
    }
    userId = decimal(id);
    return true;
}

utils::ErrorType sendForSuperAdmin(std::string& response, const std::string& baseUrl,
                                   const std::string& path, const std::string& method,
                                   Params params) {
    std::string userId;
    if (!superAdminUserId(userId)) return utils::ERROR_GENERAL;
    params["userId"] = userId;
    std::string answer;
    utils::ErrorType result = DeviceAPI::request(answer, baseUrl, path, method, params);
    if (result != utils::ERROR_NONE) {
        VLOG(4) << "HTTP request failed: " << result;
        return result;
    }
    response.swap(answer);
    return result;
}

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
