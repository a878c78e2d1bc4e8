// The fake port: every porting-layer function answers from state that the
// unit tests script through velmar/fake/Fake.h, and records what it was asked.
#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <mutex>
#include <thread>

#include "ByteStrings.h"
#include "FormEncoding.h"
#include "velmar/crypto/RandomUtils.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/fake/Fake.h"
#include "velmar/http/HTTPRequest.h"
#include "velmar/utils/ConfigFile.h"
#include "velmar/utils/ExecUtils.h"
#include "velmar/utils/FileUtils.h"
#include "velmar/utils/Logging.h"
#include "velmar/utils/TimeUtils.h"
#include "velmar/utils/UUIDUtils.h"

namespace velmar {
namespace fake {

namespace {

struct State {
    std::map<std::string, std::string> values;
    std::map<std::string, int> statuses;
    std::vector<std::string> deviceCalls;
    int actionMillis = 0;
    int runningActions = 0;
    int overlappingActions = 0;
    int rssi = 0;
    int uidInvalid = 0;
    bool failHmac = false;
    int liveByteStrings = 0;
    std::map<std::string, std::string> files;
    std::map<std::string, std::string> written;
    bool failWrites = false;
    std::map<std::string, std::string> config;
    std::vector<std::string> configOpens;
    std::vector<Answer> answers;
    size_t nextAnswer = 0;
    std::vector<Call> calls;
    std::vector<LogLine> logs;
    std::vector<std::pair<int, std::string>> execs;
    size_t nextExec = 0;
    std::vector<std::string> execCommands;
    long long now = kDefaultNow;
    std::vector<std::string> uuids;
    size_t nextUuid = 0;
    int uuidCount = 0;
    unsigned char nextRandom = 0;
    std::vector<unsigned> randomDraws;
};

std::recursive_mutex gMutex;
State& state() {
    static State s;
    return s;
}

using Lock = std::lock_guard<std::recursive_mutex>;

std::optional<int> forced(const std::string& function) {
    auto it = state().statuses.find(function);
    if (it == state().statuses.end()) return std::nullopt;
    return it->second;
}

enum class Convention { Zero, Negative, Positive };

// A getter: fills the buffer (bounded) when a value is stored.
int get(const char* name, Convention convention, char* buf, int size) {
    Lock lock(gMutex);
    if (buf == nullptr || size <= 0) return -1;
    const std::string function = std::string(name) + "_get";
    auto it = state().values.find(name);
    bool fits = it != state().values.end() && it->second.size() < static_cast<size_t>(size);
    if (fits) {
        std::memcpy(buf, it->second.c_str(), it->second.size() + 1);
    }
    if (auto status = forced(function)) return *status;
    if (!fits) return -1;
    return convention == Convention::Zero ? 0 : static_cast<int>(it->second.size());
}

bool failing(int status, Convention convention) {
    switch (convention) {
        case Convention::Zero:
            return status != 0;
        case Convention::Negative:
            return status < 0;
        case Convention::Positive:
            return status <= 0;
    }
    return true;
}

int set(const char* name, Convention convention, const char* value) {
    Lock lock(gMutex);
    const std::string text = value ? value : "";
    const std::string function = std::string(name) + "_set";
    state().deviceCalls.push_back(function + "(" + text + ")");
    int status = convention == Convention::Zero ? 0 : static_cast<int>(text.size()) + 1;
    if (auto f = forced(function)) status = *f;
    if (!failing(status, convention)) state().values[name] = text;
    return status;
}

int action(const char* function, int success) {
    int millis = 0;
    {
        Lock lock(gMutex);
        state().deviceCalls.push_back(std::string(function) + "()");
        if (state().runningActions++ > 0) ++state().overlappingActions;
        millis = state().actionMillis;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(millis));
    Lock lock(gMutex);
    --state().runningActions;
    if (auto f = forced(function)) return *f;
    return success;
}

}  // namespace

void reset() {
    Lock lock(gMutex);
    state() = State();
}

void setDeviceValue(const std::string& name, const std::string& value) {
    Lock lock(gMutex);
    state().values[name] = value;
}
void clearDeviceValue(const std::string& name) {
    Lock lock(gMutex);
    state().values.erase(name);
}
std::optional<std::string> deviceValue(const std::string& name) {
    Lock lock(gMutex);
    auto it = state().values.find(name);
    if (it == state().values.end()) return std::nullopt;
    return it->second;
}
void setStatus(const std::string& function, int status) {
    Lock lock(gMutex);
    state().statuses[function] = status;
}
void clearStatus(const std::string& function) {
    Lock lock(gMutex);
    state().statuses.erase(function);
}
void setRssi(int value) {
    Lock lock(gMutex);
    state().rssi = value;
}
void setUidInvalid(int result) {
    Lock lock(gMutex);
    state().uidInvalid = result;
}
const std::vector<std::string>& deviceCalls() {
    return state().deviceCalls;
}
void slowActions(int millis) {
    Lock lock(gMutex);
    state().actionMillis = millis;
}
int overlappingActions() {
    Lock lock(gMutex);
    return state().overlappingActions;
}
void failHmac(bool fail) {
    Lock lock(gMutex);
    state().failHmac = fail;
}
int liveByteStrings() {
    Lock lock(gMutex);
    return state().liveByteStrings;
}
void setFile(const std::string& path, const std::string& content) {
    Lock lock(gMutex);
    state().files[path] = content;
}
std::optional<std::string> writtenFile(const std::string& path) {
    Lock lock(gMutex);
    auto it = state().written.find(path);
    if (it == state().written.end()) return std::nullopt;
    return it->second;
}
void failFileWrites(bool fail) {
    Lock lock(gMutex);
    state().failWrites = fail;
}
void setConfig(const std::string& key, const std::string& value) {
    Lock lock(gMutex);
    state().config[key] = value;
}
const std::vector<std::string>& configOpens() {
    return state().configOpens;
}

namespace {

// Reverses the transport's form encoding for the tests ("+" reads as a space,
// a malformed escape stays as it is): the shipped ports only encode.
std::string formDecoded(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        const std::string hex = text.substr(i + 1, 2);
        if (text[i] == '%' && hex.size() == 2 &&
            std::isxdigit(static_cast<unsigned char>(hex[0])) &&
            std::isxdigit(static_cast<unsigned char>(hex[1]))) {
            out += static_cast<char>(std::stoi(hex, nullptr, 16));
            i += 2;
        } else {
            out += text[i] == '+' ? ' ' : text[i];
        }
    }
    return out;
}

}  // namespace

std::map<std::string, std::string> Call::decodedParams() const {
    std::map<std::string, std::string> out;
    if (overload == Overload::Form) {
        for (const auto& [key, values] : fields) {
            if (!values.empty()) out[key] = values.back();
        }
        return out;
    }
    size_t start = 0;
    while (start < params.size()) {
        const size_t end = std::min(params.find('&', start), params.size());
        const std::string pair = params.substr(start, end - start);
        const size_t eq = pair.find('=');
        if (!pair.empty()) {
            out[formDecoded(pair.substr(0, eq))] =
                eq == std::string::npos ? "" : formDecoded(pair.substr(eq + 1));
        }
        start = end + 1;
    }
    return out;
}

void pushAnswer(const Answer& answer) {
    Lock lock(gMutex);
    state().answers.push_back(answer);
}
void pushBody(const std::string& body, int status) {
    Answer a;
    a.status = status;
    a.body = body;
    pushAnswer(a);
}
void pushFailure(ErrorType error, const std::string& message) {
    Answer a;
    a.ok = false;
    a.status = 0;
    a.error = error;
    a.errorMessage = message;
    pushAnswer(a);
}
const std::vector<Call>& calls() {
    return state().calls;
}

const std::vector<LogLine>& logs() {
    return state().logs;
}
bool logged(const std::string& text, int level) {
    Lock lock(gMutex);
    for (const auto& line : state().logs) {
        if ((level < 0 || line.level == level) && line.text.find(text) != std::string::npos) {
            return true;
        }
    }
    return false;
}

bool loggedExactly(const std::string& text, int level) {
    Lock lock(gMutex);
    for (const auto& line : state().logs) {
        if ((level < 0 || line.level == level) && line.text == text) return true;
    }
    return false;
}

void pushExec(int status, const std::string& output) {
    Lock lock(gMutex);
    state().execs.emplace_back(status, output);
}
const std::vector<std::string>& execCommands() {
    return state().execCommands;
}

void setNow(long long millis) {
    Lock lock(gMutex);
    state().now = millis;
}
void pushUuid(const std::string& uuid) {
    Lock lock(gMutex);
    state().uuids.push_back(uuid);
}
int uuidCount() {
    Lock lock(gMutex);
    return state().uuidCount;
}
const std::vector<unsigned>& randomDraws() {
    return state().randomDraws;
}

namespace {

bool answer(Call call, int& status, std::string& response, ErrorType& error,
            std::string& errorMessage) {
    Lock lock(gMutex);
    // Refused as the host refuses it, before an answer is taken.
    const std::string refused =
        http::detail::refusal(call.method, call.url, call.cookie, call.headers);
    state().calls.push_back(std::move(call));
    const bool unanswered = state().nextAnswer >= state().answers.size();
    if (!refused.empty() || unanswered) {
        status = 0;
        response.clear();
        error = refused.empty() ? utils::ERROR_HTTP_CONNECT : utils::ERROR_HTTP_INIT;
        errorMessage = refused.empty() ? "no scripted answer" : refused;
        return false;
    }
    const Answer& a = state().answers[state().nextAnswer++];
    status = a.status;
    response = a.body;
    error = a.error;
    errorMessage = a.errorMessage;
    return a.ok;
}

// What every overload records alike.
Call callOf(Overload overload, const std::string& method, const std::vector<std::string>& headers,
            int timeoutMs) {
    Call call;
    call.overload = overload;
    call.method = method;
    call.headers = headers;
    call.timeoutMs = timeoutMs;
    return call;
}

}  // namespace

}  // namespace fake

