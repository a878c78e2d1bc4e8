// The devices the local cloud knows, with the state the services keep for them.
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace quilcloud {

struct Device {
    std::string sn;
    std::string mac;
    std::string deviceId;
    std::string channelSecret;
    std::string deviceToken;
    std::string deviceTokenSign;
    std::string model;
    std::string version;
    long long superAdmin = -1;  // -1: not bound
    // Per-service state the families keep (device status per category, ...).
    std::map<std::string, std::string> settings;
};

class Registry {
  public:
    // Reads a device-store directory (files "sn", "mac", "deviceid",
    // "channel_secret", "device_token", "device_token_sign", "model",
    // "version", "uid"; one trailing newline ignored) and registers that
    // device. False when the directory holds no "deviceid".
    bool loadDeviceStore(const std::string& dir);

    void put(const Device& device);
    std::optional<Device> find(const std::string& deviceId) const;
    // Applies `change` to the device under the registry's lock; false if unknown.
    template <typename F>
    bool update(const std::string& deviceId, F change) {
        std::lock_guard<std::mutex> lock(mMutex);
        auto it = mDevices.find(deviceId);
        if (it == mDevices.end()) return false;
        change(it->second);
        return true;
    }
    size_t size() const;

  private:
    mutable std::mutex mMutex;
    std::map<std::string, Device> mDevices;
};

}  // namespace quilcloud
