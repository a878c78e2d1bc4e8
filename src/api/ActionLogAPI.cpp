#include "velmar/quil/api/ActionLogAPI.h"

#include <cstdint>
#include <iostream>
#include <vector>

#include "api/Endpoint.h"
#include "velmar/crypto/BaseEncoding.h"
#include "velmar/crypto/RandomUtils.h"
#include "velmar/http/HTTPRequest.h"
#include "velmar/utils/TimeUtils.h"
#include "velmar/utils/UUIDUtils.h"

namespace velmar {
namespace quil {
namespace api {

namespace {

// 12 bytes: the first group of a fresh UUID text, then the minutes since the
// epoch (truncated to 32 bits) big-endian; standard Base64.
std::string actionNonce() {
    std::string uuid = utils::UUIDUtils::generate();
    uuid.resize(8, '0');
    std::vector<unsigned char> bytes(uuid.begin(), uuid.end());
    const auto minutes =
        static_cast<uint32_t>(static_cast<uint64_t>(utils::TimeUtils::currentTimeMillis() / 60000));
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<unsigned char>(minutes >> shift));
    return crypto::BaseEncoding::encodeB64(bytes);
}

}  // namespace

utils::ErrorType ActionLogAPI::upload(std::string& response, const std::string& did,
                                      const std::string& payload, const std::string& host) {
    const std::string nonce = actionNonce();
    // Both draws belong to the collector's protocol sequence; nothing sent is taken from them.
    crypto::RandomUtils::nextBytes(32);
    crypto::RandomUtils::nextBytes(16);
    std::cout << "did: " << did << "\n"
              << "payload: " << payload << "\n"
              << "host: " << host << "\n"
              << "nonce: " << nonce << std::endl;

    detail::Params params;
    params["payload"] = payload;
    params["_nonce"] = nonce;
    const std::string body = http::HTTPRequest::encodeHTTPParams(params);
    std::string segment;
    int status = -1;
    utils::ErrorType error = utils::ERROR_NONE;
    std::string errorMessage;
    bool ok = false;
    if (detail::pathSegment(did, segment)) {
        ok = http::HTTPRequest::httpRequest(status, response, error, errorMessage, host,
                                            "/action/v2/c/" + segment, body, "POST", {}, 15000);
    } else {
        // Not sent: a device ID of "." or ".." would climb the collector's path.
        error = utils::ERROR_INVALID_ARGUMENT;
        errorMessage = "device ID \"" + did + "\" cannot be a path segment";
    }

    // The outcome is printed, never returned: the caller reads `response`.
    std::cout << "success: " << ok << "\n"
              << "statusCode: " << status << "\n"
              << "response: " << response << "\n"
              << "errorCode: " << error << "\n"
              << "errorMessage: " << errorMessage << std::endl;
    return utils::ERROR_NONE;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
