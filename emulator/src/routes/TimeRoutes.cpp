// The time service: the current time in milliseconds since the epoch.
#include <chrono>
#include <string>

#include "quilcloud/Cloud.h"

namespace quilcloud {

void registerTimeRoutes(Cloud& cloud) {
    cloud.route("GET", "/time/sync", [](const Received&, Reply& reply) {
        using namespace std::chrono;
        const auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch());
        reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":{\"t\":" +
                            std::to_string(now.count()) + "}}");
    });
}

}  // namespace quilcloud
