// The contract's adapter for the fake port: values are scripted through its
// control API; what the fake does not model is skipped with the reason.
#include "Contract.h"
#include "velmar/fake/Fake.h"

namespace velmar::port {

class FakePort : public Port {
  public:
    FakePort() { fake::reset(); }
    ~FakePort() override { fake::reset(); }

    const char* lacks(Need need) const override {
        static const char* const kReasons[] = {
            "the fake port sends nothing: it records the arguments of a call",
            "the fake port has no server to wait for (a test scripts ERROR_HTTP_TIMEOUT)",
            "the fake port has no size cap: it hands over the body a test scripts",
            "the fake port's clock stands still for the unit tests (fake::setNow)",
            "the fake port takes configuration values (fake::setConfig), not file text",
            "the fake port runs no command: a test scripts its result (fake::pushExec)",
            "the fake port's uid_isvalid_str answers as a test scripts (fake::setUidInvalid)"};
        return kReasons[static_cast<int>(need)];
    }
    // Answers enough for any point; with none the fake refuses a call, as a
    // closed port does.
    std::string serve(const Serve& s) override {
        for (int i = 0; i < 16 && s.status != 0; ++i)
            fake::pushBody(s.body, s.status);
        return "http://contract.test";
    }
    std::string resolvers() override { return "127.0.0.1"; }
    std::string named(std::string baseUrl) override { return baseUrl; }
    std::vector<Sent> sent() override { return {}; }

    void store(const std::string& name, const std::optional<std::string>& value) override {
        if (name == "rssi") return fake::setRssi(value ? std::stoi(*value) : 0);
        value ? fake::setDeviceValue(name, *value) : fake::clearDeviceValue(name);
    }
    std::string configFile(const std::optional<std::string>& text) override {
        if (text) require(Need::ConfigText);
        return "/usr/share/quil/messaging/messaging.conf";
    }
    // A new path each time: the fake cannot remove a file.
    std::string deviceFile(const std::optional<std::string>& content) override {
        const std::string path = "/data/status/file-" + std::to_string(++mFiles);
        if (content) fake::setFile(path, *content);
        return path;
    }

  private:
    int mFiles = 0;
};

}  // namespace velmar::port

VELMAR_PORT_ADAPTER(velmar::port::FakePort, "fake")
