// The notification family: notifications landed on the user's phone.
#include <string>

#include "DeviceAuth.h"
#include "quilcloud/Cloud.h"

namespace quilcloud {

namespace {

bool isInteger(const std::string& text) {
    size_t start = !text.empty() && text[0] == '-' ? 1 : 0;
    if (start == text.size() || text.size() > 16) return false;
    return text.find_first_not_of("0123456789", start) == std::string::npos;
}

}  // namespace

void registerNotificationRoutes(Cloud& cloud) {
    cloud.route(
        "POST", "/device/land_notification/", [&cloud](const Received& request, Reply& reply) {
            auto device = authenticate(cloud, request, reply);
            if (!device) return;
            const std::string type = request.param("type");
            if (!isInteger(type)) {
                reply.json(200, errorBody(2, "invalid notification type: " + type));
                return;
            }
            // The phone shows what it finds in extraAttributes; the cloud keeps
            // the count and the last one so that a test can see what landed.
            long long id = 0;
            cloud.registry().update(device->deviceId, [&](Device& d) {
                id = std::stoll("0" + d.settings["notification.count"]) + 1;
                d.settings["notification.count"] = std::to_string(id);
                d.settings["notification.last.type"] = type;
                d.settings["notification.last.extraAttributes"] = request.param("extraAttributes");
            });
            reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":{\"notificationId\":" +
                                std::to_string(id) +
                                ",\"type\":" + std::to_string(std::stoll(type)) + "}}");
        });
}

}  // namespace quilcloud
