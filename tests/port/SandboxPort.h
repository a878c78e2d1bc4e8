// What the ports that really send share in the contract: the integration
// tests' sandbox (a temporary $VELMAR_ROOT with a device store and the local
// cloud in process, its resolver answering 127.0.0.1 for every name), so that
// nothing is written outside it. An adapter adds how a device value is stored.
#pragma once

#include "CloudFixture.h"
#include "Contract.h"
#include "velmar/utils/FileUtils.h"

namespace velmar::port {

class SandboxPort : public Port, public testing::CloudFixture {
  public:
    SandboxPort() {
        SetUp();
        // The environment's redirections would change what a point proves.
        for (const char* name : {"VELMAR_DNS_SERVERS", "VELMAR_PROXY"})
            unsetenv(name);
    }
    ~SandboxPort() override { TearDown(); }
    void TestBody() override {}
    int dnsPort() const override { return 0; }

    const char* lacks(Need) const override { return nullptr; }
    std::string serve(const Serve& s) override {
        using quilcloud::Scripted;
        if (s.echo) {
            for (const char* method : {"GET", "POST"}) {
                cloud().route(method, "/*", [](const quilcloud::Received& r, quilcloud::Reply& a) {
                    a.json(200, r.method + " " + r.query + " " + r.body);
                });
            }
        } else {
            cloud().script("*", s.bytes    ? Scripted::oversize(s.bytes, s.chunked)
                                : s.lateMs ? Scripted::delay(s.lateMs)
                                           : Scripted::answer(s.status, s.body));
        }
        return s.status == 0 ? "http://127.0.0.1:1" : baseUrl();  // port 1: nobody listens
    }
    std::string resolvers() override { return cloud().dnsServers(); }
    std::string named(std::string url) override {
        return url.replace(url.find("127.0.0.1"), 9, "contract.quil.test");
    }
    std::vector<Sent> sent() override {
        std::vector<Sent> all;
        for (const auto& r : cloud().received())
            all.push_back(
                {r.method, r.path, r.query, r.body, {r.headers.begin(), r.headers.end()}});
        return all;
    }
    // A new file in the sandbox, where the port's FileUtils::devicePath puts
    // it (under $VELMAR_ROOT for a port that honours it).
    std::string configFile(const std::optional<std::string>& text) override { return file(text); }
    std::string deviceFile(const std::optional<std::string>& content) override {
        return file(content);
    }

  protected:
    // Writes `content` to the real path `path`, or removes it.
    static void place(const std::filesystem::path& path,
                      const std::optional<std::string>& content) {
        std::filesystem::create_directories(path.parent_path());
        std::filesystem::remove(path);
        if (content) std::ofstream(path, std::ios::binary) << *content;
    }

  private:
    std::string file(const std::optional<std::string>& content) {
        const std::string path = (root() / ("file-" + std::to_string(++mFiles))).string();
        place(utils::FileUtils::devicePath(path), content);
        return path;
    }
    int mFiles = 0;
};

}  // namespace velmar::port
