// The checks that need no network: configuration, device store, clock, log.
#include <curl/curl.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>

#include "Checks.h"
#include "host/ConnectionRules.h"

namespace quilctl {
namespace doctor {

namespace {

constexpr const char* kConfigPath = "/usr/share/quil/messaging/messaging.conf";
constexpr const char* kServiceKeys[] = {
    "sQuilAPIURL",   "sQuilUserprofileURL", "sQuilUserprofilePreviewURL",
    "sVeWiFiAPIURL", "sVeWiFiLOGURL",       "sTimeSyncURL"};
// Values larger than this are not identity values: read no further.
constexpr size_t kMaxStoreBytes = 4096;

std::string trimmed(const std::string& text) {
    const size_t begin = text.find_first_not_of(" \t\r");
    if (begin == std::string::npos) return "";
    return text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

// Why `url` is not an http(s) URL the transport can use; "" when it is one.
std::string urlProblem(const std::string& url) {
    for (unsigned char c : url) {
        if (c <= ' ' || c == 0x7f) return "holds a space or control character";
    }
    std::unique_ptr<CURLU, void (*)(CURLU*)> parsed(curl_url(), curl_url_cleanup);
    if (!parsed || curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK)
        return "does not parse as a URL";
    char* scheme = nullptr;
    char* host = nullptr;
    curl_url_get(parsed.get(), CURLUPART_SCHEME, &scheme, 0);
    curl_url_get(parsed.get(), CURLUPART_HOST, &host, 0);
    std::string problem;
    if (scheme == nullptr ||
        (std::strcmp(scheme, "http") != 0 && std::strcmp(scheme, "https") != 0))
        problem = "is not an http or https URL";
    else if (host == nullptr || *host == '\0')
        problem = "names no host";
    curl_free(scheme);
    curl_free(host);
    return problem;
}

struct StoreValue {
    const char* name;
    size_t minLength;
    size_t maxLength;
    bool credential;
    bool required;  // the signature cannot be made without it
};
const StoreValue kStoreValues[] = {{"deviceid", 4, 64, false, true},
                                   {"channel_secret", 16, 128, true, true},
                                   {"model", 1, 64, false, false},
                                   {"version", 1, 32, false, false},
                                   {"channel", 1, 32, false, false},
                                   {"device_token", 8, 512, true, false},
                                   {"device_token_sign", 8, 512, true, false}};

enum class Read { Ok, Missing, Unreadable };

Read readRaw(const std::string& path, std::string& raw, struct stat& info) {
    raw.clear();
    if (::stat(path.c_str(), &info) != 0) return errno == ENOENT ? Read::Missing : Read::Unreadable;
    std::ifstream in(path, std::ios::binary);
    if (!in) return Read::Unreadable;
    raw.resize(kMaxStoreBytes + 1);
    in.read(&raw[0], static_cast<std::streamsize>(raw.size()));
    raw.resize(static_cast<size_t>(in.gcount()));
    return Read::Ok;
}

// Checks one store file; `present` tells whether it held a usable value.
bool checkValue(Report& report, const StoreValue& v, bool missingIsFine) {
    const std::string path = devicePath(std::string("/data/device/") + v.name);
    std::string raw;
    struct stat info {};
    const Read read = readRaw(path, raw, info);
    const std::string rewrite = "write the value alone, with at most one trailing newline, to " +
                                std::string("/data/device/") + v.name;
    if (read == Read::Missing) {
        if (missingIsFine) return false;
        const std::string advice =
            "restore /data/device/" + std::string(v.name) + (v.required ? " (factory data)" : "");
        if (v.required)
            report.fail(v.name, "missing", "file-missing", advice);
        else
            report.warn(v.name, "missing", "file-missing", advice);
        return false;
    }
    if (read == Read::Unreadable) {
        report.fail(v.name, std::strerror(errno), "unreadable",
                    "make the file readable by the daemons' user");
        return false;
    }
    // One trailing newline is how the store ends a value; anything else that
    // is a control character reaches the cookie or the signature.
    std::string value = raw;
    if (!value.empty() && value.back() == '\n') value.pop_back();
    const std::string shown = v.credential ? maskedCredential(value) + " (" +
                                                 std::to_string(value.size()) + " characters)"
                                           : escaped(value);
    size_t control = std::string::npos;
    for (size_t i = 0; i < value.size() && control == std::string::npos; ++i) {
        const unsigned char c = static_cast<unsigned char>(value[i]);
        if (c < 0x20 || c == 0x7f) control = i;
    }
    bool good = true;
    if (value.empty()) {
        report.fail(v.name, "empty", "file-empty", rewrite);
        good = false;
    } else if (control + 1 == value.size() && value.back() == '\r') {
        // The host port drops a "\r\n" line end; another port or a script
        // reading the store may send the "\r" on.
        report.warn(v.name, shown + " (a \\r\\n line end)", "control-character",
                    "other readers of the store may keep the \\r: " + rewrite);
        good = false;
    } else if (control != std::string::npos) {
        report.fail(v.name,
                    shown + ": " + escaped(value.substr(control, 1)) + " at byte " +
                        std::to_string(control + 1),
                    "control-character", rewrite);
        good = false;
    } else if (value.size() < v.minLength || value.size() > v.maxLength) {
        report.fail(v.name,
                    shown + ": " + std::to_string(value.size()) + " characters, expected " +
                        std::to_string(v.minLength) + " to " + std::to_string(v.maxLength),
                    "implausible-length", "restore the value from the factory data");
        good = false;
    }
    if (v.credential && (info.st_mode & S_IROTH) != 0) {
        report.warn(v.name + std::string(" mode"), "readable by every user", "readable-by-others",
                    "chmod 600 /data/device/" + std::string(v.name));
    }
    if (good) report.ok(v.name, shown);
    return good;
}

}  // namespace

void checkConfig(Report& report, ServiceUrls& urls) {
    const std::string path = devicePath(kConfigPath);
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        struct stat info {};
        const bool missing = ::stat(path.c_str(), &info) != 0;
        report.fail("messaging.conf", missing ? "missing" : "unreadable",
                    missing ? "config-missing" : "config-unreadable",
                    std::string(missing ? "restore " : "make readable ") + kConfigPath);
        return;
    }
    report.ok("messaging.conf", kConfigPath);
    std::map<std::string, std::string> entries;
    std::string line;
    while (std::getline(in, line)) {
        line = trimmed(line);
        const size_t equals = line.find('=');
        if (line.empty() || line[0] == '#' || equals == std::string::npos) continue;
        entries[trimmed(line.substr(0, equals))] = trimmed(line.substr(equals + 1));
    }
    for (const char* key : kServiceKeys) {
        auto it = entries.find(key);
        if (it == entries.end() || it->second.empty()) {
            report.fail(key, "missing", "key-missing",
                        std::string("add a line ") + key + "=https://... to " + kConfigPath);
            continue;
        }
        const std::string problem = urlProblem(it->second);
        if (!problem.empty()) {
            report.fail(key, escaped(it->second) + " " + problem, "url-malformed",
                        std::string("correct ") + key + " in " + kConfigPath);
            continue;
        }
        report.ok(key, it->second);
        urls[key] = it->second;
    }
}

void checkStore(Report& report) {
    // The serial number identifies the device; the MAC address stands in for it.
    struct stat info {};
    const bool sn = ::stat(devicePath("/data/device/sn").c_str(), &info) == 0;
    const bool mac = ::stat(devicePath("/data/device/mac").c_str(), &info) == 0;
    checkValue(report, {"sn", 4, 64, false, true}, true);
    checkValue(report, {"mac", 12, 17, false, true}, true);
    if (!sn && !mac)
        report.fail("sn", "missing, and no mac either", "file-missing",
                    "restore /data/device/sn (factory data)");
    for (const auto& value : kStoreValues)
        checkValue(report, value, std::strncmp(value.name, "device_token", 12) == 0);

    std::string raw;
    if (readRaw(devicePath("/data/device/uid"), raw, info) != Read::Ok) return;
    std::string text = raw;
    if (!text.empty() && text.back() == '\n') text.pop_back();
    char* end = nullptr;
    errno = 0;
    const long long uid = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || errno != 0 || end == nullptr || *end != '\0' || uid < 0) {
        report.warn("uid", escaped(text), "uid-unparseable",
                    "bind the administrator again (the app), or remove /data/device/uid");
    } else {
        report.ok("uid", text);
    }
}

void checkClock(Report& report, long long serverMillis, const std::string& why) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const long long seconds = static_cast<long long>(now.tv_sec);
    const long long built = velmar::http::detail::buildTime();
    char stamp[64] = "";
    const time_t t = static_cast<time_t>(seconds);
    struct tm utc {};
    if (gmtime_r(&t, &utc) != nullptr)
        std::strftime(stamp, sizeof(stamp), "%Y-%m-%dT%H:%M:%SZ", &utc);
    if (seconds < built) {
        report.fail(
            "build time",
            std::string(stamp) + ", " + std::to_string(built - seconds) + " s before this build",
            "clock-before-build",
            "set the clock (time service or RTC battery): certificate dates go unchecked");
    } else {
        report.ok("build time", std::string(stamp) + ", " +
                                    std::to_string((seconds - built) / 86400) +
                                    " days after this build");
    }
    if (serverMillis < 0) {
        report.warn("time service", why, "time-service-unanswered",
                    "see the sTimeSyncURL host under network");
        return;
    }
    const long long offset = (seconds * 1000 + now.tv_nsec / 1000000) - serverMillis;
    const long long magnitude = offset < 0 ? -offset : offset;
    const std::string value = std::to_string(offset / 1000) + " s from the time service";
    if (magnitude > 86400LL * 1000)
        report.fail("time service offset", value, "clock-far-off",
                    "set the clock from the time service");
    else if (magnitude > 60LL * 1000)
        report.warn("time service offset", value, "clock-off",
                    "set the clock from the time service");
    else
        report.ok("time service offset", value);
}

void checkLog(Report& report) {
    const int fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, "/dev/log", sizeof(address.sun_path) - 1);
    // Connecting tells whether a log daemon listens, without adding a line to it.
    const bool listens =
        fd >= 0 && ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    const std::string why = std::strerror(errno);
    if (fd >= 0) ::close(fd);
    if (listens)
        report.ok("/dev/log", "a log daemon listens");
    else
        report.warn("/dev/log", "no log daemon: " + why, "no-log-daemon",
                    "start the system log daemon; meanwhile VELMAR_LOG_STDERR=1 shows the lines");
}

}  // namespace doctor
}  // namespace quilctl
