// What the device-service families read of the state the cloud keeps on a
// device.
#pragma once

#include <string>

#include "quilcloud/Cloud.h"

namespace quilcloud {

// The value a family keeps on the device under `key` ("" when none).
inline std::string setting(const Device& device, const std::string& key) {
    auto it = device.settings.find(key);
    return it == device.settings.end() ? std::string() : it->second;
}

// Whether the request's "userId" names the device's administrator.
inline bool fromAdministrator(const Device& device, const Received& request) {
    return device.superAdmin >= 0 && request.param("userId") == std::to_string(device.superAdmin);
}

}  // namespace quilcloud
