// The device-information functions, each with the status convention and the
// buffer size the library calls it with: a value read back whole, a missing,
// empty or too long value, the setters, and the administrator id's checks.
#include <algorithm>
#include <cstring>
#include <thread>

#include "Contract.h"
#include "velmar/device/DeviceInfo.h"

namespace velmar {
namespace port {
namespace {

// How a function reports success: 0 only, any non-negative status, or only
// a positive one.
enum Convention { kZero, kNotNegative, kPositive };
const char* const kSuccess[] = {"0", "a non-negative status", "a positive status"};
const char* const kFailure[] = {"non-zero", "negative", "not positive"};
bool succeeded(Convention c, int status) {
    return c == kZero ? status == 0 : c == kNotNegative ? status >= 0 : status > 0;
}

struct Getter {
    const char* name;
    int (*get)(char*, int);
    Convention convention;
    int size;  // the buffer the library hands it
};
const Getter kGetters[] = {
    {"sn", sn_get, kZero, 64},
    {"mac", mac_get, kZero, 64},
    {"deviceid", deviceid_get, kZero, 64},
    {"channel_secret", channel_secret_get, kZero, 64},
    {"iot_did", iot_did_get, kZero, 64},
    {"version", version_get, kZero, 64},
    {"channel", channel_get, kZero, 64},
    {"model", model_get, kZero, 64},
    {"appid", appid_get, kZero, 64},
    {"countrycode", countrycode_get, kZero, 64},
    {"imei", imei_get, kZero, 64},
    {"carrier", carrier_get, kZero, 64},
    {"uid", uid_get, kZero, 64},
    {"broker_host", broker_host_get, kZero, 128},
    {"broker_port", broker_port_get, kZero, 16},
    {"upgrade_date", upgrade_date_get, kNotNegative, 128},
    {"device_token", device_token_get, kNotNegative, 256},
    {"device_token_sign", device_token_sign_get, kNotNegative, 256},
};

struct Setter {
    const char* name;
    int (*set)(const char*);
    Convention convention;
    const char* before;  // a longer value the next one replaces
    const char* value;   // what the library stores
};
const Setter kSetters[] = {
    {"deviceid", deviceid_set, kZero, "73001234567890", "7300123456"},
    {"channel_secret", channel_secret_set, kZero, "3c9a1f0e5b7d4c28a6e0f19d2b3c4d5e00",
     "3c9a1f0e5b7d"},
    {"broker_host", broker_host_set, kZero, "broker-2.quil.test", "broker.quil.test"},
    {"broker_port", broker_port_set, kZero, "18883", "8883"},
    {"device_token", device_token_set, kNotNegative,
     "dGhlIGRldmljZSB0b2tlbiBiZWZvcmU=", "dG9rZW4="},
    {"device_token_sign", device_token_sign_set, kNotNegative,
     "c2lnbmF0dXJlIGJlZm9yZQ==", "c2lnbg=="},
    {"upgrade_date", upgrade_date_set, kNotNegative, "2025-12-31 23:59", "2026-01-31"},
    {"uid", uid_set, kPositive, "12345678901234", "1234567890123"},
};

const Getter& getter(const std::string& name) {
    return *std::find_if(std::begin(kGetters), std::end(kGetters),
                         [&name](const Getter& g) { return name == g.name; });
}

// The status and the text left in a buffer zeroed first, as the library does.
struct Read {
    int status;
    std::string text;
    bool terminated;  // a NUL within the buffer
};
Read read(const Getter& g, int size) {
    std::vector<char> buf(static_cast<size_t>(size) + 1, '\0');
    buf[static_cast<size_t>(size)] = 'X';  // beyond the buffer: must stay
    const int status = g.get(buf.data(), size);
    const bool terminated = std::memchr(buf.data(), '\0', static_cast<size_t>(size)) != nullptr &&
                            buf[static_cast<size_t>(size)] == 'X';
    return {status, terminated ? std::string(buf.data()) : std::string(), terminated};
}

std::string callOf(const Getter& g) {
    return std::string(g.name) + "_get(buf, " + std::to_string(g.size) + ")";
}

// A failure by the getter's convention, the buffer left empty.
void expectFailure(Verdict& v, const Getter& g, const Read& r) {
    v.expect(!succeeded(g.convention, r.status), std::string("status ") + kFailure[g.convention] +
                                                     " (got " + std::to_string(r.status) + ")");
    v.equal("buffer", r.text, "");
}

void expectValue(Verdict& v, const Getter& g, const Read& r, const std::string& value) {
    v.expect(succeeded(g.convention, r.status), std::string("status ") + kSuccess[g.convention] +
                                                    " (got " + std::to_string(r.status) + ")");
    v.equal("value", r.text, value);
}

std::vector<Point> getters() {
    std::vector<Point> points;
    for (const Getter& g : kGetters) {
        const std::string call = callOf(g);
        points.push_back({call + ": as found, success (" + kSuccess[g.convention] +
                              ") with a value that fits, or a failure with an empty buffer",
                          [g](Port&, Verdict& v) {
                              const Read r = read(g, g.size);
                              v.expect(r.terminated,
                                       "the buffer NUL-terminated, nothing beyond it written");
                              if (!succeeded(g.convention, r.status))
                                  return v.equal("buffer", r.text, "");
                              if (g.convention == kZero) v.equal("status", r.status, 0);
                              // The same value one byte too long for a buffer fails.
                              if (!r.text.empty())
                                  expectFailure(v, g, read(g, static_cast<int>(r.text.size())));
                          }});
        points.push_back({call + ": a value of " + std::to_string(g.size - 1) +
                              " characters reads back whole, " + kSuccess[g.convention],
                          [g](Port& port, Verdict& v) {
                              const std::string value(static_cast<size_t>(g.size - 1), '7');
                              port.store(g.name, value);
                              expectValue(v, g, read(g, g.size), value);
                          }});
        points.push_back({call + ": no value stored fails (" + kFailure[g.convention] +
                              "), the buffer left empty",
                          [g](Port& port, Verdict& v) {
                              port.store(g.name, std::nullopt);
                              expectFailure(v, g, read(g, g.size));
                          }});
        points.push_back({call + ": a value of " + std::to_string(g.size) +
                              " characters does not fit and fails, the buffer left empty",
                          [g](Port& port, Verdict& v) {
                              port.store(g.name, std::string(static_cast<size_t>(g.size), '7'));
                              expectFailure(v, g, read(g, g.size));
                          }});
        points.push_back({call + ": an empty value reads as \"\"", [g](Port& port, Verdict& v) {
                              port.store(g.name, "");
                              const Read r = read(g, g.size);
                              v.expect(r.terminated, "the buffer NUL-terminated");
                              v.equal("buffer", r.text, "");
                          }});
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
                              expectValue(v, g, read(g, g.size), s.value);
                          }});
    }
    return points;
}

