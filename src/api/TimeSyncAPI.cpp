#include "velmar/quil/api/TimeSyncAPI.h"

#include "api/ConfiguredService.h"
#include "api/RapidAnswer.h"
#include "velmar/http/HTTPRequest.h"
#include "velmar/utils/ConfigFile.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType TimeSyncAPI::request(long long& serverTime) {
    const std::string url = detail::configuredUrl(utils::ConfigFile::sTimeSyncURL);
    int status = -1;
    std::string response;
    utils::ErrorType error = utils::ERROR_NONE;
    std::string errorMessage;
    if (!http::HTTPRequest::httpRequest(status, response, error, errorMessage, url, "", "GET", {},
                                        15000, "")) {
        VLOG(4) << "HTTPRequest::httpGet() not successful"
                << " (error: " << errorMessage << ")";
        return utils::ERROR_HTTP_FAILED;
    }
    // With a 200 the transport's error value has nothing more to say.
    if (status != 200) {
        VLOG(4) << "HTTPRequest::httpGet() none 200 status code: " << status << "; "
                << "result: " << response << " (error: " << errorMessage << ")";
        return utils::ERROR_HTTP_FAILED;
    }

    detail::RapidAnswer answer(response);
    int code = -1;
    const rapidjson::Value* data = answer.getObject("data");
    const rapidjson::Value* t = data != nullptr ? detail::memberOf(*data, "t") : nullptr;
    if (!answer.parsed() || !answer.getInt("code", code) || code != 0 || t == nullptr ||
        !t->IsInt64()) {
        VLOG(4) << "Invalid result: " << response;
        return utils::ERROR_INVALID_RESPONSE;
    }
    serverTime = t->GetInt64();
    // As the device's time-sync line always was: ended by an end of line of
    // its own, before the one the logger adds.
    VLOG(2) << "time sync result: " << response << '\n';
    return utils::ERROR_NONE;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
