// The contract's adapter for the fake port: values are scripted through its
// control API; what the fake does not model is skipped with the reason.
#include "Contract.h"
#include "velmar/fake/Fake.h"

namespace velmar {
namespace port {

const char* const kPortName = "fake";

namespace {

class FakePort : public Port {
  public:
    FakePort() { fake::reset(); }
    ~FakePort() override { fake::reset(); }

    const char* lacks(Need need) const override {
        switch (need) {
            case Need::Wire:
                return "the fake port sends nothing: it records each call's arguments";
            case Need::TimeOut:
                return "the fake port has no server to wait for: a unit test scripts "
                       "ERROR_HTTP_TIMEOUT with fake::pushFailure";
            case Need::LargeAnswers:
                return "the fake port has no size cap: it hands over the scripted body";
            case Need::SystemClock:
                return "the fake port's clock stands still for the unit tests (fake::setNow)";
            case Need::ConfigText:
                return "the fake port takes configuration values (fake::setConfig), not file text";
            case Need::Commands:
                return "the fake port runs no command: a unit test scripts its result "
                       "(fake::pushExec)";
            case Need::IdCheck:
                return "the fake port's uid_isvalid_str answers what a unit test scripts "
                       "(fake::setUidInvalid), so that the library's handling of an id that does "
                       "not parse can be reached";
        }
        return nullptr;
    }

    // Answers enough for any point; with none the fake refuses the call, as a
    // closed port does.
    std::string serve(int status, const std::string& body) override {
        if (status != 0) {
            for (int i = 0; i < 16; ++i)
                fake::pushBody(body, status);
        }
        return "http://contract.test";
    }
    std::string serveLate(int) override { return ""; }
    std::string serveBytes(size_t) override { return ""; }
    std::string serveEcho() override { return ""; }
    std::string resolvers() override { return "127.0.0.1"; }
    std::string named(const std::string& baseUrl) override { return baseUrl; }
    std::vector<Sent> sent() override { return {}; }

    void store(const std::string& name, const std::optional<std::string>& value) override {
        if (name == "rssi") {
            fake::setRssi(value ? std::stoi(*value) : 0);
        } else if (value) {
            fake::setDeviceValue(name, *value);
        } else {
            fake::clearDeviceValue(name);
        }
    }
    std::string configFile(const std::optional<std::string>& text) override {
        if (text) throw Skip{lacks(Need::ConfigText)};
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

}  // namespace

std::unique_ptr<Port> makePort() {
    return std::make_unique<FakePort>();
}

}  // namespace port
}  // namespace velmar
