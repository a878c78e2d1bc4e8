#include "DeviceAuth.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>

namespace quilcloud {

std::string deviceTokenFor(const std::string& channelSecret, const std::string& deviceId,
                           const std::string& nonce) {
    unsigned char key[16] = {};
    std::memcpy(key, channelSecret.data(), std::min<size_t>(channelSecret.size(), sizeof(key)));
    const std::string text = deviceId + "/" + nonce;
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    HMAC(EVP_sha256(), key, sizeof(key), reinterpret_cast<const unsigned char*>(text.data()),
         text.size(), digest, &size);
    unsigned char encoded[4 * ((EVP_MAX_MD_SIZE + 2) / 3) + 1];
    int length = EVP_EncodeBlock(encoded, digest, static_cast<int>(size));
    return std::string(reinterpret_cast<char*>(encoded), static_cast<size_t>(length));
}

std::string freshToken(const std::string& prefix) {
    static thread_local std::mt19937_64 generator{std::random_device{}()};
    static const char digits[] = "0123456789abcdef";
    std::string token = prefix;
    for (int i = 0; i < 32; ++i)
        token += digits[generator() % 16];
    return token;
}

std::string jsonEscape(const std::string& text) {
    std::string out;
    for (unsigned char c : text) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (c < 0x20) {
                    char buffer[8];
                    std::snprintf(buffer, sizeof(buffer), "\\u%04x", c);
                    out += buffer;
                } else {
                    out += static_cast<char>(c);
                }
        }
    }
    return out;
}

std::string errorBody(int code, const std::string& message) {
    return "{\"code\":" + std::to_string(code) + ",\"message\":\"" + jsonEscape(message) + "\"}";
}

std::optional<Device> authenticate(Cloud& cloud, const Received& request, Reply& reply) {
    auto refuse = [&reply](int status, const std::string& message) {
        reply.json(status, errorBody(status, message));
        return std::nullopt;
    };
    if (request.param("requestId").empty()) return refuse(400, "missing requestId");
    auto cookie = [&request](const char* name) {
        auto it = request.cookies.find(name);
        return it == request.cookies.end() ? std::string() : it->second;
    };
    const std::string deviceId = cookie("deviceId");
    std::optional<Device> device = cloud.registry().find(deviceId);
    if (!device) return refuse(401, "unknown device: " + deviceId);
    if (!device->sn.empty() && cookie("sn") != device->sn) {
        return refuse(401, "serial number does not match the device");
    }
    const std::string nonce = cookie("nonce");
    if (nonce.empty() ||
        cookie("deviceToken") != deviceTokenFor(device->channelSecret, deviceId, nonce)) {
        return refuse(401, "invalid device signature");
    }
    // The stored token pair is checked once the cloud has issued one.
    if (!device->deviceToken.empty() && (cookie("deviceTokenV2") != device->deviceToken ||
                                         cookie("signatureV2") != device->deviceTokenSign)) {
        return refuse(401, "invalid device token");
    }
    return device;
}

}  // namespace quilcloud
