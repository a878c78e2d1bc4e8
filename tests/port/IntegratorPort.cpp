// The contract's adapter for an integrator's own port libraries
// (VELMAR_PORT_LIBRARIES): values are stored through the port's own setters,
// and a value that has none (sn, mac, ...) cannot be prepared: its points are
// skipped with the reason.
#include "SandboxPort.h"
#include "velmar/device/DeviceInfo.h"

namespace velmar::port {

struct IntegratorPort : SandboxPort {
    void store(const std::string& name, const std::optional<std::string>& value) override {
        static const std::map<std::string, int (*)(const char*)> kSetters = {
            {"deviceid", deviceid_set},         {"channel_secret", channel_secret_set},
            {"broker_host", broker_host_set},   {"broker_port", broker_port_set},
            {"device_token", device_token_set}, {"device_token_sign", device_token_sign_set},
            {"upgrade_date", upgrade_date_set}, {"uid", uid_set}};
        auto it = kSetters.find(name);
        if (!value && name == "uid" && uid_clean() >= 0) return;
        if (it == kSetters.end() || !value) {
            throw Skip{"the port has no function to " + std::string(value ? "set " : "remove ") +
                       name + "; check this point on a device prepared by hand"};
        }
        // Setters report success as 0, as not negative (tokens, the date) or,
        // uid_set, as positive.
        const int status = it->second(value->c_str());
        const bool zero =
            name.find("token") == name.npos && name != "upgrade_date" && name != "uid";
        if (status < 0 || (name == "uid" && status == 0) || (zero && status != 0)) {
            throw Skip{name + "_set refused " + Verdict::show(*value) + " with " +
                       std::to_string(status) + ": the point cannot be prepared"};
        }
    }
};

}  // namespace velmar::port

VELMAR_PORT_ADAPTER(velmar::port::IntegratorPort, "integrator's")
