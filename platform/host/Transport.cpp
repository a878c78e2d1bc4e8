// The HTTP(S) transport of the Linux port, on libcurl.
//
// One process-wide share holds the DNS cache and the TLS sessions for every
// thread. Connections live in the easy handles, which are pooled: a call
// borrows a handle, so its open connections serve the next call, whichever
// thread makes it. (libcurl does not support one connection cache used by
// concurrent threads, which a shared connection cache would be.)
#include <arpa/inet.h>
#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <set>
#include <vector>

#include "ConnectionRules.h"
#include "FormEncoding.h"
#include "Resolver.h"
#include "velmar/http/HTTPRequest.h"

namespace velmar {
namespace http {

using utils::ERROR_HTTP_CONNECT;
using utils::ERROR_HTTP_FAILED;
using utils::ERROR_HTTP_INIT;
using utils::ERROR_HTTP_RESOLVE;
using utils::ERROR_HTTP_TIMEOUT;
using utils::ERROR_HTTP_TLS;
using utils::ERROR_HTTP_TOO_LARGE;
using utils::ERROR_NONE;

namespace {

using Clock = std::chrono::steady_clock;

// Answers beyond this are refused instead of exhausting a small device's memory.
constexpr size_t kMaxAnswerBytes = 8 * 1024 * 1024;
// Idle handles kept; more only exist while that many calls run at once.
constexpr size_t kPooledHandles = 8;
// A caller that gives no time-out still must not block a daemon forever.
constexpr int kDefaultTimeoutMs = 30000;

std::string envValue(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::vector<std::string> splitList(const std::string& text) {
    std::vector<std::string> out;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find(',', start);
        if (end == std::string::npos) end = text.size();
        std::string item = text.substr(start, end - start);
        size_t first = item.find_first_not_of(" \t");
        size_t last = item.find_last_not_of(" \t");
        if (first != std::string::npos) out.push_back(item.substr(first, last - first + 1));
        start = end + 1;
    }
    return out;
}

// "host:port" of a curl --resolve entry ("+host:port:addr" included), lower case.
std::string resolveKey(const std::string& entry) {
    std::string text = !entry.empty() && entry[0] == '+' ? entry.substr(1) : entry;
    size_t first = text.find(':');
    if (first == std::string::npos) return "";
    size_t second = text.find(':', first + 1);
    std::string key = text.substr(0, second);
    std::transform(key.begin(), key.end(), key.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return key;
}

class Runtime {
  public:
    // Never destroyed: daemons may still be making calls from other threads
    // while the process exits.
    static Runtime& instance() {
        static Runtime* runtime = new Runtime;
        return *runtime;
    }

    bool ready() const { return mShare != nullptr; }

    // A handle and the generation of the pins and clock state it was made under.
    struct Lease {
        CURL* handle = nullptr;
        unsigned generation = 0;
    };

    Lease acquire(unsigned generation) {
        std::vector<CURL*> stale;
        Lease lease;
        {
            std::lock_guard<std::mutex> lock(mPoolMutex);
            while (!mPool.empty() && lease.handle == nullptr) {
                Lease candidate = mPool.back();
                mPool.pop_back();
                if (candidate.generation == generation) {
                    lease = candidate;
                } else {
                    stale.push_back(candidate.handle);
                }
            }
        }
        for (CURL* handle : stale)
            curl_easy_cleanup(handle);
        if (lease.handle == nullptr) {
            lease.handle = curl_easy_init();
            lease.generation = generation;
            if (lease.handle != nullptr &&
                curl_easy_setopt(lease.handle, CURLOPT_SHARE, mShare) != CURLE_OK) {
                curl_easy_cleanup(lease.handle);
                lease.handle = nullptr;
            }
        }
        return lease;
    }

    void release(const Lease& lease) {
        // Reset keeps the handle's connections, caches and share, drops the
        // options that point into the finished call.
        curl_easy_reset(lease.handle);
        {
            std::lock_guard<std::mutex> lock(mPoolMutex);
            if (lease.generation == mGeneration && mPool.size() < kPooledHandles) {
                mPool.push_back(lease);
                return;
            }
        }
        curl_easy_cleanup(lease.handle);
    }

    // The --resolve entries for this call: $VELMAR_RESOLVE, plus removals of
    // pins an earlier value set, since the shared DNS cache keeps them. A
    // changed value also retires the pooled handles, whose open connections
    // were made to the old addresses; so does a change of the clock state
    // (`datesUnchecked`), since a connection whose certificate dates went
    // unchecked must not serve a call once the clock is right.
    std::vector<std::string> pins(unsigned& generation, bool datesUnchecked) {
        const std::string text = envValue("VELMAR_RESOLVE");
        std::vector<std::string> entries = splitList(text);
        std::lock_guard<std::mutex> lock(mPoolMutex);
        if (datesUnchecked != mDatesUnchecked) {
            mDatesUnchecked = datesUnchecked;
            ++mGeneration;
        }
        if (text != mResolveText) {
            mResolveText = text;
            ++mGeneration;
            std::set<std::string> current;
            for (const auto& entry : entries) {
                if (entry[0] != '-') current.insert(resolveKey(entry));
            }
            for (const auto& key : mPinned) {
                if (!key.empty() && current.count(key) == 0) mUnpinned.insert(key);
            }
            for (const auto& key : current)
                mUnpinned.erase(key);
            mPinned = current;
        }
        for (const auto& key : mUnpinned)
            entries.push_back("-" + key);
        generation = mGeneration;
        return entries;
    }

  private:
    Runtime() {
        if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) return;
        CURLSH* share = curl_share_init();
        if (share == nullptr) return;
        if (curl_share_setopt(share, CURLSHOPT_LOCKFUNC, lock) != CURLSHE_OK ||
            curl_share_setopt(share, CURLSHOPT_UNLOCKFUNC, unlock) != CURLSHE_OK ||
            curl_share_setopt(share, CURLSHOPT_USERDATA, this) != CURLSHE_OK ||
            curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_DNS) != CURLSHE_OK ||
            curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION) != CURLSHE_OK) {
            curl_share_cleanup(share);
            return;
        }
        mShare = share;
    }

