// The status family: device status per category, the work-day calendar with
// its not-modified answer, and the stereo-pairing server.
#include <string>

#include "DeviceAuth.h"
#include "quilcloud/Cloud.h"
#include "routes/DeviceState.h"

namespace quilcloud {

namespace {

// The calendar the cloud serves; a test may set "workday.version" on the
// device to publish a newer one.
constexpr const char kWorkDayVersion[] = "2026.1";

}  // namespace

void registerStatusRoutes(Cloud& cloud) {
    // "catagory" is the key the real service reads, spelt so.
    cloud.route("POST", "/device/device_status", [&cloud](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device) return;
        const std::string catagory = request.param("catagory");
        if (catagory.empty()) {
            reply.json(200, errorBody(2, "catagory is required"));
            return;
        }
        cloud.registry().update(device->deviceId, [&](Device& d) {
            d.settings["status." + catagory] = request.param("status");
        });
        reply.json(200, "{\"code\":0,\"message\":\"ok\"}");
    });
    cloud.route("GET", "/device/device_status", [&cloud](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device) return;
        const std::string catagory = request.param("catagory");
        auto it = device->settings.find("status." + catagory);
        if (it == device->settings.end()) {
            reply.json(200, errorBody(1, "no status for catagory " + catagory));
            return;
        }
        reply.json(200,
                   "{\"code\":0,\"message\":\"ok\",\"data\":\"" + jsonEscape(it->second) + "\"}");
    });

    cloud.route("GET", "/device/workday/config", [&cloud](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device) return;
        std::string version = setting(*device, "workday.version");
        if (version.empty()) version = kWorkDayVersion;
        if (request.param("version") == version) {
            reply.status = 304;  // the device's copy is current
            reply.body.clear();
            return;
        }
        reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":{\"version\":\"" +
                            jsonEscape(version) +
                            "\",\"workdays\":[\"2026-02-14\",\"2026-02-28\",\"2026-05-09\"],"
                            "\"holidays\":[\"2026-01-01\",\"2026-02-16\",\"2026-02-17\","
                            "\"2026-02-18\",\"2026-05-01\",\"2026-10-01\"]}}");
    });

    cloud.route("POST", "/iot/dcm/set_stereo_server",
                [&cloud](const Received& request, Reply& reply) {
                    auto device = authenticate(cloud, request, reply);
                    if (!device) return;
                    const std::string hardware = request.param("hardware");
                    if (hardware.empty()) {
                        reply.json(200, errorBody(2, "hardware is required"));
                        return;
                    }
                    if (!device->model.empty() && hardware != device->model) {
                        reply.json(200, errorBody(3, "hardware does not match the device"));
                        return;
                    }
                    const std::string server = "stereo-" + device->deviceId;
                    cloud.registry().update(
                        device->deviceId, [&](Device& d) { d.settings["stereo.server"] = server; });
                    reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":{\"hardware\":\"" +
                                        jsonEscape(hardware) + "\",\"server\":\"" +
                                        jsonEscape(server) + "\"}}");
                });
}

}  // namespace quilcloud
