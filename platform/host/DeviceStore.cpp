// The device-information functions on a file-backed store: /data/device/<name>
// holds the value, one trailing newline ignored; writes replace the file
// atomically. Every path lies under $VELMAR_ROOT when that is set.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <tuple>
#include <unordered_map>

#include "ByteStrings.h"
#include "FileRead.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/utils/ExecUtils.h"
#include "velmar/utils/FileUtils.h"

namespace {

using velmar::utils::FileUtils;

std::string storePath(const char* name) {
    return std::string("/data/device/") + name;
}

// Every signed request reads six values of the store; opening and reading
// each file every time costs more than the rest of the signing. A value is
// read again only when its file is no longer the one read: another inode,
// size or time stamp. A file changed in the last second is always read, since
// a rewrite in place within one tick of the file system's clock would keep
// its size and time stamps.
class ValueCache {
  public:
    bool read(const std::string& path, size_t limit, std::string& out) {
        struct stat info;
        if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
        timespec now{};
        ::clock_gettime(CLOCK_REALTIME, &now);
        const bool settled =
            now.tv_sec - info.st_ctim.tv_sec > 1 ||
            (now.tv_sec - info.st_ctim.tv_sec == 1 && now.tv_nsec >= info.st_ctim.tv_nsec);
        if (settled) {
            std::shared_lock<std::shared_mutex> lock(mMutex);
            auto it = mEntries.find(path);
            if (it != mEntries.end() && it->second.matches(info, limit)) {
                out = it->second.content;
                return true;
            }
        }
        // Read past the caller's limit, so that one entry serves every buffer size.
        const size_t readLimit = std::max(limit, kReadLimit);
        if (!velmar::host::readFile(path, readLimit, out)) return false;
        if (settled) {
            std::unique_lock<std::shared_mutex> lock(mMutex);
            if (mEntries.size() >= kMaxEntries) mEntries.clear();  // sandboxes come and go
            mEntries[path] = Entry{info, readLimit, out};
        }
        if (out.size() > limit) out.resize(limit);
        return true;
    }

  private:
    static constexpr size_t kReadLimit = 4097;
    static constexpr size_t kMaxEntries = 64;

    struct Entry {
        struct stat info;
        size_t limit;
        std::string content;

        bool matches(const struct stat& now, size_t wanted) const {
            const auto stamp = [](const struct stat& s) {
                return std::tie(s.st_ino, s.st_dev, s.st_size, s.st_mtim.tv_sec, s.st_mtim.tv_nsec,
                                s.st_ctim.tv_sec, s.st_ctim.tv_nsec);
            };
            const bool whole = content.size() < limit;
            return (whole || wanted <= limit) && stamp(now) == stamp(info);
        }
    };

