// The service-token family: the voice-assistant and messaging-cloud tokens
// the cloud issues, the IoT-platform session token the device hands over and
// fetches back, and the linked Tencent account.
#include <string>

#include "DeviceAuth.h"
#include "quilcloud/Cloud.h"
#include "routes/DeviceState.h"

namespace quilcloud {

namespace {

constexpr int kAiTokenSeconds = 7200;
constexpr int kVeotTokenSeconds = 3600;

}  // namespace

void registerTokenRoutes(Cloud& cloud) {
    cloud.route("GET", "/device/aiservice/token/", [&cloud](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device) return;
        const std::string token = freshToken("ai-");
        cloud.registry().update(device->deviceId,
                                [&](Device& d) { d.settings["aiservice.token"] = token; });
        reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":{\"token\":\"" + token +
                            "\",\"expiresIn\":" + std::to_string(kAiTokenSeconds) + "}}");
    });

    cloud.route("GET", "/vemc/token/linux", [&cloud](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device) return;
        if (!fromAdministrator(*device, request)) {
            reply.json(200, errorBody(3, "user is not the administrator of this device"));
            return;
        }
        if (request.param("clientId") != device->deviceId) {
            reply.json(200, errorBody(2, "clientId is not this device"));
            return;
        }
        const std::string token = freshToken("vemc-");
        cloud.registry().update(device->deviceId,
                                [&](Device& d) { d.settings["vemc.token"] = token; });
        reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":\"" + token + "\"}");
    });

    // The session token is accepted from the administrator only and handed
    // back on download ("sessionId" going up, "sessionID" coming back, as the
    // real service spells them).
    cloud.route(
        "POST", "/device/veot/token/upload/", [&cloud](const Received& request, Reply& reply) {
            auto device = authenticate(cloud, request, reply);
            if (!device) return;
            const std::string token = request.param("token");
            const std::string session = request.param("sessionId");
            if (token.empty() || session.empty()) {
                reply.json(200, errorBody(2, "token and sessionId are required"));
                return;
            }
            if (!fromAdministrator(*device, request)) {
                reply.json(200, errorBody(1, "token refused: user is not the administrator"));
                return;
            }
            cloud.registry().update(device->deviceId, [&](Device& d) {
                d.settings["veot.token"] = token;
                d.settings["veot.sessionId"] = session;
            });
            reply.json(200, "{\"code\":0,\"message\":\"ok\"}");
        });
    cloud.route(
        "GET", "/device/veot/token/download", [&cloud](const Received& request, Reply& reply) {
            auto device = authenticate(cloud, request, reply);
            if (!device) return;
            const std::string token = setting(*device, "veot.token");
            if (token.empty()) {
                reply.json(200, "{\"code\":1,\"message\":\"no token uploaded\",\"data\":{}}");
                return;
            }
            reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":{\"sessionID\":\"" +
                                jsonEscape(setting(*device, "veot.sessionId")) + "\",\"token\":\"" +
                                jsonEscape(token) +
                                "\",\"expire\":" + std::to_string(kVeotTokenSeconds) + "}}");
        });

    cloud.route("GET", "/device/tencent/account", [&cloud](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device) return;
        if (device->superAdmin < 0) {
            reply.json(200, errorBody(1, "no super admin to link"));
            return;
        }
        const std::string admin = std::to_string(device->superAdmin);
        reply.json(200,
                   "{\"code\":0,\"message\":\"ok\",\"data\":{\"txAppID\":\"tx-app-quil\","
                   "\"txID\":\"tx-" +
                       admin + "\",\"txIDType\":\"OPENID\",\"txVendorUID\":\"" + admin +
                       "\",\"txAccessToken\":\"" + freshToken("txa-") + "\",\"txRefreshToken\":\"" +
                       freshToken("txr-") + "\",\"txExpiresIn\":7776000}}");
    });
}

}  // namespace quilcloud
