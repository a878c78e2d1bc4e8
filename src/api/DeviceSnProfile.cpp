#include "velmar/quil/api/DeviceSnProfile.h"

#include "api/ConfiguredService.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType DeviceSnProfile::getDeviceProfileBySn(std::string& result, bool preview) {
    // The service finds the device from the signed request's cookies alone.
    static const std::string path("/device_sn/get_profile");  // GCOVR_EXCL_BR_LINE: init guard
    return detail::lookUpOnUserProfile(result, preview, path, nullptr);
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
