#include "velmar/quil/api/StereoAPI.h"

#include "api/Endpoint.h"
#include "velmar/quil/QuilConfigUtils.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType StereoAPI::SetServer(std::string& response, const std::string& baseUrl) {
    static const std::string path("/iot/dcm/set_stereo_server");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("POST");
    std::string hardware;
    if (!QuilConfigUtils::getHardware(hardware)) hardware.clear();  // sent empty when unknown
    detail::Params params;
    params["hardware"] = hardware;
    return detail::sendSigned(response, baseUrl, path, method, params);
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
