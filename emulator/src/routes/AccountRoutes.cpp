// The account-scoped family: the administrator's client list, voice-call
// minutes, common configurations and per-user privacy settings.
#include <ctime>
#include <optional>
#include <string>

#include "DeviceAuth.h"
#include "quilcloud/Cloud.h"
#include "routes/DeviceState.h"

namespace quilcloud {

namespace {

constexpr long long kMonthlyVoipSec = 6000;

bool isDecimal(const std::string& text, size_t maxDigits) {
    return !text.empty() && text.size() <= maxDigits &&
           text.find_first_not_of("0123456789") == std::string::npos;
}

// The account services serve only the device's own administrator.
bool isAdministrator(const Device& device, const Received& request, Reply& reply) {
    if (!fromAdministrator(device, request)) {
        reply.json(200, errorBody(3, "user is not the administrator of this device"));
        return false;
    }
    return true;
}

// Privacy settings are kept per user ID, whoever administers the device: the
// key they are kept under, or nothing with `reply` set to the refusal.
std::optional<std::string> privacyKey(const Received& request, Reply& reply) {
    const std::string userId = request.param("userId");
    if (!isDecimal(userId, 20)) {
        reply.json(200, errorBody(2, "invalid userId: " + userId));
        return std::nullopt;
    }
    return "privacy." + userId;
}

std::string currentMonth() {
    std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    char text[16];
    std::strftime(text, sizeof(text), "%Y-%m", &parts);
    return text;
}

std::string durationBody(long long used) {
    return "{\"code\":0,\"message\":\"ok\",\"data\":{\"month\":\"" + currentMonth() +
           "\",\"usedSec\":" + std::to_string(used) +
           ",\"limitSec\":" + std::to_string(kMonthlyVoipSec) + ",\"remainingSec\":" +
           std::to_string(used >= kMonthlyVoipSec ? 0 : kMonthlyVoipSec - used) + "}}";
}

}  // namespace

void registerAccountRoutes(Cloud& cloud) {
    cloud.route("GET", "/client_info/list/linux", [&cloud](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device || !isAdministrator(*device, request, reply)) return;
        reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":{\"userId\":" +
                            std::to_string(device->superAdmin) + ",\"clients\":[{\"clientId\":\"" +
                            jsonEscape(device->deviceId) + "\",\"model\":\"" +
                            jsonEscape(device->model) + "\",\"online\":true}]}}");
    });

    cloud.route("GET", "/duration/current_month/status/linux",
                [&cloud](const Received& request, Reply& reply) {
                    auto device = authenticate(cloud, request, reply);
                    if (!device || !isAdministrator(*device, request, reply)) return;
                    auto it = device->settings.find("voip.usedSec");
                    long long used = it == device->settings.end() ? 0 : std::stoll(it->second);
                    reply.json(200, durationBody(used));
                });

    // Adding is a GET with the duration in the query, as the real service has it.
    cloud.route("GET", "/duration/current_month/add/linux",
                [&cloud](const Received& request, Reply& reply) {
                    auto device = authenticate(cloud, request, reply);
                    if (!device || !isAdministrator(*device, request, reply)) return;
                    const std::string seconds = request.param("durationInSec");
                    if (!isDecimal(seconds, 6)) {
                        reply.json(200, errorBody(2, "invalid durationInSec: " + seconds));
                        return;
                    }
                    long long used = 0;
                    cloud.registry().update(device->deviceId, [&](Device& d) {
                        used = std::stoll("0" + d.settings["voip.usedSec"]) + std::stoll(seconds);
                        d.settings["voip.usedSec"] = std::to_string(used);
                    });
                    reply.json(200, durationBody(used));
                });

    cloud.route("GET", "/common_config/linux", [&cloud](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device || !isAdministrator(*device, request, reply)) return;
        const std::string name = request.param("configName");
        std::string value;
        if (name == "voip_call") {
            value =
                "{\"enabled\":true,\"monthlyLimitSec\":" + std::to_string(kMonthlyVoipSec) + "}";
        } else if (name == "night_mode") {
            value = "{\"enabled\":false,\"start\":\"22:00\",\"end\":\"07:00\"}";
        } else {
            reply.json(200, errorBody(4, "unknown config: " + name));
            return;
        }
        reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":{\"configName\":\"" +
                            jsonEscape(name) + "\",\"value\":" + value + "}}");
    });

    cloud.route("POST", "/userprofile/user_privacy_on_device",
                [&cloud](const Received& request, Reply& reply) {
                    auto device = authenticate(cloud, request, reply);
                    if (!device) return;
                    auto key = privacyKey(request, reply);
                    if (!key) return;
                    cloud.registry().update(device->deviceId, [&](Device& d) {
                        d.settings[*key] = request.param("value");
                    });
                    reply.json(200, "{\"code\":0,\"message\":\"ok\"}");
                });
    cloud.route("GET", "/userprofile/user_privacy_on_device",
                [&cloud](const Received& request, Reply& reply) {
                    auto device = authenticate(cloud, request, reply);
                    if (!device) return;
                    auto key = privacyKey(request, reply);
                    if (!key) return;
                    // The value is the caller's text; nothing stored is no settings.
                    auto it = device->settings.find(*key);
                    const std::string data = it == device->settings.end()
                                                 ? "{}"
                                                 : "{\"value\":\"" + jsonEscape(it->second) + "\"}";
                    reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":" + data + "}");
                });
}

}  // namespace quilcloud
