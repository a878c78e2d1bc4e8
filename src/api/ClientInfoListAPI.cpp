#include "velmar/quil/api/ClientInfoListAPI.h"

#include "api/AccountScope.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType ClientInfoListAPI::getClientList(std::string& response,
                                                  const std::string& baseUrl) {
    static const std::string path("/client_info/list/linux");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");
    return detail::sendForSuperAdmin(response, baseUrl, path, method, {});
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
