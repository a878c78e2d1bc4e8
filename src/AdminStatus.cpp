// QuilConfigUtils: the stored super administrator kept in line with the
// cloud's, under the one lock of the library.
#include "api/ConfiguredService.h"
#include "api/Endpoint.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/quil/QuilConfigUtils.h"
#include "velmar/quil/api/DeviceAPI.h"
#include "velmar/utils/ConfigFile.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {

namespace {

constexpr long long kUnbound = -1;

}  // namespace

std::mutex QuilConfigUtils::sAdminStatusMutex;

bool QuilConfigUtils::syncAdminStatus(bool master) {
    std::lock_guard<std::mutex> lock(sAdminStatusMutex);
    const std::string baseUrl = api::detail::configuredUrl(utils::ConfigFile::sQuilAPIURL);
    long long oldId = kUnbound;
    long long newId = kUnbound;
    getSuperAdmin(oldId);  // nothing stored keeps kUnbound

    utils::ErrorType result = api::DeviceAPI::getSuperAdmin(newId, baseUrl, master);
    if (result != utils::ERROR_NONE && result != utils::ERROR_DEVICE_UNBOUND) {
        VLOG(4) << "DeviceAPI::getSuperAdmin() failed with code: " << result;
        return false;
    }
    // Kept for a service or transport that reports the unbound device this
    // way; the signed request itself only yields 0 or 604.
    if (result == utils::ERROR_DEVICE_UNBOUND) {
        VLOG(2) << "somehow, device unbinded, old admin user id:" << oldId;
        newId = kUnbound;
    }
    if (newId == oldId) {
        VLOG(2) << "admin user id not changed: " << newId;
        return true;
    }

    VLOG(2) << "admin user id changed("
            << "admin user id: " << newId << ", "
            << "old admin user id: " << oldId << ")";
    if (newId == kUnbound) {
        VLOG(2) << "device unbind, will invoke bind_device.sh";
        dev_restore();
    } else {
        VLOG(2) << "device bind, will invoke bind_device.sh";
        bind_uid();
    }
    // Unlike the other setters, uid_set reports success with a positive value.
    return uid_set(api::detail::decimal(newId).c_str()) > 0;
}

bool QuilConfigUtils::clearAdminStatus() {
    std::lock_guard<std::mutex> lock(sAdminStatusMutex);
    return uid_clean() >= 0;
}

}  // namespace quil
}  // namespace velmar
