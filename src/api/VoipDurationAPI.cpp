#include "velmar/quil/api/VoipDurationAPI.h"

#include "api/AccountScope.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType VoipDurationAPI::getStatus(std::string& response, const std::string& baseUrl) {
    static const std::string path(
        "/duration/current_month/status/linux");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");
    return detail::sendForSuperAdmin(response, baseUrl, path, method, {});
}

utils::ErrorType VoipDurationAPI::add(std::string& response, const std::string& baseUrl,
                                      std::string& durationInSec) {
    // Adding is a GET with the duration in the query; the service is built so.
    static const std::string path(
        "/duration/current_month/add/linux");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");
    detail::Params params;
    params["durationInSec"] = durationInSec;
    return detail::sendForSuperAdmin(response, baseUrl, path, method, params);
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
