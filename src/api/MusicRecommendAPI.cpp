#include "velmar/quil/api/MusicRecommendAPI.h"

#include "api/Endpoint.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType MusicRecommendAPI::getMusicRecommendation(std::string& result,
                                                           const std::string& baseUrl,
                                                           const std::string& userId,
                                                           const std::string& count) {
    static const std::string path(
        "/device/music_recommendation");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");
    detail::Params params;
    params["userId"] = userId;
    params["count"] = count;
    return detail::sendSigned(result, baseUrl, path, method, params);
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
