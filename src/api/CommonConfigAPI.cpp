#include "velmar/quil/api/CommonConfigAPI.h"

#include "api/AccountScope.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType CommonConfigAPI::getConfig(std::string& response, const std::string& baseUrl,
                                            std::string& configName) {
    static const std::string path("/common_config/linux");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");
    detail::Params params;
    params["configName"] = configName;
    return detail::sendForSuperAdmin(response, baseUrl, path, method, params);
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
