// Control surface of the fake port: unit tests script what the platform
// answers and read back what the library asked of it. Everything is process
// global; call velmar::fake::reset() between tests (FakeTest does it).
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace fake {

using utils::ErrorType;

// Back to a blank device: no values, no script, no records, clock at
// kDefaultNow, UUID and random sequences restarted, no config, no files.
void reset();

// ---- device-information functions --------------------------------------
// Values are keyed by the function name without _get/_set ("sn", "mac",
// "deviceid", "channel_secret", "device_token", "uid", ...). A getter of a
// value that was never set fails with its own convention (non-zero or -1).
void setDeviceValue(const std::string& name, const std::string& value);
void clearDeviceValue(const std::string& name);
std::optional<std::string> deviceValue(const std::string& name);
// Forces the status the getter or setter of `name` returns (the buffer is
// still filled by a getter when a value is set). "sn_get", "uid_set", ...
void setStatus(const std::string& function, int status);
void clearStatus(const std::string& function);
// rssi_get() result.
void setRssi(int value);
// uid_isvalid_str() result (0 by default).
void setUidInvalid(int result);
// Calls made to setters and actions, in order: "deviceid_set(abc)",
// "bind_uid()", "dev_restore()", "uid_clean()".
const std::vector<std::string>& deviceCalls();
// Makes bind_uid(), dev_restore() and uid_clean() take `millis` each (outside
// the fake's own lock), and counts how often one of them started while
// another was still running: a test of the callers' locking.
void slowActions(int millis);
int overlappingActions();
// Makes str_hmac_sha256 return NULL.
void failHmac(bool fail);
// Byte strings handed out by str_hmac_sha256 and not yet destroyed.
int liveByteStrings();
// Files read with file_read_string, by device path; missing path = -1. A
// file written with FileUtils::writeAtomically is read back too.
void setFile(const std::string& path, const std::string& content);
// Files written with FileUtils::writeAtomically, by device path.
std::optional<std::string> writtenFile(const std::string& path);
void failFileWrites(bool fail);

// ---- configuration file -------------------------------------------------
void setConfig(const std::string& key, const std::string& value);
// Paths ConfigFile was opened with, in order.
const std::vector<std::string>& configOpens();

// ---- transport -----------------------------------------------------------
enum class Overload { Url, UrlWithDns, BaseAndPath, Form };

struct Call {
    Overload overload;
    std::string url;                                         // Url, UrlWithDns
    std::string baseUrl;                                     // BaseAndPath, Form
    std::string path;                                        // BaseAndPath, Form
    std::string params;                                      // encoded parameter string (not Form)
    std::map<std::string, std::vector<std::string>> fields;  // Form
    std::string method;
    std::vector<std::string> headers;
    int timeoutMs = 0;
    std::string cookie;      // Url, UrlWithDns
    std::string dnsServers;  // UrlWithDns
    // Parameters decoded back into a map (the last of a repeated key wins).
    std::map<std::string, std::string> decodedParams() const;
};

struct Answer {
    bool ok = true;
    int status = 200;
    std::string body;
    ErrorType error = utils::ERROR_NONE;
    std::string errorMessage;
};

// Queues an answer; calls consume answers in order. With the queue empty a
// call fails: false, status 0, no body, ERROR_HTTP_CONNECT, "no scripted
// answer". A bad method or a line break in the URL, cookie or a header line
// fails as on the host (ERROR_HTTP_INIT) without taking an answer.
void pushAnswer(const Answer& answer);
void pushBody(const std::string& body, int status = 200);
void pushFailure(ErrorType error = utils::ERROR_HTTP_CONNECT,
                 const std::string& message = "connection refused");
const std::vector<Call>& calls();

// ---- logging -------------------------------------------------------------
struct LogLine {
    int level;
    std::string file;
    int line;
    std::string text;  // without the end of line
};
const std::vector<LogLine>& logs();
// True when some captured line contains `text` (at `level` when >= 0).
bool logged(const std::string& text, int level = -1);
// True when some captured line is exactly `text` (at `level` when >= 0).
bool loggedExactly(const std::string& text, int level = -1);

// ---- exec ------------------------------------------------------------------
void pushExec(int status, const std::string& output);
// Commands run, in order. With nothing scripted exec returns 127 and "".
const std::vector<std::string>& execCommands();

// ---- clock, UUIDs and random bytes -------------------------------------------
constexpr long long kDefaultNow = 1700000000000LL;
void setNow(long long millis);
// UUIDs come as "00000000-0000-4000-8000-00000000000N" with N = 1, 2, ...
// (twelve hex digits) unless queued here; queued ones are used first.
void pushUuid(const std::string& uuid);
int uuidCount();
// Random bytes are 0, 1, 2, ... (mod 256) across all draws; sizes recorded.
const std::vector<unsigned>& randomDraws();

}  // namespace fake
}  // namespace velmar
