#include "velmar/quil/api/GetUserProfileAPI.h"

#include "api/Endpoint.h"
#include "api/RapidAnswer.h"
#include "velmar/http/HTTPRequest.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

namespace {

// The account service is not configurable: one fixed address, built at load.
const std::string kAccountBaseUrl("https://account.velmar-cloud.test");
const std::string kProfilePath("user/profile");

}  // namespace

utils::ErrorType GetUserProfileAPI::request(unsigned long long& userId, const std::string& clientId,
                                            const std::string& token) {
    detail::Params params;
    params["clientId"] = clientId;
    params["token"] = token;
    const std::string query = http::HTTPRequest::encodeHTTPParams(params);
    VLOG(2) << "Request params=" << query;

    int status = 0;
    std::string response;
    utils::ErrorType error = utils::ERROR_NONE;
    std::string errorMessage;
    const bool ok =
        http::HTTPRequest::httpRequest(status, response, error, errorMessage, kAccountBaseUrl,
                                       kProfilePath, query, "GET", {}, 15000);
    VLOG(2) << "Response info=" << response;
    // A transport failure alone decides nothing: whatever body came is still read.
    if (!ok || error != utils::ERROR_NONE) {
        VLOG(4) << "httpRequest() failed ("
                << "status: " << status << "; "
                << "error message: " << errorMessage << "; "
                << "error code: " << error << ")";
    }

    detail::RapidAnswer answer(response);
    if (!answer.parsed()) {
        VLOG(4) << "Invalid result:document.IsNull!";
        return utils::ERROR_HTTP_FAILED;
    }
    std::string result;
    if (!answer.getString("result", result)) {
        VLOG(4) << "Invalid Type displayname!";
        return utils::ERROR_HTTP_FAILED;
    }
    VLOG(2) << "Get result =" << result;
    if (result == "error") return utils::ERROR_GENERAL;

    const rapidjson::Value* data = answer.getObject("data");
    const rapidjson::Value* id = data != nullptr ? detail::memberOf(*data, "userId") : nullptr;
    if (id == nullptr) return utils::ERROR_GENERAL;
    // An integer is expected; anything else is treated as no user ID at all.
    if (id->IsUint64()) {
        userId = id->GetUint64();
    } else if (id->IsInt64()) {
        userId = static_cast<unsigned long long>(id->GetInt64());
    } else {
        VLOG(4) << "Invalid userId: " << response;
        return utils::ERROR_GENERAL;
    }
    VLOG(2) << "Get userId =" << userId;
    return utils::ERROR_NONE;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
