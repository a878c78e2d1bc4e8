// The device family: presence and ping.
#include <chrono>

#include "DeviceAuth.h"
#include "quilcloud/Cloud.h"

namespace quilcloud {

namespace {

long long nowMillis() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

}  // namespace

void registerDeviceRoutes(Cloud& cloud) {
    cloud.route("GET", "/device/presence/", [&cloud](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device) return;
        reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":{\"deviceId\":\"" +
                            jsonEscape(device->deviceId) + "\",\"online\":true}}");
    });
    cloud.route("POST", "/device/ping/", [&cloud](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device) return;
        reply.json(200, "{\"code\":0,\"message\":\"pong\",\"data\":{\"pingLevel\":\"" +
                            jsonEscape(request.param("pingLevel")) +
                            "\",\"serverTime\":" + std::to_string(nowMillis()) + "}}");
    });
}

}  // namespace quilcloud
