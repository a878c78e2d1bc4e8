// The contract's adapter for the host port: device values are files of the
// documented device store under $VELMAR_ROOT, written as the device's own
// tools write them (one trailing newline, which the store ignores).
#include "SandboxPort.h"

namespace velmar::port {

struct HostPort : SandboxPort {
    void store(const std::string& name, const std::optional<std::string>& value) override {
        place(root() / "data/device" / name, value ? std::optional(*value + "\n") : value);
    }
};

}  // namespace velmar::port

VELMAR_PORT_ADAPTER(velmar::port::HostPort, "host")
