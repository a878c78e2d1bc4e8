// The serial-number family on the user-profile service: CMEI, CTEI and
// profile lookups, the carrier status of a serial number, and the Andlink
// device IDs kept per IoT device ID.
#include <cstdint>
#include <string>

#include "DeviceAuth.h"
#include "quilcloud/Cloud.h"
#include "routes/DeviceState.h"

namespace quilcloud {

namespace {

// A stable 15-digit identifier for a serial number (FNV-1a, salted per network).
std::string identifierFor(const std::string& salt, const std::string& sn) {
    uint64_t hash = 1469598103934665603ULL;
    for (unsigned char c : salt + sn) {
        hash ^= c;
        hash *= 1099511628211ULL;
    }
    std::string digits = std::to_string(hash % 1000000000000000ULL);
    return std::string(15 - digits.size(), '0') + digits;
}

// The lookups answer for the serial number of the signing device only.
bool ownSerialNumber(const Device& device, const std::string& sn, Reply& reply) {
    if (sn.empty() || sn != device.sn) {
        reply.json(200, errorBody(2, "unknown serial number: " + sn));
        return false;
    }
    return true;
}

void identifierRoute(Cloud& cloud, const std::string& path, const std::string& name) {
    cloud.route("GET", path, [&cloud, name](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device) return;
        const std::string sn = request.param("deviceSn");
        if (!ownSerialNumber(*device, sn, reply)) return;
        reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":{\"deviceSn\":\"" +
                            jsonEscape(sn) + "\",\"" + name + "\":\"" + identifierFor(name, sn) +
                            "\"}}");
    });
}

}  // namespace

void registerSerialRoutes(Cloud& cloud) {
    identifierRoute(cloud, "/device_sn/get_device_cmei", "cmei");
    identifierRoute(cloud, "/device_sn/get_device_ctei", "ctei");

    cloud.route("GET", "/device_sn/get_profile", [&cloud](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device) return;
        reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":{\"sn\":\"" +
                            jsonEscape(device->sn) + "\",\"deviceId\":\"" +
                            jsonEscape(device->deviceId) + "\",\"model\":\"" +
                            jsonEscape(device->model) + "\",\"version\":\"" +
                            jsonEscape(device->version) + "\"}}");
    });

    // A test or the operator sets "carrier.status" (a JSON object) on the
    // device; until then the serial number is on no carrier plan.
    cloud.route("GET", "/device_carrier/get_carrier_status",
                [&cloud](const Received& request, Reply& reply) {
                    auto device = authenticate(cloud, request, reply);
                    if (!device) return;
                    const std::string sn = request.param("sn");
                    if (!ownSerialNumber(*device, sn, reply)) return;
                    std::string status = setting(*device, "carrier.status");
                    if (status.empty()) {
                        status = "{\"sn\":\"" + jsonEscape(sn) +
                                 "\",\"carrier\":\"\",\"status\":\"inactive\"}";
                    }
                    reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":" + status + "}");
                });

    // Andlink device IDs, kept per IoT device ID ("veotDID" when read,
    // "veotDid" when written: the real service spells them so).
    cloud.route(
        "GET", "/device/andlink/cmcc_device_id", [&cloud](const Received& request, Reply& reply) {
            auto device = authenticate(cloud, request, reply);
            if (!device) return;
            const std::string did = request.param("veotDID");
            if (did.empty() || request.param("hardware").empty()) {
                reply.json(200, errorBody(2, "veotDID and hardware are required"));
                return;
            }
            const std::string id = setting(*device, "andlink." + did);
            if (id.empty()) {
                reply.json(200, errorBody(1, "no andlink device id for " + did));
                return;
            }
            reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":\"" + jsonEscape(id) + "\"}");
        });
    cloud.route("GET", "/app/set_cmcc_id/linux", [&cloud](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device) return;
        const std::string did = request.param("veotDid");
        const std::string id = request.param("cmccDeviceId");
        if (did.empty() || id.empty()) {
            reply.json(200, errorBody(2, "veotDid and cmccDeviceId are required"));
            return;
        }
        cloud.registry().update(device->deviceId,
                                [&](Device& d) { d.settings["andlink." + did] = id; });
        reply.json(200, "{\"code\":0,\"message\":\"ok\"}");
    });
}

}  // namespace quilcloud
