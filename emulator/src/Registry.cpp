#include "quilcloud/Registry.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace quilcloud {

namespace {

// The value of one device-store file, as the host port reads it: the content
// with one trailing newline dropped. Nothing when the file cannot be read.
std::optional<std::string> readValue(const std::string& dir, const char* name) {
    std::ifstream in(dir + "/" + name, std::ios::binary);
    if (!in) return std::nullopt;
    std::string value((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (in.bad()) return std::nullopt;
    if (!value.empty() && value.back() == '\n') value.pop_back();
    return value;
}

long long parseUid(const std::optional<std::string>& text) {
    if (!text || text->empty()) return -1;
    errno = 0;
    char* end = nullptr;
    long long uid = std::strtoll(text->c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || uid < 0) return -1;
    return uid;
}

}  // namespace

bool Registry::loadDeviceStore(const std::string& dir) {
    auto deviceId = readValue(dir, "deviceid");
    if (!deviceId || deviceId->empty()) return false;
    Device device;
    device.deviceId = *deviceId;
    device.sn = readValue(dir, "sn").value_or("");
    device.mac = readValue(dir, "mac").value_or("");
    device.channelSecret = readValue(dir, "channel_secret").value_or("");
    device.deviceToken = readValue(dir, "device_token").value_or("");
    device.deviceTokenSign = readValue(dir, "device_token_sign").value_or("");
    device.model = readValue(dir, "model").value_or("");
    device.version = readValue(dir, "version").value_or("");
    device.superAdmin = parseUid(readValue(dir, "uid"));

    std::lock_guard<std::mutex> lock(mMutex);
    // The store holds no cloud-side state: what the services kept survives a reload.
    auto it = mDevices.find(device.deviceId);
    if (it != mDevices.end()) device.settings = std::move(it->second.settings);
    mDevices[device.deviceId] = std::move(device);
    return true;
}

void Registry::put(const Device& device) {
    std::lock_guard<std::mutex> lock(mMutex);
    mDevices[device.deviceId] = device;
}

std::optional<Device> Registry::find(const std::string& deviceId) const {
    std::lock_guard<std::mutex> lock(mMutex);
    auto it = mDevices.find(deviceId);
    if (it == mDevices.end()) return std::nullopt;
    return it->second;
}

size_t Registry::size() const {
    std::lock_guard<std::mutex> lock(mMutex);
    return mDevices.size();
}

}  // namespace quilcloud
