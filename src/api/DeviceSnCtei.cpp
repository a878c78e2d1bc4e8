#include "velmar/quil/api/DeviceSnCtei.h"

#include "api/ConfiguredService.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType DeviceSnCtei::getDeviceCteiBySn(std::string& result, bool preview) {
    static const std::string path("/device_sn/get_device_ctei");  // GCOVR_EXCL_BR_LINE: init guard
    return detail::lookUpOnUserProfile(result, preview, path, "deviceSn");
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
