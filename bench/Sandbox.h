// A sandboxed device for the benchmarks: a temporary directory that stands
// for "/" ($VELMAR_ROOT), holding a full device store (an administrator and
// a token pair included, so that a signed request reads every value).
#pragma once

#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace bench {

class Sandbox {
  public:
    Sandbox() {
        char pattern[] = "/tmp/velmar-bench-XXXXXX";
        if (mkdtemp(pattern) != nullptr) mRoot = pattern;
        std::filesystem::create_directories(mRoot / "data/device");
        std::filesystem::create_directories(mRoot / "usr/share/quil/messaging");
        store("sn", "4417/20260001");
        store("mac", "a4:cf:12:3e:77:01");
        store("deviceid", "7300123456");
        store("channel_secret", "3c9a1f0e5b7d4c28a6e0f19d2b3c4d5e");
        store("model", "quil.speaker.v2");
        store("version", "2.14.3");
        store("uid", "1001");
        store("device_token", "dt-7f3a9c0e4b2d4e6f8a1b3c5d7e9f0a2b");
        store("device_token_sign", "sg-0a2b4c6d8e0f1a3b5c7d9e1f3a5b7c9d");
    }
    ~Sandbox() {
        std::error_code ignored;
        if (!mRoot.empty()) std::filesystem::remove_all(mRoot, ignored);
    }
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    std::string root() const { return mRoot.string(); }
    // A path inside the sandbox ("work", "stat.log").
    std::string path(const std::string& relative) const { return (mRoot / relative).string(); }

    // Points the device cloud service of messaging.conf at `baseUrl`.
    void configure(const std::string& baseUrl) const {
        std::ofstream(mRoot / "usr/share/quil/messaging/messaging.conf")
            << "sQuilAPIURL=" << baseUrl << "\n";
    }

    // The host port keeps a device-store value in memory only once its file
    // has stood unchanged for a second; a device's store is older than that,
    // so the calls measured must not find it fresh.
    static void settle() { std::this_thread::sleep_for(std::chrono::milliseconds(1100)); }

  private:
    void store(const std::string& name, const std::string& value) const {
        std::ofstream(mRoot / "data/device" / name) << value << "\n";
    }

    std::filesystem::path mRoot;
};

}  // namespace bench