// ---- the porting layer, answered from the fake's state ---------------------

namespace http {

bool HTTPRequest::httpRequest(int& status, std::string& response, ErrorType& error,
                              std::string& errorMessage, const std::string& url,
                              const std::string& params, const std::string& method,
                              const std::vector<std::string>& headers, int timeoutMs,
                              const std::string& cookie) {
    fake::Call call = fake::callOf(fake::Overload::Url, method, headers, timeoutMs);
    call.url = url;
    call.params = params;
    call.cookie = cookie;
    return fake::answer(std::move(call), status, response, error, errorMessage);
}

bool HTTPRequest::httpRequest(int& status, std::string& response, ErrorType& error,
                              std::string& errorMessage, const std::string& url,
                              const std::string& params, const std::string& method,
                              const std::vector<std::string>& headers, int timeoutMs,
                              const std::string& cookie, const std::string& dnsServers) {
    fake::Call call = fake::callOf(fake::Overload::UrlWithDns, method, headers, timeoutMs);
    call.url = url;
    call.params = params;
    call.cookie = cookie;
    call.dnsServers = dnsServers;
    return fake::answer(std::move(call), status, response, error, errorMessage);
}

bool HTTPRequest::httpRequest(int& status, std::string& response, ErrorType& error,
                              std::string& errorMessage, const std::string& baseUrl,
                              const std::string& path, const std::string& params,
                              const std::string& method, const std::vector<std::string>& headers,
                              int timeoutMs) {
    fake::Call call = fake::callOf(fake::Overload::BaseAndPath, method, headers, timeoutMs);
    call.baseUrl = baseUrl;
    call.path = path;
    call.params = params;
    return fake::answer(std::move(call), status, response, error, errorMessage);
}

bool HTTPRequest::httpRequest(int& status, std::string& response, ErrorType& error,
                              std::string& errorMessage, const std::string& baseUrl,
                              const std::string& path,
                              const std::map<std::string, std::vector<std::string>>& fields,
                              const std::string& method, const std::vector<std::string>& headers,
                              int timeoutMs) {
    fake::Call call = fake::callOf(fake::Overload::Form, method, headers, timeoutMs);
    call.baseUrl = baseUrl;
    call.path = path;
    call.fields = fields;
    call.params = detail::encodeFormFields(fields);
    return fake::answer(std::move(call), status, response, error, errorMessage);
}

}  // namespace http

