#include "api/CatalogueService.h"

#include <map>

#include "api/Endpoint.h"
#include "velmar/http/HTTPRequest.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {
namespace detail {

namespace {

constexpr int kTimeoutMs = 15000;

}  // namespace

utils::ErrorType fetchCatalogueData(json_object*& data, std::string& response,
                                    json::JSONObjectCleaner& cleaner, const std::string& baseUrl,
                                    const std::string& path, const char* key,
                                    const std::string& value,
                                    const std::vector<std::string>& headers) {
    Params params;
    params[key] = value;
    const std::string query = http::HTTPRequest::encodeHTTPParams(params);
    const std::string method("GET");
    int status = 0;
    utils::ErrorType error = utils::ERROR_NONE;
    std::string errorMessage;
    if (!http::HTTPRequest::httpRequest(status, response, error, errorMessage, baseUrl, path, query,
                                        method, headers, kTimeoutMs) ||
        error != utils::ERROR_NONE) {
        VLOG(4) << "httpRequest() failed with ("
                << "status: " << status << "; "
                << "error message: " << errorMessage << "; "
                << "error code: " << error << ")";
        return utils::ERROR_HTTP_FAILED;
    }
    json_object* root = parseAnswer(cleaner, response);
    if (!json::JSONUtils::getJSONObject(root, "data", data)) {
        VLOG(4) << "Invalid response: " << response;
        return utils::ERROR_HTTP_FAILED;
    }
    return utils::ERROR_NONE;
}

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
