#include "velmar/quil/api/DeviceAPI.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "api/Endpoint.h"
#include "velmar/crypto/BaseEncoding.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/http/HTTPRequest.h"
#include "velmar/quil/QuilConfigUtils.h"
#include "velmar/utils/Logging.h"
#include "velmar/utils/UUIDUtils.h"

namespace velmar {
namespace quil {
namespace api {

using http::HTTPRequest;
using json::JSONUtils;
using utils::ERROR_GENERAL;
using utils::ERROR_HTTP_FAILED;
using utils::ERROR_NONE;
using utils::UUIDUtils;

namespace {

constexpr int kTimeoutMs = 15000;
// The service keys the device token with exactly the first 16 bytes of the
// channel secret, whatever the secret's length.
constexpr size_t kKeyLength = 16;

struct ByteStringDeleter {
    void operator()(str_t* s) const { str_destroy(s); }
};

// Base64 of HMAC-SHA256 over "<deviceId>/<nonce>"; false (and logged) when
// the platform could not compute it.
bool signNonce(std::string& out, const std::string& deviceId, const std::string& nonce,
               const std::string& secret) {
    std::string text = deviceId + "/" + nonce;
    // A shorter secret is padded with zero bytes, which HMAC treats exactly as
    // the short key; reading 16 bytes of it would run past its end.
    unsigned char key[kKeyLength] = {};
    std::memcpy(key, secret.data(), std::min(secret.size(), kKeyLength));
    str_t data{static_cast<uint32_t>(text.size()), reinterpret_cast<unsigned char*>(&text[0])};
    str_t keyBytes{static_cast<uint32_t>(kKeyLength), key};
    std::unique_ptr<str_t, ByteStringDeleter> mac(str_hmac_sha256(&data, &keyBytes));
    str_hexdump("hmac", mac.get());
    if (!mac) {
        VLOG(4) << "Failed to generate hmac_sha256";
        return false;
    }
    return crypto::BaseEncoding::encodeB64(out, mac->data, mac->len);
}

// The signed request with its failure logged.
ErrorType sendLogged(std::string& response, const std::string& baseUrl, const std::string& path,
                     const std::string& method, const detail::Params& params) {
    ErrorType result = detail::sendSigned(response, baseUrl, path, method, params);
    if (result != ERROR_NONE) VLOG(4) << "request failed: " << result;
    return result;
}

}  // namespace

ErrorType DeviceAPI::request(std::string& response, int& httpStatus, const std::string& baseUrl,
                             const std::string& path, const std::string& method,
                             const std::map<std::string, std::string>& params) {
    std::map<std::string, std::string> sent(params);
    const std::string requestId = UUIDUtils::generate();
    sent["requestId"] = requestId;
    const std::string encoded = HTTPRequest::encodeHTTPParams(sent);
    VLOG(4) << "!!!!!!params is :" << encoded;

    std::map<std::string, std::string> cookies;
    long long userId = 0;
    QuilConfigUtils::getSuperAdmin(userId);  // 0 stands for "no administrator"
    cookies["userId"] = detail::decimal(userId);
    std::string sn;
    QuilConfigUtils::getSN(sn);
    cookies["sn"] = sn;
    std::string deviceId;
    QuilConfigUtils::getDeviceID(deviceId);
    cookies["deviceId"] = deviceId;
    std::string secret;
    QuilConfigUtils::getChannelSecret(secret);
    const std::string nonce = UUIDUtils::generate();
    cookies["nonce"] = nonce;

    std::string deviceToken;
    if (signNonce(deviceToken, deviceId, nonce, secret)) {
        cookies["deviceToken"] = deviceToken;
        std::string token;
        std::string signature;
        if (!QuilConfigUtils::getDeviceTokenAndSignature(token, signature)) {
            VLOG(3) << "Failed to get device-token-V2/signature";
        }
        cookies["signatureV2"] = signature;
        cookies["deviceTokenV2"] = token;
    }
    // A stored value holding a separator would add a cookie of its own (a
    // forged "userId"), a line break would end the header: nothing is sent.
    for (const auto& [name, value] : cookies) {
        if (!detail::isCookieValue(value)) {
            VLOG(4) << "cookie \"" << name
                    << "\" refused: its value holds ';', ',' or a control character";
            return ERROR_HTTP_FAILED;
        }
    }
    const std::vector<std::string> headers(1, HTTPRequest::buildCookieHeader(cookies));

    std::string body;
    ErrorType error = ERROR_NONE;
    std::string errorMessage;
    bool ok = HTTPRequest::httpRequest(httpStatus, body, error, errorMessage, baseUrl, path,
                                       encoded, method, headers, kTimeoutMs);
    if (!ok || error != ERROR_NONE) {
        VLOG(4) << "httpRequest() failed ("
                << "requestId: " << requestId << "; "
                << "status: " << httpStatus << "; "
                << "error message: " << errorMessage << "; "
                << "error code: " << error << ")";
        return ERROR_HTTP_FAILED;
    }
    response.swap(body);
    return error;
}

ErrorType DeviceAPI::request(std::string& response, const std::string& baseUrl,
                             const std::string& path, const std::string& method,
                             const std::map<std::string, std::string>& params) {
    int httpStatus = -1;
    return request(response, httpStatus, baseUrl, path, method, params);
}

ErrorType DeviceAPI::checkRegistrationStatus(std::string& status, const std::string& baseUrl) {
    static const std::string path(
        "/brokerlist/check_registration_status");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("POST");
    detail::Params params;
    std::string deviceId;
    QuilConfigUtils::getDeviceID(deviceId);
    params["deviceId"] = deviceId;
    std::string secret;
    QuilConfigUtils::getChannelSecret(secret);
    const std::string nonce = UUIDUtils::generate();
    params["nonce"] = nonce;
    std::string signature;
    if (!signNonce(signature, deviceId, nonce, secret)) return ERROR_GENERAL;
    params["hash_algorithm"] = "SHA256";
    params["b64Sign"] = signature;

    // No request ID and no cookies: the device may not hold a token yet.
    int httpStatus = -1;
    std::string response;
    ErrorType error = ERROR_NONE;
    std::string errorMessage;
    if (!HTTPRequest::httpRequest(httpStatus, response, error, errorMessage, baseUrl, path,
                                  HTTPRequest::encodeHTTPParams(params), method, {}, kTimeoutMs)) {
        return ERROR_HTTP_FAILED;
    }
    json::JSONObjectCleaner cleaner;
    json_object* root = detail::parseAnswer(cleaner, response);
    long long code = -1;
    if (!JSONUtils::getInt(root, "code", code)) {  // no JSON, or no "code"
        VLOG(4) << "Invalid result: " << response;
        return ERROR_HTTP_FAILED;
    }
    status = code == 0 ? "valid" : "invalid";
    return ERROR_NONE;
}

ErrorType DeviceAPI::getSuperAdmin(long long& userId, const std::string& baseUrl, bool master) {
    static const std::string path("/device/super_admin");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");
    detail::Params params;
    params["master"] = master ? "true" : "false";
    std::string response;
    ErrorType result = sendLogged(response, baseUrl, path, method, params);
    if (result != ERROR_NONE) return result;
    json::JSONObjectCleaner cleaner;
    json_object* root = detail::parseAnswer(cleaner, response);
    // "data" alone tells the administrator, whatever "code" says: the cloud
    // answers an unbound device with an error code and -1.
    if (!JSONUtils::getInt(root, "data", userId)) {
        VLOG(4) << "Invalid response: " << response;
        return ERROR_HTTP_FAILED;
    }
    return ERROR_NONE;
}

ErrorType DeviceAPI::requestDeviceTokenV2(std::string& response, const std::string& baseUrl) {
    static const std::string path("/device_token/v2/renew");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("POST");
    detail::Params params;
    params["hash_algorithm"] = "SHA256";
    return sendLogged(response, baseUrl, path, method, params);
}

ErrorType DeviceAPI::requestDeviceTransfer(std::string& response, const std::string& baseUrl) {
    static const std::string path("/device_token/v2/transfer");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("POST");
    detail::Params params;
    return sendLogged(response, baseUrl, path, method, params);
}

ErrorType DeviceAPI::keepAliveKeyGet(std::string& key, const std::string& baseUrl) {
    static const std::string path(
        "/device/low_power_mode/transmission_secret");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");
    detail::Params params;
    std::string hardware;
    QuilConfigUtils::getHardware(hardware);
    params["hardware"] = hardware;
    std::string sn;
    QuilConfigUtils::getSN(sn);
    params["sn"] = sn;
    std::string response;
    // A failed request leaves the response empty, which the parse refuses.
    detail::sendSigned(response, baseUrl, path, method, params);
    json::JSONObjectCleaner cleaner;
    json_object* root = detail::parseAnswer(cleaner, response);
    if (root == nullptr) {
        VLOG(4) << "Invalid response: " << response;
        return ERROR_HTTP_FAILED;
    }
    JSONUtils::getString(root, "data", key);
    return ERROR_NONE;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