namespace utils {

ConfigFile::ConfigFile(const std::string& path) {
    fake::Lock lock(fake::gMutex);
    fake::state().configOpens.push_back(path);
    mValues = fake::state().config;
}

std::string ConfigFile::get(const std::string& key) const {
    auto it = mValues.find(key);
    return it == mValues.end() ? std::string() : it->second;
}

Logging::Logging(int level, const char* sourceFile, int line)
    : mLevel(level), mSourceFile(sourceFile), mLine(line) {}

Logging::~Logging() {
    std::string text = mStream.str();
    const char* mirror = std::getenv("VELMAR_LOG_STDERR");
    if (mirror != nullptr && std::strcmp(mirror, "1") == 0) {
        std::cerr << mSourceFile << ":" << mLine << ": " << text << std::endl;
    }
    fake::Lock lock(fake::gMutex);
    fake::state().logs.push_back({mLevel, mSourceFile ? mSourceFile : "", mLine, text});
}

int ExecUtils::exec(std::string& output, const std::string& command) {
    fake::Lock lock(fake::gMutex);
    fake::state().execCommands.push_back(command);
    if (fake::state().nextExec >= fake::state().execs.size()) {
        output.clear();
        return 127;
    }
    const auto& scripted = fake::state().execs[fake::state().nextExec++];
    output = scripted.second;
    return scripted.first;
}

long long TimeUtils::currentTimeMillis() {
    fake::Lock lock(fake::gMutex);
    return fake::state().now;
}

std::string UUIDUtils::generate() {
    fake::Lock lock(fake::gMutex);
    auto& s = fake::state();
    ++s.uuidCount;
    if (s.nextUuid < s.uuids.size()) return s.uuids[s.nextUuid++];
    char buffer[40];
    std::snprintf(buffer, sizeof(buffer), "00000000-0000-4000-8000-%012llx",
                  static_cast<unsigned long long>(s.uuidCount - s.nextUuid));
    return buffer;
}

std::string FileUtils::devicePath(const std::string& path) {
    return path;
}

bool FileUtils::writeAtomically(const std::string& path, const std::string& content) {
    fake::Lock lock(fake::gMutex);
    if (fake::state().failWrites) return false;
    fake::state().written[path] = content;
    fake::state().files[path] = content;  // read back as the device would
    return true;
}

}  // namespace utils

