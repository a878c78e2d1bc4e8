// What the ports that really send share in the contract: the local cloud,
// started in process when a point first needs a server, and a temporary
// $VELMAR_ROOT so that nothing is written outside it.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include "Contract.h"
#include "quilcloud/Cloud.h"

namespace velmar {
namespace port {

class SandboxPort : public Port {
  public:
    SandboxPort() {
        char pattern[] = "/tmp/velmar-port-XXXXXX";
        if (mkdtemp(pattern) == nullptr) throw std::runtime_error("no temporary directory");
        mRoot = pattern;
        std::filesystem::create_directories(mRoot / "data/device");  // as on a device
        setenv("VELMAR_ROOT", mRoot.c_str(), 1);
        // The environment's redirections would change what a point proves.
        for (const char* name :
             {"VELMAR_DNS_SERVERS", "VELMAR_RESOLVE", "VELMAR_PROXY", "VELMAR_CA_FILE"})
            unsetenv(name);
    }
    ~SandboxPort() override {
        mCloud.reset();
        unsetenv("VELMAR_ROOT");
        std::error_code ignored;
        std::filesystem::remove_all(mRoot, ignored);
    }

    const char* lacks(Need) const override { return nullptr; }

    std::string serve(int status, const std::string& body) override {
        cloud().script("*", quilcloud::Scripted::answer(status, body));
        return status == 0 ? "http://127.0.0.1:1" : cloud().baseUrl();  // nothing listens on port 1
    }
    std::string serveLate(int ms) override {
        cloud().script("*", quilcloud::Scripted::delay(ms));
        return cloud().baseUrl();
    }
    std::string serveBytes(size_t bytes) override {
        cloud().script("*", quilcloud::Scripted::oversize(bytes));
        return cloud().baseUrl();
    }
    std::string serveEcho() override {
        for (const char* method : {"GET", "POST"}) {
            cloud().route(method, "/contract/echo",
                          [](const quilcloud::Received& r, quilcloud::Reply& reply) {
                              reply.json(200, r.method + " " + r.query + " " + r.body);
                          });
        }
        return cloud().baseUrl();
    }
    std::string resolvers() override { return cloud().dnsServers(); }
    std::string named(const std::string& baseUrl) override {
        const std::string address = "127.0.0.1";
        const size_t at = baseUrl.find(address);
        return baseUrl.substr(0, at) + "contract.quil.test" + baseUrl.substr(at + address.size());
    }
    std::vector<Sent> sent() override {
        std::vector<Sent> all;
        for (const auto& r : cloud().received())
            all.push_back(
                {r.method, r.path, r.query, r.body, {r.headers.begin(), r.headers.end()}});
        return all;
    }

  protected:
    // Writes `content` to the real path `path`, or removes it.
    static void place(const std::filesystem::path& path,
                      const std::optional<std::string>& content) {
        std::filesystem::create_directories(path.parent_path());
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
        if (content) std::ofstream(path, std::ios::binary) << *content;
    }
    const std::filesystem::path& root() const { return mRoot; }

  private:
    quilcloud::Cloud& cloud() {
        if (!mCloud) {
            quilcloud::Cloud::Options options;
            options.dnsPort = 0;  // its resolver answers 127.0.0.1 for every name
            options.workDir = (mRoot / "cloud").string();
            std::filesystem::create_directories(options.workDir);
            mCloud = std::make_unique<quilcloud::Cloud>(options);
            if (!mCloud->start()) throw std::runtime_error("the local cloud: " + mCloud->error());
        }
        return *mCloud;
    }

    std::filesystem::path mRoot;
    std::unique_ptr<quilcloud::Cloud> mCloud;
};

}  // namespace port
}  // namespace velmar