std::vector<Point> others() {
    return {
        {"uid_isvalid_str: 0 for the decimal text of a signed 64-bit integer, non-zero for "
         "anything else",
         [](Port& port, Verdict& v) {
             require(port, Need::IdCheck);
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
             v.expect(uid_clean() >= 0, "non-negative");
             expectFailure(v, getter("uid"), read(getter("uid"), 64));
             v.expect(uid_clean() >= 0, "non-negative again");
         }},
        {"rssi_get: the stored signal strength, 0 when unknown",
         [](Port& port, Verdict& v) {
             port.store("rssi", "-61");
             v.equal("stored -61", rssi_get(), -61);
             port.store("rssi", std::nullopt);
             v.equal("unknown", rssi_get(), 0);
         }},
        {"file_read_string(path, buf, 128): the bytes read and the text, cut to the buffer; "
         "negative for a missing file",
         [](Port& port, Verdict& v) {
             char buf[128];
             // The length read, and the text left in `buf`.
             auto ota = [&buf](const std::string& path, int size) {
                 std::memset(buf, 0, sizeof(buf));
                 const int length = file_read_string(path.c_str(), buf, size);
                 return std::to_string(length) + " " + buf;
             };
             const std::string path = port.deviceFile("idle\n");
             v.equal("whole", ota(path, sizeof(buf)), "5 idle\n");
             v.equal("into 3 bytes", ota(path, 3), "2 id");
             v.equal("empty file", ota(port.deviceFile(""), sizeof(buf)), "0 ");
             v.expect(file_read_string(port.deviceFile(std::nullopt).c_str(), buf, sizeof(buf)) < 0,
                      "negative for a missing file");
         }},
        {"device getters: several threads at once each read their own value",
         [](Port& port, Verdict& v) {
             for (int t = 0; t < 4; ++t)
                 port.store(kSetters[t].name, kSetters[t].value);
             std::vector<std::string> wrong(4);
             std::vector<std::thread> threads;
             for (int t = 0; t < 4; ++t) {
                 threads.emplace_back([&wrong, t] {
                     const Getter& g = getter(kSetters[t].name);
                     for (int i = 0; i < 500 && wrong[t].empty(); ++i) {
                         const Read r = read(g, g.size);
                         if (r.text != kSetters[t].value) wrong[t] = callOf(g) + " read " + r.text;
                     }
                 });
             }
             for (auto& thread : threads)
                 thread.join();
             for (const auto& text : wrong)
                 v.expect(text.empty(), "each its own value (" + text + ")");
         }},
    };
}

INSTANTIATE_TEST_SUITE_P(Device, Contract,
                         ::testing::ValuesIn(joined({getters(), setters(), others()})), testName);

}  // namespace
}  // namespace port
}  // namespace velmar