    static std::mutex& lockFor(void* self, curl_lock_data data) {
        const int index = data >= 0 && data < CURL_LOCK_DATA_LAST ? data : CURL_LOCK_DATA_NONE;
        return static_cast<Runtime*>(self)->mLocks[index];
    }
    static void lock(CURL*, curl_lock_data data, curl_lock_access, void* self) {
        lockFor(self, data).lock();
    }
    static void unlock(CURL*, curl_lock_data data, void* self) { lockFor(self, data).unlock(); }

    CURLSH* mShare = nullptr;
    std::mutex mLocks[CURL_LOCK_DATA_LAST];

    std::mutex mPoolMutex;
    std::vector<Lease> mPool;
    unsigned mGeneration = 0;
    std::string mResolveText;
    std::set<std::string> mPinned;
    std::set<std::string> mUnpinned;
    bool mDatesUnchecked = false;
};

// One call's request, in the form all four overloads reduce to.
struct Exchange {
    std::string url;
    std::string params;
    std::string method;
    const std::vector<std::string>* headers = nullptr;
    std::string cookie;
    std::string connectTo;  // "host:port:address:" pin of this call only
    int timeoutMs = 0;
};

struct Sink {
    std::string* body;
    bool tooLarge = false;
};

size_t writeBody(char* data, size_t size, size_t count, void* user) {
    Sink* sink = static_cast<Sink*>(user);
    const size_t n = size * count;
    if (n > kMaxAnswerBytes - sink->body->size()) {
        sink->tooLarge = true;
        return 0;  // aborts the transfer
    }
    sink->body->append(data, n);
    return n;
}

bool isToken(const std::string& text) {
    if (text.empty()) return false;
    for (unsigned char c : text) {
        if (!std::isalnum(c) && std::strchr("!#$%&'*+-.^_`|~", c) == nullptr) return false;
    }
    return true;
}

bool hasLineBreak(const std::string& text) {
    return text.find_first_of("\r\n") != std::string::npos;
}

bool startsWithNoCase(const std::string& text, const char* prefix) {
    const size_t n = std::strlen(prefix);
    return text.size() >= n && strncasecmp(text.c_str(), prefix, n) == 0;
}

ErrorType classify(CURLcode code) {
    switch (code) {
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_RESOLVE_PROXY:
            return ERROR_HTTP_RESOLVE;
        case CURLE_COULDNT_CONNECT:
            return ERROR_HTTP_CONNECT;
        case CURLE_OPERATION_TIMEDOUT:
            return ERROR_HTTP_TIMEOUT;
        case CURLE_FILESIZE_EXCEEDED:
            return ERROR_HTTP_TOO_LARGE;
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_PEER_FAILED_VERIFICATION:
        case CURLE_SSL_CACERT_BADFILE:
        case CURLE_SSL_CERTPROBLEM:
        case CURLE_SSL_CIPHER:
        case CURLE_SSL_ISSUER_ERROR:
        case CURLE_SSL_ENGINE_NOTFOUND:
        case CURLE_SSL_ENGINE_SETFAILED:
        case CURLE_SSL_ENGINE_INITFAILED:
        case CURLE_SSL_CRL_BADFILE:
        case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
        case CURLE_SSL_INVALIDCERTSTATUS:
        case CURLE_USE_SSL_FAILED:
            return ERROR_HTTP_TLS;
        case CURLE_FAILED_INIT:
        case CURLE_URL_MALFORMAT:
        case CURLE_UNSUPPORTED_PROTOCOL:
        case CURLE_BAD_FUNCTION_ARGUMENT:
        case CURLE_SETOPT_OPTION_SYNTAX:
        case CURLE_OUT_OF_MEMORY:
            return ERROR_HTTP_INIT;
        default:
            return ERROR_HTTP_FAILED;
    }
}

const char* whatFailed(ErrorType error) {
    switch (error) {
        case ERROR_HTTP_INIT:
            return "request could not be set up";
        case ERROR_HTTP_RESOLVE:
            return "host name not resolved";
        case ERROR_HTTP_CONNECT:
            return "no connection";
        case ERROR_HTTP_TIMEOUT:
            return "timed out";
        case ERROR_HTTP_TLS:
            return "TLS failed";
        default:
            return "transfer failed";
    }
}

bool fail(ErrorType& error, std::string& errorMessage, ErrorType type, const std::string& text) {
    error = type;
    errorMessage = std::string(whatFailed(type)) + ": " + text;
    return false;
}

// Owns what a call hands to curl by pointer, released in the right order.
class Call {
  public:
    Call(Runtime& runtime, const Runtime::Lease& lease) : mRuntime(runtime), mLease(lease) {}
    ~Call() {
        mRuntime.release(mLease);
        curl_slist_free_all(mHeaders);
        curl_slist_free_all(mResolve);
        curl_slist_free_all(mConnectTo);
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    CURL* handle() const { return mLease.handle; }
    static bool append(curl_slist*& list, const std::string& line) {
        curl_slist* next = curl_slist_append(list, line.c_str());
        if (next == nullptr) return false;
        list = next;
        return true;
    }

    Runtime& mRuntime;
    Runtime::Lease mLease;
    curl_slist* mHeaders = nullptr;
    curl_slist* mResolve = nullptr;
    curl_slist* mConnectTo = nullptr;
};

bool perform(const Exchange& x, int& status, std::string& response, ErrorType& error,
             std::string& errorMessage) {
    status = 0;
    response.clear();
    error = ERROR_NONE;
    errorMessage.clear();

    std::string method = x.method;
    std::transform(method.begin(), method.end(), method.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    if (!isToken(method)) {
        return fail(error, errorMessage, ERROR_HTTP_INIT, "bad method \"" + x.method + "\"");
    }
    if (hasLineBreak(x.url) || hasLineBreak(x.cookie)) {
        return fail(error, errorMessage, ERROR_HTTP_INIT, "line break in URL or cookie");
    }
    for (const auto& line : *x.headers) {
        if (hasLineBreak(line)) {
            return fail(error, errorMessage, ERROR_HTTP_INIT, "line break in a header line");
        }
    }

    Runtime& runtime = Runtime::instance();
    if (!runtime.ready()) {
        return fail(error, errorMessage, ERROR_HTTP_INIT, "libcurl could not be initialised");
    }
    unsigned generation = 0;
    // Declared before the call: it lends libcurl what the transfer needs
    // until the handle is reset.
    detail::ConnectionRules rules;
    const std::vector<std::string> pins = runtime.pins(generation, rules.datesUnchecked());
    Runtime::Lease lease = runtime.acquire(generation);
    if (lease.handle == nullptr) {
        return fail(error, errorMessage, ERROR_HTTP_INIT, "no curl handle");
    }
    Call call(runtime, lease);
    CURL* curl = call.handle();

    // GET and HEAD carry the parameters in the query, every other method in the body.
    const bool inQuery = method == "GET" || method == "HEAD";
    std::string url = x.url;
    if (inQuery && !x.params.empty()) {
        if (url.find('?') == std::string::npos) {
            url += '?';
        } else if (url.back() != '?' && url.back() != '&') {
            url += '&';
        }
        url += x.params;
    }

    bool listsOk = true;
    bool callerExpect = false;
    for (const auto& line : *x.headers) {
        if (line.empty()) continue;
        callerExpect = callerExpect || startsWithNoCase(line, "Expect:");
        listsOk = listsOk && Call::append(call.mHeaders, line);
    }
    if (!x.cookie.empty()) listsOk = listsOk && Call::append(call.mHeaders, "Cookie: " + x.cookie);
    // No "Expect: 100-continue" round trip before a large form body.
    if (!inQuery && !callerExpect) listsOk = listsOk && Call::append(call.mHeaders, "Expect:");
    for (const auto& pin : pins)
        listsOk = listsOk && Call::append(call.mResolve, pin);
    if (!x.connectTo.empty()) listsOk = listsOk && Call::append(call.mConnectTo, x.connectTo);
    if (!listsOk) return fail(error, errorMessage, ERROR_HTTP_INIT, "out of memory");

    const long timeoutMs = x.timeoutMs > 0 ? x.timeoutMs : kDefaultTimeoutMs;
    char errorBuffer[CURL_ERROR_SIZE] = {};
    Sink sink{&response};
    CURLcode set = CURLE_OK;
    auto option = [&set](CURLcode code) {
        if (set == CURLE_OK) set = code;
    };
    option(curl_easy_setopt(curl, CURLOPT_URL, url.c_str()));
    option(curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L));
    option(curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, timeoutMs));
    option(curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, timeoutMs));
    option(curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, errorBuffer));
    option(curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, writeBody));
    option(curl_easy_setopt(curl, CURLOPT_WRITEDATA, &sink));
    option(curl_easy_setopt(curl, CURLOPT_MAXFILESIZE_LARGE,
                            static_cast<curl_off_t>(kMaxAnswerBytes)));
    std::string refused;
    const CURLcode ruled = rules.apply(curl, url, refused);
    if (ruled == CURLE_SSL_CACERT_BADFILE) {
        return fail(error, errorMessage, ERROR_HTTP_TLS, refused);
    }
    if (ruled != CURLE_OK) return fail(error, errorMessage, ERROR_HTTP_INIT, refused);
    if (method == "GET") {
        option(curl_easy_setopt(curl, CURLOPT_HTTPGET, 1L));
    } else if (method == "HEAD") {
        option(curl_easy_setopt(curl, CURLOPT_NOBODY, 1L));
    } else {
        option(curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE,
                                static_cast<curl_off_t>(x.params.size())));
        option(curl_easy_setopt(curl, CURLOPT_POSTFIELDS, x.params.c_str()));
        if (method != "POST") option(curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, method.c_str()));
    }
    if (call.mHeaders != nullptr) option(curl_easy_setopt(curl, CURLOPT_HTTPHEADER, call.mHeaders));
    if (call.mResolve != nullptr) option(curl_easy_setopt(curl, CURLOPT_RESOLVE, call.mResolve));
    if (call.mConnectTo != nullptr) {
        option(curl_easy_setopt(curl, CURLOPT_CONNECT_TO, call.mConnectTo));
    }
    if (set != CURLE_OK) {
        return fail(error, errorMessage, ERROR_HTTP_INIT, curl_easy_strerror(set));
    }

    const CURLcode code = curl_easy_perform(curl);
    long httpStatus = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &httpStatus);
    status = static_cast<int>(httpStatus);
    if (code == CURLE_OK) return true;

    response.clear();
    if (sink.tooLarge || code == CURLE_FILESIZE_EXCEEDED) {
        error = ERROR_HTTP_TOO_LARGE;
        errorMessage = "answer refused: larger than " + std::to_string(kMaxAnswerBytes) + " bytes";
        return false;
    }
    const ErrorType type = classify(code);
    std::string text = errorBuffer[0] != '\0' ? errorBuffer : curl_easy_strerror(code);
    if (type == ERROR_HTTP_TIMEOUT) {
        text = "no complete answer within " + std::to_string(timeoutMs) + " ms (" + text + ")";
    }
    return fail(error, errorMessage, type, text);
}