namespace crypto {

std::vector<unsigned char> RandomUtils::nextBytes(unsigned count) {
    fake::Lock lock(fake::gMutex);
    fake::state().randomDraws.push_back(count);
    std::vector<unsigned char> out(count);
    for (auto& b : out)
        b = fake::state().nextRandom++;
    return out;
}

}  // namespace crypto
}  // namespace velmar

// ---- device-information functions ------------------------------------------

using velmar::fake::Convention;
using velmar::fake::get;
using velmar::fake::set;

extern "C" {

int sn_get(char* buf, int size) {
    return get("sn", Convention::Zero, buf, size);
}
int mac_get(char* buf, int size) {
    return get("mac", Convention::Zero, buf, size);
}
int deviceid_get(char* buf, int size) {
    return get("deviceid", Convention::Zero, buf, size);
}
int channel_secret_get(char* buf, int size) {
    return get("channel_secret", Convention::Zero, buf, size);
}
int iot_did_get(char* buf, int size) {
    return get("iot_did", Convention::Zero, buf, size);
}
int version_get(char* buf, int size) {
    return get("version", Convention::Zero, buf, size);
}
int channel_get(char* buf, int size) {
    return get("channel", Convention::Zero, buf, size);
}
int model_get(char* buf, int size) {
    return get("model", Convention::Zero, buf, size);
}
int appid_get(char* buf, int size) {
    return get("appid", Convention::Zero, buf, size);
}
int countrycode_get(char* buf, int size) {
    return get("countrycode", Convention::Zero, buf, size);
}
int imei_get(char* buf, int size) {
    return get("imei", Convention::Zero, buf, size);
}
int carrier_get(char* buf, int size) {
    return get("carrier", Convention::Zero, buf, size);
}
int uid_get(char* buf, int size) {
    return get("uid", Convention::Zero, buf, size);
}
int broker_host_get(char* buf, int size) {
    return get("broker_host", Convention::Zero, buf, size);
}
int broker_port_get(char* buf, int size) {
    return get("broker_port", Convention::Zero, buf, size);
}
int upgrade_date_get(char* buf, int size) {
    return get("upgrade_date", Convention::Negative, buf, size);
}
int device_token_get(char* buf, int size) {
    return get("device_token", Convention::Negative, buf, size);
}
int device_token_sign_get(char* buf, int size) {
    return get("device_token_sign", Convention::Negative, buf, size);
}
int rssi_get(void) {
    velmar::fake::Lock lock(velmar::fake::gMutex);
    return velmar::fake::state().rssi;
}

int deviceid_set(const char* v) {
    return set("deviceid", Convention::Zero, v);
}
int channel_secret_set(const char* v) {
    return set("channel_secret", Convention::Zero, v);
}
int device_token_set(const char* v) {
    return set("device_token", Convention::Negative, v);
}
int device_token_sign_set(const char* v) {
    return set("device_token_sign", Convention::Negative, v);
}
int upgrade_date_set(const char* v) {
    return set("upgrade_date", Convention::Negative, v);
}
int uid_set(const char* v) {
    return set("uid", Convention::Positive, v);
}
int broker_host_set(const char* v) {
    return set("broker_host", Convention::Zero, v);
}
int broker_port_set(const char* v) {
    return set("broker_port", Convention::Zero, v);
}

int uid_isvalid_str(const char*) {
    velmar::fake::Lock lock(velmar::fake::gMutex);
    return velmar::fake::state().uidInvalid;
}

int uid_clean(void) {
    int status = velmar::fake::action("uid_clean", 0);
    if (status >= 0) {
        velmar::fake::Lock lock(velmar::fake::gMutex);
        velmar::fake::state().values.erase("uid");
    }
    return status;
}
int bind_uid(void) {
    return velmar::fake::action("bind_uid", 0);
}
int dev_restore(void) {
    return velmar::fake::action("dev_restore", 0);
}

int file_read_string(const char* path, char* buf, int size) {
    velmar::fake::Lock lock(velmar::fake::gMutex);
    if (path == nullptr || buf == nullptr || size <= 0) return -1;
    auto& files = velmar::fake::state().files;
    auto it = files.find(path);
    if (it == files.end()) return -1;
    size_t n = std::min(it->second.size(), static_cast<size_t>(size - 1));
    std::memcpy(buf, it->second.data(), n);
    buf[n] = '\0';
    return static_cast<int>(n);
}

}  // extern "C"

extern "C" {

str_t* str_hmac_sha256(const str_t* data, const str_t* key) {
    velmar::fake::Lock lock(velmar::fake::gMutex);
    if (velmar::fake::state().failHmac) return nullptr;
    str_t* out = velmar::detail::hmacSha256(data, key);
    if (out != nullptr) ++velmar::fake::state().liveByteStrings;
    return out;
}

void str_destroy(str_t* s) {
    if (s == nullptr) return;
    velmar::fake::Lock lock(velmar::fake::gMutex);
    --velmar::fake::state().liveByteStrings;
    velmar::detail::destroyByteString(s);
}

}  // extern "C"
