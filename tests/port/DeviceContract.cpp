// The device-information functions, each with the status convention and the
// buffer size the library calls it with: a value read back whole, a missing,
// empty or too long value, the setters, and the administrator id's checks.
#include <algorithm>
#include <cstring>

#include "Contract.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/utils/FileUtils.h"

namespace velmar::port {
namespace {

// How a function reports success: 0 only, any non-negative status, or only
// a positive one (the enumerator's value less one is the least success).
enum Convention { kZero, kNotNegative, kPositive };
const char* const kSuccess[] = {"0", "a non-negative status", "a positive status"};
const char* const kFailure[] = {"non-zero", "negative", "not positive"};
const auto succeeded = [](Convention c, int s) { return c == kZero ? s == 0 : s >= (c - 1); };

struct Getter {
    const char* name;
    int (*get)(char*, int);
    Convention convention;
    int size;  // the buffer the library hands it
};
// clang-format off
const Getter kGetters[] = {
    {"sn", sn_get, kZero, 64}, {"mac", mac_get, kZero, 64}, {"deviceid", deviceid_get, kZero, 64},
    {"channel_secret", channel_secret_get, kZero, 64}, {"iot_did", iot_did_get, kZero, 64},
    {"version", version_get, kZero, 64}, {"channel", channel_get, kZero, 64},
    {"model", model_get, kZero, 64}, {"appid", appid_get, kZero, 64},
    {"countrycode", countrycode_get, kZero, 64}, {"imei", imei_get, kZero, 64},
    {"carrier", carrier_get, kZero, 64}, {"uid", uid_get, kZero, 64},
    {"broker_host", broker_host_get, kZero, 128}, {"broker_port", broker_port_get, kZero, 16},
    {"upgrade_date", upgrade_date_get, kNotNegative, 128},
    {"device_token", device_token_get, kNotNegative, 256},
    {"device_token_sign", device_token_sign_get, kNotNegative, 256}};
// clang-format on

struct Setter {
    const char* name;
    int (*set)(const char*);
    Convention convention;
    const char* before;  // a longer value the next one replaces
    const char* value;   // what the library stores
};
// clang-format off
const Setter kSetters[] = {
    {"deviceid", deviceid_set, kZero, "73001234567890", "7300123456"},
    {"channel_secret", channel_secret_set, kZero, "3c9a1f0e5b7d4c28a6", "3c9a1f0e5b7d"},
    {"broker_host", broker_host_set, kZero, "broker-2.quil.test", "broker.quil.test"},
    {"broker_port", broker_port_set, kZero, "18883", "8883"},
    {"device_token", device_token_set, kNotNegative, "dGhlIHRva2Vu", "dG9rZW4="},
    {"device_token_sign", device_token_sign_set, kNotNegative, "c2lnbmVkIGJ5", "c2lnbg=="},
    {"upgrade_date", upgrade_date_set, kNotNegative, "2025-12-31 23:59", "2026-01-31"},
    {"uid", uid_set, kPositive, "12345678901234", "1234567890123"}};
// clang-format on

const Getter& getter(const std::string& name) {
    return *std::find_if(std::begin(kGetters), std::end(kGetters),
                         [&name](const Getter& g) { return name == g.name; });
}

// The status and the text left in a buffer zeroed first, as the library does;
// "<unterminated>" when the port left no NUL in it or wrote beyond it.
std::pair<int, std::string> read(const Getter& g, int size) {
    std::vector<char> buf(size_t(size) + 1, '\0');
    buf[size_t(size)] = 'X';
    const int status = g.get(buf.data(), size);
    const bool terminated = std::memchr(buf.data(), '\0', size_t(size)) && buf[size_t(size)] == 'X';
    return {status, terminated ? std::string(buf.data()) : "<unterminated>"};
}

std::string callOf(const Getter& g) {
    return std::string(g.name) + "_get(buf, " + std::to_string(g.size) + ")";
}

// Success with `value` by the getter's convention; nullopt: a failure by it,
// the buffer left empty.
void expectRead(Verdict& v, const Getter& g, const std::pair<int, std::string>& r,
                const std::optional<std::string>& value) {
    v.expect(succeeded(g.convention, r.first) == bool(value),
             std::string("status ") + (value ? kSuccess : kFailure)[g.convention] + " (got " +
                 std::to_string(r.first) + ")");
    v.equal(value ? "value" : "buffer", r.second, value.value_or(""));
}

std::vector<Point> getters() {
    std::vector<Point> points;
    for (const Getter& g : kGetters) {
        const std::string call = callOf(g);
        // A value that fits, none, one a byte too long, an empty one.
        for (int length : {g.size - 1, -1, g.size, 0}) {
            const bool fits = length == g.size - 1;
            const std::string what = length < 0 ? "no value stored"
                                     : length == 0
                                         ? "an empty value"
                                         : "a value of " + std::to_string(length) + " characters";
            points.push_back(
                {call + ": " + what +
                     (length == 0 ? " reads as \"\""
                      : fits      ? std::string(" reads back whole, ") + kSuccess[g.convention]
                                  : std::string(" fails (") + kFailure[g.convention] +
                                   "), the buffer left empty"),
                 [g, length, fits](Port& port, Verdict& v) {
                     const auto value = length < 0
                                            ? std::nullopt
                                            : std::optional(std::string(size_t(length), '7'));
                     port.store(g.name, value);
                     const auto r = read(g, g.size);
                     if (length == 0) return v.equal("buffer", r.second, "");  // either status
                     expectRead(v, g, r, fits ? value : std::nullopt);
                 }});
        }
    }
    return points;
}

std::vector<Point> setters() {
    std::vector<Point> points;
    for (const Setter& s : kSetters) {
        const Getter& g = getter(s.name);
        points.push_back({std::string(s.name) + "_set: " + kSuccess[s.convention] +
                              ", the value then read back by " + callOf(g) +
                              ", the one before replaced",
                          [s, &g](Port&, Verdict& v) {
                              for (const char* value : {s.before, s.value}) {
                                  const int status = s.set(value);
                                  v.expect(succeeded(s.convention, status),
                                           std::string("status ") + kSuccess[s.convention] +
                                               " (got " + std::to_string(status) + ")");
                              }
                              expectRead(v, g, read(g, g.size), s.value);
                          }});
    }
    return points;
}

std::vector<Point> others() {
    return {
        {"uid_isvalid_str: 0 for the decimal text of a signed 64-bit integer, non-zero for "
         "anything else",
         [](Port& port, Verdict& v) {
             port.require(Need::IdCheck);
             for (const char* valid :
                  {"0", "12345", "-1", "-88123", "9223372036854775807", "-9223372036854775808"})
                 v.expect(uid_isvalid_str(valid) == 0, std::string("0 for ") + valid);
             for (const char* invalid :
                  {"", "-", "12a", " 1", "1 ", "+1", "--1", "1-2", "9223372036854775808",
                   "-9223372036854775809", "99999999999999999999"})
                 v.expect(uid_isvalid_str(invalid) != 0, "non-zero for " + Verdict::show(invalid));
         }},
        {"uid_clean: non-negative, uid_get fails after it; nothing to forget is no failure",
         [](Port& port, Verdict& v) {
             port.store("uid", "42");
             v.expect(uid_clean() >= 0 && uid_clean() >= 0, "non-negative, twice");
             expectRead(v, getter("uid"), read(getter("uid"), 64), std::nullopt);
         }},
        {"rssi_get: the stored signal strength, 0 when unknown",
         [](Port& port, Verdict& v) {
             port.store("rssi", "-61");
             v.equal("stored -61", rssi_get(), -61);
             port.store("rssi", std::nullopt);
             v.equal("unknown", rssi_get(), 0);
         }},
        {"file_read_string(path, buf, 128): the bytes read and the text, cut to the buffer; "
         "negative for a missing file; FileUtils::writeAtomically then replaces the text whole",
         [](Port& port, Verdict& v) {
             // The length read, and the text left in a buffer of `size` bytes.
             auto ota = [](const std::string& path, int size) {
                 char buf[128] = {};
                 const int length = file_read_string(path.c_str(), buf, size);
                 return std::to_string(length) + " " + buf;
             };
             const std::string path = port.deviceFile("idle\n");
             v.equal("whole, into 3 bytes, empty file",
                     ota(path, 128) + "|" + ota(path, 3) + "|" + ota(port.deviceFile(""), 128),
                     "5 idle\n|2 id|0 ");
             v.expect(ota(port.deviceFile(std::nullopt), 128)[0] == '-',
                      "negative for a missing file");
             v.expect(utils::FileUtils::writeAtomically(path, "{}"), "writeAtomically: true");
             v.equal("after writeAtomically", ota(path, 128), "2 {}");
         }},
    };
}

INSTANTIATE_TEST_SUITE_P(Device, Contract,
                         ::testing::ValuesIn(joined({getters(), setters(), others()})), testName);

}  // namespace
}  // namespace velmar::port