// The URL's host and effective port; false when the URL cannot be parsed.
bool hostAndPort(const std::string& url, std::string& host, std::string& port) {
    CURLU* parsed = curl_url();
    if (parsed == nullptr) return false;
    char* hostText = nullptr;
    char* portText = nullptr;
    const bool ok =
        curl_url_set(parsed, CURLUPART_URL, url.c_str(), CURLU_DEFAULT_SCHEME) == CURLUE_OK &&
        curl_url_get(parsed, CURLUPART_HOST, &hostText, 0) == CURLUE_OK &&
        curl_url_get(parsed, CURLUPART_PORT, &portText, CURLU_DEFAULT_PORT) == CURLUE_OK;
    if (ok) {
        host = hostText;
        port = portText;
    }
    curl_free(hostText);
    curl_free(portText);
    curl_url_cleanup(parsed);
    return ok;
}

bool isAddressLiteral(std::string host) {
    if (host.size() >= 2 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
    }
    unsigned char address[sizeof(in6_addr)];
    return inet_pton(AF_INET, host.c_str(), address) == 1 ||
           inet_pton(AF_INET6, host.c_str(), address) == 1;
}

}  // namespace

bool HTTPRequest::httpRequest(int& status, std::string& response, ErrorType& error,
                              std::string& errorMessage, const std::string& url,
                              const std::string& params, const std::string& method,
                              const std::vector<std::string>& headers, int timeoutMs,
                              const std::string& cookie) {
    Exchange x;
    x.url = url;
    x.params = params;
    x.method = method;
    x.headers = &headers;
    x.cookie = cookie;
    x.timeoutMs = timeoutMs;
    return perform(x, status, response, error, errorMessage);
}

