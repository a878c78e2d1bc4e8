#pragma once

#include <map>
#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

using utils::ErrorType;

/// The signed request to the device cloud service, and the device's own
/// standing there: registration, administrator, token pair, keep-alive key.
///
/// Every call blocks for one request of at most 15 s (the transport's
/// time-out), is safe from several threads at once and keeps no state.
class VELMAR_QUIL_EXPORT DeviceAPI {
  public:
    DeviceAPI() = delete;

    /// The signed request every endpoint of the device cloud goes through.
    /// Adds a fresh "requestId" to a copy of `params` and sends them with the
    /// identity cookies "userId", "sn", "deviceId", "nonce" and, when the
    /// nonce could be signed, "deviceToken" (HMAC-SHA256 of "<deviceId>/<nonce>"
    /// keyed with the first 16 bytes of the channel secret), "deviceTokenV2"
    /// and "signatureV2". The answer is not looked at.
    /// @param[out] response the body; untouched on failure
    /// @param[out] httpStatus the HTTP status the transport reported (0 when
    ///     no answer came; untouched when the request was refused before sending)
    /// @param baseUrl the service's address (scheme, host, port)
    /// @param path the endpoint's path, joined to `baseUrl` with one "/"
    /// @param method "GET" (parameters in the query) or "POST" (form body)
    /// @param params the endpoint's parameters
    /// @return ERROR_NONE (0) when the transport delivered an answer, whatever
    ///     its HTTP status; ERROR_HTTP_FAILED (604) when it did not, or when a
    ///     stored identity value holds ';', ',' or a control character and
    ///     would break the Cookie header (nothing is sent)
    /// @throws std::invalid_argument, std::out_of_range as
    ///     QuilConfigUtils::getSuperAdmin() does on a stored administrator id
    ///     that does not parse; so does every call built on this request
    static ErrorType request(std::string& response, int& httpStatus, const std::string& baseUrl,
                             const std::string& path, const std::string& method,
                             const std::map<std::string, std::string>& params);
    /// As the overload above, without the HTTP status.
    /// @param[out] response the body; untouched on failure
    /// @param baseUrl the service's address (scheme, host, port)
    /// @param path the endpoint's path
    /// @param method "GET" or "POST"
    /// @param params the endpoint's parameters
    /// @return ERROR_NONE (0) or ERROR_HTTP_FAILED (604), as above
    static ErrorType request(std::string& response, const std::string& baseUrl,
                             const std::string& path, const std::string& method,
                             const std::map<std::string, std::string>& params);

    /// "POST" "/brokerlist/check_registration_status" with "deviceId",
    /// "nonce", "hash_algorithm" ("SHA256") and "b64Sign": signed with the
    /// channel secret alone and sent without cookies or "requestId", so that it
    /// works before the device holds a token.
    /// @param[out] status "valid" when the answer's "code" is 0, "invalid"
    ///     for any other; untouched on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return ERROR_NONE (0); ERROR_GENERAL (101) when the signature could
    ///     not be made (nothing sent); ERROR_HTTP_FAILED (604) when no answer
    ///     came, or it is not JSON with an integer "code"
    static ErrorType checkRegistrationStatus(std::string& status, const std::string& baseUrl);
    /// "GET" "/device/super_admin" with "master" ("true" or "false"), signed.
    /// Not the stored administrator (QuilConfigUtils::getSuperAdmin()) but the cloud's.
    /// @param[out] userId the answer's integer "data", whatever its "code"
    ///     (-1 when the device is unbound); untouched on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param master whether to ask the master copy
    /// @return ERROR_NONE (0); ERROR_HTTP_FAILED (604) when no answer came or
    ///     it holds no integer "data"
    static ErrorType getSuperAdmin(long long& userId, const std::string& baseUrl, bool master);
    /// "POST" "/device_token/v2/renew" with "hash_algorithm" ("SHA256"),
    /// signed: renews the device token pair. Reading the new pair from the
    /// answer and storing it (QuilConfigUtils::setDeviceTokenAndSignature())
    /// is the caller's.
    /// @param[out] response the raw answer; empty on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_HTTP_FAILED (604) when none did
    static ErrorType requestDeviceTokenV2(std::string& response, const std::string& baseUrl);
    /// "POST" "/device_token/v2/transfer", no parameters of its own, signed:
    /// the transfer of the device token pair. As with requestDeviceTokenV2(),
    /// reading and storing the pair the answer carries is the caller's.
    /// @param[out] response the raw answer; empty on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_HTTP_FAILED (604) when none did
    static ErrorType requestDeviceTransfer(std::string& response, const std::string& baseUrl);
    /// "GET" "/device/low_power_mode/transmission_secret" with "hardware" and
    /// "sn" (empty when unreadable), signed: the key of the low-power keep-alive mode.
    /// @param[out] key the answer's string "data"; untouched when the answer
    ///     carries none or the call fails
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return ERROR_NONE (0) when a JSON answer came, with or without a key;
    ///     ERROR_HTTP_FAILED (604) when no answer came or it is not JSON
    static ErrorType keepAliveKeyGet(std::string& key, const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
