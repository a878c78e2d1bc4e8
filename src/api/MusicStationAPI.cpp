#include "velmar/quil/api/MusicStationAPI.h"

#include "api/Endpoint.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType MusicStationAPI::getStationSoundList(
    std::string& result, const std::string& baseUrl, const std::string& stationId,
    const std::string& origin, const std::string& category, const int& offset, const int& count) {
    static const std::string path("/device/station/sound_list");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");
    detail::Params params;
    params["stationId"] = stationId;
    params["origin"] = origin;
    params["category"] = category;
    params["offset"] = detail::decimal(offset);
    params["count"] = detail::decimal(count);
    return detail::sendSigned(result, baseUrl, path, method, params);
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