bool HTTPRequest::httpRequest(int& status, std::string& response, ErrorType& error,
                              std::string& errorMessage, const std::string& url,
                              const std::string& params, const std::string& method,
                              const std::vector<std::string>& headers, int timeoutMs,
                              const std::string& cookie, const std::string& dnsServers) {
    Exchange x;
    x.url = url;
    x.params = params;
    x.method = method;
    x.headers = &headers;
    x.cookie = cookie;
    x.timeoutMs = timeoutMs > 0 ? timeoutMs : kDefaultTimeoutMs;

    const std::string override = envValue("VELMAR_DNS_SERVERS");
    const std::string servers = override.empty() ? dnsServers : override;
    std::string host;
    std::string port;
    if (!servers.empty()) {
        if (!hostAndPort(url, host, port)) {
            status = 0;
            response.clear();
            return fail(error, errorMessage, ERROR_HTTP_INIT, "malformed URL \"" + url + "\"");
        }
    }
    // With no list at all the system resolver is the only one left.
    if (!servers.empty() && !isAddressLiteral(host)) {
        const auto start = Clock::now();
        std::string address;
        std::string reason;
        if (!detail::resolveIPv4(host, servers, start + std::chrono::milliseconds(x.timeoutMs),
                                 address, reason)) {
            status = 0;
            response.clear();
            error = ERROR_HTTP_RESOLVE;
            errorMessage = "host name not resolved: " + reason;
            return false;
        }
        // Connect-to rather than a --resolve entry: the answer must not outlive
        // this call in the shared DNS cache.
        x.connectTo = host + ":" + port + ":" + address + ":";
        const auto spent =
            std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
        x.timeoutMs = static_cast<int>(std::max<long long>(1, x.timeoutMs - spent));
    }
    return perform(x, status, response, error, errorMessage);
}

bool HTTPRequest::httpRequest(int& status, std::string& response, ErrorType& error,
                              std::string& errorMessage, const std::string& baseUrl,
                              const std::string& path, const std::string& params,
                              const std::string& method, const std::vector<std::string>& headers,
                              int timeoutMs) {
    Exchange x;
    x.url = detail::joinUrl(baseUrl, path);
    x.params = params;
    x.method = method;
    x.headers = &headers;
    x.timeoutMs = timeoutMs;
    return perform(x, status, response, error, errorMessage);
}

bool HTTPRequest::httpRequest(int& status, std::string& response, ErrorType& error,
                              std::string& errorMessage, const std::string& baseUrl,
                              const std::string& path,
                              const std::map<std::string, std::vector<std::string>>& fields,
                              const std::string& method, const std::vector<std::string>& headers,
                              int timeoutMs) {
    Exchange x;
    x.url = detail::joinUrl(baseUrl, path);
    x.params = detail::encodeFormFields(fields);
    x.method = method;
    x.headers = &headers;
    x.timeoutMs = timeoutMs;
    return perform(x, status, response, error, errorMessage);
}

}  // namespace http
}  // namespace velmar
