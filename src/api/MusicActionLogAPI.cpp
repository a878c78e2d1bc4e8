#include "velmar/quil/api/MusicActionLogAPI.h"

#include "api/Endpoint.h"
#include "velmar/quil/QuilConfigUtils.h"

namespace velmar {
namespace quil {
namespace api {

namespace {

// A device value, "" when it can't be read: the action is reported anyway.
std::string deviceValue(bool (*read)(std::string&)) {
    std::string value;
    if (!read(value)) value.clear();
    return value;
}

}  // namespace

utils::ErrorType MusicActionLogAPI::log(std::string& result, const std::string& baseUrl,
                                        const std::string& userId, const std::string& appId,
                                        const std::string& eventType, const std::string& itemId,
                                        const std::string& itemType, const std::string& extraInfo) {
    static const std::string path("/device/music_action_log");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("POST");
    detail::Params params;
    params["userId"] = userId;
    params["appId"] = appId;
    params["hardware"] = deviceValue(QuilConfigUtils::getHardware);
    params["romVersion"] = deviceValue(QuilConfigUtils::getROMVersion);
    params["romChannel"] = deviceValue(QuilConfigUtils::getROMChannel);
    params["eventType"] = eventType;
    params["itemId"] = itemId;
    params["itemType"] = itemType;
    params["extraInfo"] = extraInfo;
    return detail::sendSigned(result, baseUrl, path, method, params);
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
