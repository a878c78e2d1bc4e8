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

utils::ErrorType fetchCatalogueSongList(json_object*& songList, json::JSONObjectCleaner& cleaner,
                                        const std::string& baseUrl, const std::string& path,
                                        const char* key, const std::string& value,
                                        const std::vector<std::string>& headers, bool arrayOnly) {
    Params params;
    params[key] = value;
    const std::string query = http::HTTPRequest::encodeHTTPParams(params);
    const std::string method("GET");
    int status = 0;
    std::string response;
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
    json_object* data = nullptr;
    json_object* songs = nullptr;
    if (json::JSONUtils::getJSONObject(root, "data", data))
        songs = json_object_object_get(data, "songList");
    if (songs == nullptr || (arrayOnly && !json_object_is_type(songs, json_type_array))) {
        VLOG(4) << "Invalid response: " << response;
        return utils::ERROR_HTTP_FAILED;
    }
    songList = songs;
    return utils::ERROR_NONE;
}

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