    std::shared_mutex mMutex;
    std::unordered_map<std::string, Entry> mEntries;
};

ValueCache& valueCache() {
    // Outlives calls made during exit.
    static ValueCache* cache = new ValueCache;  // GCOVR_EXCL_BR_LINE: init guard
    return *cache;
}

// The value's length, or -1 when the file is missing or the value does not
// fit `size` bytes with its terminating NUL. `buf` is "" after a failure.
int getValue(const char* name, char* buf, int size) {
    if (buf == nullptr || size <= 0) return -1;
    buf[0] = '\0';
    std::string value;
    // One byte beyond a value that fits, plus its newline, tells "too long".
    if (!valueCache().read(FileUtils::devicePath(storePath(name)), static_cast<size_t>(size) + 1,
                           value)) {
        return -1;
    }
    // The line end a tool or an editor left: "\n", "\r\n" or a lone "\r". A
    // stray "\r" would otherwise travel into a header line or a signature.
    if (!value.empty() && value.back() == '\n') value.pop_back();
    if (!value.empty() && value.back() == '\r') value.pop_back();
    if (value.size() >= static_cast<size_t>(size)) return -1;
    std::memcpy(buf, value.data(), value.size());
    buf[value.size()] = '\0';
    return static_cast<int>(value.size());
}

int zeroConvention(int length) {
    return length < 0 ? -1 : 0;
}

// Values that let whoever reads them act as the device. Their files are
// created readable by the owner only; the rest stay readable by the device's
// other daemons, as they always were.
bool isCredential(const char* name) {
    static const char* const kCredentials[] = {"channel_secret", "device_token",
                                               "device_token_sign"};
    for (const char* credential : kCredentials) {
        if (std::strcmp(name, credential) == 0) return true;
    }
    return false;
}

bool writeValue(const char* name, const std::string& content) {
    // A credential file that an older release left readable by others is
    // made private when it is next written; other files keep their mode.
    const bool credential = isCredential(name);
    return velmar::host::writeAtomically(FileUtils::devicePath(storePath(name)), content,
                                         credential ? 0600 : 0644, credential ? 07700 : 07777);
}

// Bytes written (the value and its newline), or -1.
int setValue(const char* name, const char* value) {
    if (value == nullptr) return -1;
    const size_t length = std::strlen(value);
    if (length >= static_cast<size_t>(INT_MAX)) return -1;  // GCOVR_EXCL_BR_LINE: a 2 GiB value
    // Written with the newline the device's own tools write, so that a value
    // ending in a newline reads back unchanged.
    std::string content(value, length);
    content += '\n';
    return writeValue(name, content) ? static_cast<int>(content.size()) : -1;
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
    char* end = nullptr;
    errno = 0;
    long value = std::strtol(buf, &end, 10);
    while (end != nullptr && (*end == ' ' || *end == '\t' || *end == '\r'))
        ++end;
    if (end == buf || end == nullptr || *end != '\0' || errno != 0 || value < INT_MIN ||
        value > INT_MAX) {
        return 0;
    }
    return static_cast<int>(value);
}

int deviceid_set(const char* value) {
    return zeroConvention(setValue("deviceid", value));
}
int channel_secret_set(const char* value) {
    return zeroConvention(setValue("channel_secret", value));
}
int broker_host_set(const char* value) {
    return zeroConvention(setValue("broker_host", value));
}
int broker_port_set(const char* value) {
    return zeroConvention(setValue("broker_port", value));
}
int device_token_set(const char* value) {
    return setValue("device_token", value);
}
int device_token_sign_set(const char* value) {
    return setValue("device_token_sign", value);
}
int upgrade_date_set(const char* value) {
    return setValue("upgrade_date", value);
}
int uid_set(const char* value) {
    return setValue("uid", value);  // at least the newline: positive on success
}

// Valid: the base-10 text of a signed 64-bit integer, nothing around it. A
// value out of range is refused here, since the library parses a valid one
// without expecting it to fail.
int uid_isvalid_str(const char* text) {
    if (text == nullptr) return 1;
    const char* p = text[0] == '-' ? text + 1 : text;
    if (*p == '\0') return 1;
    for (const char* d = p; *d != '\0'; ++d) {
        if (*d < '0' || *d > '9') return 1;
    }
    errno = 0;
    char* end = nullptr;
    std::strtoll(text, &end, 10);
    return errno == ERANGE ? 1 : 0;
}

int uid_clean(void) {
    const std::string path = FileUtils::devicePath(storePath("uid"));
    return (::unlink(path.c_str()) == 0 || errno == ENOENT) ? 0 : -1;
}

int bind_uid(void) {
    return runBindScript("bind");
}
int dev_restore(void) {
    return runBindScript("unbind");
}

int file_read_string(const char* path, char* buf, int size) {
    if (path == nullptr || buf == nullptr || size <= 0) return -1;
    buf[0] = '\0';
    std::string text;
    if (!velmar::host::readFile(FileUtils::devicePath(path), static_cast<size_t>(size) - 1, text)) {
        return -1;
    }
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
