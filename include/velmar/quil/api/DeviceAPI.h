#pragma once

#include <map>
#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

using utils::ErrorType;

// The signed request to the device cloud service.
class VELMAR_QUIL_EXPORT DeviceAPI {
  public:
    DeviceAPI() = delete;

    // Adds a fresh "requestId" to a copy of `params`, signs the call with the
    // device's identity cookies and sends it (15 s time-out). 0 with the body
    // in `response`, or 604 with `response` untouched; `httpStatus` is what
    // the transport reported. Like every call built on it, throws as
    // QuilConfigUtils::getSuperAdmin does on a stored id that does not parse.
    static ErrorType request(std::string& response, int& httpStatus, const std::string& baseUrl,
                             const std::string& path, const std::string& method,
                             const std::map<std::string, std::string>& params);
    static ErrorType request(std::string& response, const std::string& baseUrl,
                             const std::string& path, const std::string& method,
                             const std::map<std::string, std::string>& params);

    // Whether the cloud holds the device's registration as valid: `status`
    // becomes "valid" or "invalid". Signed with the channel secret alone and
    // sent without cookies, so it works before the device holds a token.
    // 101 when the signature could not be made, 604 when nothing usable came
    // back (`status` untouched).
    static ErrorType checkRegistrationStatus(std::string& status, const std::string& baseUrl);
    // The cloud's super administrator of the device ("data" of the answer,
    // -1 when unbound), asked of the master copy when `master`.
    static ErrorType getSuperAdmin(long long& userId, const std::string& baseUrl, bool master);
    // Renewal and transfer of the device token pair. `response` receives the
    // body whatever the outcome (empty on failure); reading and storing the
    // new pair is the caller's.
    static ErrorType requestDeviceTokenV2(std::string& response, const std::string& baseUrl);
    static ErrorType requestDeviceTransfer(std::string& response, const std::string& baseUrl);
    // The key of the low-power keep-alive mode; `key` is untouched when the
    // answer carries none.
    static ErrorType keepAliveKeyGet(std::string& key, const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
