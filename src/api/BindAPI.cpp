#include "velmar/quil/api/BindAPI.h"

#include <map>
#include <vector>

#include "api/ConfiguredService.h"
#include "api/Endpoint.h"
#include "velmar/http/HTTPRequest.h"
#include "velmar/utils/ConfigFile.h"
#include "velmar/utils/Logging.h"
#include "velmar/utils/UUIDUtils.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType BindAPI::bind(std::string& response, long long userId,
                               const std::string& payload) {
    static const std::string path("/bind/");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string baseUrl = detail::configuredUrl(utils::ConfigFile::sQuilAPIURL);
    int status = -1;
    utils::ErrorType error = utils::ERROR_GENERAL;
    std::string errorMessage;
    // Fresh per call, and in the failure line, so the service side can find the attempt.
    const std::string requestId = utils::UUIDUtils::generate();
    std::map<std::string, std::vector<std::string>> fields;
    fields["payload"].push_back(payload);
    fields["userId"].push_back(detail::decimal(userId));
    fields["requestId"].push_back(requestId);

    const bool ok = http::HTTPRequest::httpRequest(status, response, error, errorMessage, baseUrl,
                                                   path, fields, "POST", {}, 15000);
    // The status is not looked at: the caller interprets the service's answer.
    if (ok && error == utils::ERROR_NONE) return utils::ERROR_NONE;
    VLOG(4) << "httpRequest() failed ("
            << "requestId: " << requestId << "; "
            << "status: " << status << "; "
            << "error message: " << errorMessage << "; "
            << "error code: " << error << ")";
    return utils::ERROR_HTTP_FAILED;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
