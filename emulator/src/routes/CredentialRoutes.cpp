// The credentials family: the registration check, the super administrator,
// renewal and transfer of the device token pair, and the key of the
// low-power keep-alive mode. Also the local cloud's own control of the
// administrator, so that tests and the demo can bind and unbind the device
// the way a user's phone would.
//
// Renewal and transfer answer
//   {"code":0,"message":"ok","data":{"deviceTokenV2":T,"signatureV2":S}}
// named after the cookies the pair travels in from then on.
#include <cerrno>
#include <cstdlib>
#include <string>

#include "DeviceAuth.h"
#include "quilcloud/Cloud.h"

namespace quilcloud {

namespace {

constexpr int kUnboundCode = 612;

// A new pair: the signature binds the token to the device's channel secret.
void issueTokenPair(Device& device) {
    device.deviceToken = freshToken("dt2-");
    device.deviceTokenSign =
        deviceTokenFor(device.channelSecret, device.deviceId, device.deviceToken);
}

std::string tokenPairBody(const Device& device) {
    return "{\"code\":0,\"message\":\"ok\",\"data\":{\"deviceTokenV2\":\"" +
           jsonEscape(device.deviceToken) + "\",\"signatureV2\":\"" +
           jsonEscape(device.deviceTokenSign) + "\"}}";
}

// An administrator id as the control takes it: a positive number, or -1 (or
// nothing) for none.
bool parseAdmin(const std::string& text, long long& userId) {
    if (text.empty()) {
        userId = -1;
        return true;
    }
    errno = 0;
    char* end = nullptr;
    long long value = std::strtoll(text.c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || (value <= 0 && value != -1)) return false;
    userId = value;
    return true;
}

void registerRegistration(Cloud& cloud) {
    // Signed with the channel secret alone: no cookies, no request ID.
    cloud.route("POST", "/brokerlist/check_registration_status",
                [&cloud](const Received& request, Reply& reply) {
                    if (request.param("hash_algorithm") != "SHA256") {
                        reply.json(200, errorBody(2, "unsupported hash_algorithm"));
                        return;
                    }
                    auto device = cloud.registry().find(request.param("deviceId"));
                    if (!device) {
                        reply.json(200, errorBody(1, "device not registered"));
                        return;
                    }
                    const std::string nonce = request.param("nonce");
                    if (nonce.empty() ||
                        request.param("b64Sign") !=
                            deviceTokenFor(device->channelSecret, device->deviceId, nonce)) {
                        reply.json(200, errorBody(3, "registration signature does not match"));
                        return;
                    }
                    reply.json(200, "{\"code\":0,\"message\":\"registered\"}");
                });
}

void registerSuperAdmin(Cloud& cloud) {
    cloud.route("GET", "/device/super_admin", [&cloud](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device) return;
        const std::string master = request.param("master");
        if (master != "true" && master != "false") {
            reply.json(200, errorBody(2, "master must be true or false"));
            return;
        }
        // An unbound device is told so by its code, with -1 as the administrator.
        const int code = device->superAdmin < 0 ? kUnboundCode : 0;
        reply.json(200, "{\"code\":" + std::to_string(code) + ",\"message\":\"" +
                            (code == 0 ? "ok" : "device is not bound") +
                            "\",\"data\":" + std::to_string(device->superAdmin) + "}");
    });

    // The control: deviceId, and userId (a positive number; -1 or empty unbinds).
    cloud.route("POST", "/quil-cloud/super_admin", [&cloud](const Received& request, Reply& reply) {
        long long userId = -1;
        if (!parseAdmin(request.param("userId"), userId)) {
            reply.json(400, errorBody(400, "userId must be a positive number or -1"));
            return;
        }
        const std::string deviceId = request.param("deviceId");
        if (!cloud.registry().update(deviceId, [userId](Device& d) { d.superAdmin = userId; })) {
            reply.json(404, errorBody(404, "unknown device: " + deviceId));
            return;
        }
        reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":" + std::to_string(userId) + "}");
    });
}

void registerTokenPair(Cloud& cloud) {
    // From the renewal on, only the new pair is accepted (see authenticate).
    cloud.route("POST", "/device_token/v2/renew", [&cloud](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device) return;
        if (request.param("hash_algorithm") != "SHA256") {
            reply.json(200, errorBody(2, "unsupported hash_algorithm"));
            return;
        }
        Device renewed;
        cloud.registry().update(device->deviceId, [&renewed](Device& d) {
            issueTokenPair(d);
            renewed = d;
        });
        reply.json(200, tokenPairBody(renewed));
    });

    // Moves a device that signs with its channel secret alone onto a pair;
    // a device that holds one already is handed the same pair again.
    cloud.route("POST", "/device_token/v2/transfer",
                [&cloud](const Received& request, Reply& reply) {
                    auto device = authenticate(cloud, request, reply);
                    if (!device) return;
                    Device moved;
                    cloud.registry().update(device->deviceId, [&moved](Device& d) {
                        if (d.deviceToken.empty()) issueTokenPair(d);
                        moved = d;
                    });
                    reply.json(200, tokenPairBody(moved));
                });
}

void registerKeepAliveKey(Cloud& cloud) {
    // One key per device, made on first demand and the same from then on.
    cloud.route("GET", "/device/low_power_mode/transmission_secret",
                [&cloud](const Received& request, Reply& reply) {
                    auto device = authenticate(cloud, request, reply);
                    if (!device) return;
                    if ((!device->sn.empty() && request.param("sn") != device->sn) ||
                        (!device->model.empty() && request.param("hardware") != device->model)) {
                        reply.json(200, errorBody(2, "sn and hardware must be this device's"));
                        return;
                    }
                    std::string key;
                    cloud.registry().update(device->deviceId, [&key](Device& d) {
                        std::string& stored = d.settings["lowpower.key"];
                        if (stored.empty()) stored = freshToken("lp-");
                        key = stored;
                    });
                    reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":\"" + key + "\"}");
                });
}

}  // namespace

void registerCredentialRoutes(Cloud& cloud) {
    registerRegistration(cloud);
    registerSuperAdmin(cloud);
    registerTokenPair(cloud);
    registerKeepAliveKey(cloud);
}

}  // namespace quilcloud
