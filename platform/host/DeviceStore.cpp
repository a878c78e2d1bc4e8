// The device-information functions on a file-backed store: /data/device/<name>
// holds the value, one trailing newline ignored; writes replace the file
// atomically.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

#include "ByteStrings.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/utils/ExecUtils.h"
#include "velmar/utils/FileUtils.h"

namespace {

using velmar::utils::FileUtils;

constexpr size_t kMaxValue = 64 * 1024;  // no device value is larger

std::string storePath(const char* name) {
    return std::string("/data/device/") + name;
}

// Reads at most `limit` bytes of the file at device path `path`.
bool readFile(const std::string& path, size_t limit, std::string& out) {
    std::ifstream in(FileUtils::devicePath(path), std::ios::binary);
    if (!in) return false;
    out.resize(limit);
    in.read(&out[0], static_cast<std::streamsize>(limit));
    if (in.bad()) return false;
    out.resize(static_cast<size_t>(in.gcount()));
    return true;
}

// -1 on failure, else the value's length.
int getValue(const char* name, char* buf, int size) {
    if (buf == nullptr || size <= 0) return -1;
    std::string value;
    if (!readFile(storePath(name), kMaxValue, value)) return -1;
    if (!value.empty() && value.back() == '\n') value.pop_back();
    if (value.size() >= static_cast<size_t>(size)) return -1;
    std::memcpy(buf, value.c_str(), value.size() + 1);
    return static_cast<int>(value.size());
}

int zeroConvention(int length) {
    return length < 0 ? -1 : 0;
}

int setValue(const char* name, const char* value) {
    if (value == nullptr) return -1;
    return FileUtils::writeAtomically(storePath(name), value) ? static_cast<int>(std::strlen(value))
                                                              : -1;
}

int runBindScript(const char* argument) {
    std::string output;
    return velmar::utils::ExecUtils::exec(output,
                                          std::string("/usr/bin/bind_device.sh ") + argument);
}

}  // namespace

extern "C" {

#define VELMAR_ZERO_GETTER(name)                           \
    int name##_get(char* buf, int size) {                  \
        return zeroConvention(getValue(#name, buf, size)); \
    }
VELMAR_ZERO_GETTER(sn)
VELMAR_ZERO_GETTER(mac)
VELMAR_ZERO_GETTER(deviceid)
VELMAR_ZERO_GETTER(channel_secret)
VELMAR_ZERO_GETTER(iot_did)
VELMAR_ZERO_GETTER(version)
VELMAR_ZERO_GETTER(channel)
VELMAR_ZERO_GETTER(model)
VELMAR_ZERO_GETTER(appid)
VELMAR_ZERO_GETTER(countrycode)
VELMAR_ZERO_GETTER(imei)
VELMAR_ZERO_GETTER(carrier)
VELMAR_ZERO_GETTER(uid)
VELMAR_ZERO_GETTER(broker_host)
VELMAR_ZERO_GETTER(broker_port)
#undef VELMAR_ZERO_GETTER

int upgrade_date_get(char* buf, int size) {
    return getValue("upgrade_date", buf, size);
}
int device_token_get(char* buf, int size) {
    return getValue("device_token", buf, size);
}
int device_token_sign_get(char* buf, int size) {
    return getValue("device_token_sign", buf, size);
}

int rssi_get(void) {
    char buf[32];
    if (getValue("rssi", buf, sizeof(buf)) < 0) return 0;
    int value = 0;
    return std::sscanf(buf, "%d", &value) == 1 ? value : 0;
}

int deviceid_set(const char* v) {
    return setValue("deviceid", v) < 0 ? -1 : 0;
}
int channel_secret_set(const char* v) {
    return setValue("channel_secret", v) < 0 ? -1 : 0;
}
int broker_host_set(const char* v) {
    return setValue("broker_host", v) < 0 ? -1 : 0;
}
int broker_port_set(const char* v) {
    return setValue("broker_port", v) < 0 ? -1 : 0;
}
int device_token_set(const char* v) {
    return setValue("device_token", v);
}
int device_token_sign_set(const char* v) {
    return setValue("device_token_sign", v);
}
int upgrade_date_set(const char* v) {
    return setValue("upgrade_date", v);
}
int uid_set(const char* v) {
    int written = setValue("uid", v);
    return written < 0 ? -1 : written + 1;  // positive on success, even for ""
}

int uid_isvalid_str(const char* text) {
    if (text == nullptr || text[0] == '\0') return 1;
    const char* p = text[0] == '-' ? text + 1 : text;
    if (*p == '\0') return 1;
    for (; *p != '\0'; ++p) {
        if (*p < '0' || *p > '9') return 1;
    }
    return 0;
}

int uid_clean(void) {
    std::string path = FileUtils::devicePath(storePath("uid"));
    return (std::remove(path.c_str()) == 0 || errno == ENOENT) ? 0 : -1;
}

int bind_uid(void) {
    return runBindScript("bind");
}
int dev_restore(void) {
    return runBindScript("unbind");
}

int file_read_string(const char* path, char* buf, int size) {
    if (path == nullptr || buf == nullptr || size <= 0) return -1;
    std::string text;
    if (!readFile(path, static_cast<size_t>(size - 1), text)) return -1;
    std::memcpy(buf, text.data(), text.size());
    buf[text.size()] = '\0';
    return static_cast<int>(text.size());
}

str_t* str_hmac_sha256(const str_t* data, const str_t* key) {
    return velmar::detail::hmacSha256(data, key);
}

void str_destroy(str_t* s) {
    velmar::detail::destroyByteString(s);
}

}  // extern "C"
