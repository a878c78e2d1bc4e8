// The contract's adapter for the host port: device values are files of the
// documented device store under $VELMAR_ROOT, written as the device's own
// tools write them.
#include "SandboxPort.h"

namespace velmar {
namespace port {

const char* const kPortName = "host";

namespace {

class HostPort : public SandboxPort {
  public:
    void store(const std::string& name, const std::optional<std::string>& value) override {
        // One trailing newline, which the store ignores; an empty value is an empty file.
        const auto content = value && !value->empty() ? std::optional(*value + "\n") : value;
        place(root() / "data/device" / name, content);
    }
    std::string configFile(const std::optional<std::string>& text) override {
        return file("/usr/share/quil/messaging/messaging.conf", text);
    }
    std::string deviceFile(const std::optional<std::string>& content) override {
        return file("/data/status/ota", content);
    }

  private:
    // The device path the library hands the port, its file under the root.
    std::string file(const std::string& devicePath, const std::optional<std::string>& content) {
        place(root() / devicePath.substr(1), content);
        return devicePath;
    }
};

}  // namespace

std::unique_ptr<Port> makePort() {
    return std::make_unique<HostPort>();
}

}  // namespace port
}  // namespace velmar
