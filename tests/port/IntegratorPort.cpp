// The contract's adapter for an integrator's own port libraries
// (VELMAR_PORT_LIBRARIES): values are stored through the port's own setters;
// a value that has none (sn, mac, ...) cannot be prepared and its points are
// skipped. Files lie where the port's FileUtils::devicePath puts them, inside
// a temporary directory, which is also $VELMAR_ROOT for a port that honours it.
#include "SandboxPort.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/utils/FileUtils.h"

namespace velmar {
namespace port {

const char* const kPortName = "integrator's";

namespace {

class IntegratorPort : public SandboxPort {
  public:
    void store(const std::string& name, const std::optional<std::string>& value) override {
        static const std::map<std::string, std::pair<int (*)(const char*), bool>> kSetters = {
            // The setter, and whether it reports success with 0 (else with >= 0 or > 0).
            {"deviceid", {deviceid_set, true}},
            {"channel_secret", {channel_secret_set, true}},
            {"broker_host", {broker_host_set, true}},
            {"broker_port", {broker_port_set, true}},
            {"device_token", {device_token_set, false}},
            {"device_token_sign", {device_token_sign_set, false}},
            {"upgrade_date", {upgrade_date_set, false}},
            {"uid", {uid_set, false}}};
        auto it = kSetters.find(name);
        if (!value && name == "uid") {
            if (uid_clean() < 0) throw Skip{"uid_clean() failed: no uid could be removed"};
            return;
        }
        if (it == kSetters.end() || !value) {
            throw Skip{"the port has no function to " + std::string(value ? "set " : "remove ") +
                       name + "; check this point on a device prepared by hand"};
        }
        const int status = it->second.first(value->c_str());
        if (it->second.second ? status != 0 : status < 0 || (name == "uid" && status == 0)) {
            throw Skip{name + "_set refused " + Verdict::show(*value) + " (status " +
                       std::to_string(status) + ")"};
        }
    }
    std::string configFile(const std::optional<std::string>& text) override { return file(text); }
    std::string deviceFile(const std::optional<std::string>& content) override {
        return file(content);
    }

  private:
    std::string file(const std::optional<std::string>& content) {
        const std::string path = (root() / ("file-" + std::to_string(++mFiles))).string();
        place(utils::FileUtils::devicePath(path), content);
        return path;
    }
    int mFiles = 0;
};

}  // namespace

std::unique_ptr<Port> makePort() {
    return std::make_unique<IntegratorPort>();
}

}  // namespace port
}  // namespace velmar
