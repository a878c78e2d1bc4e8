// The HTTP(S) transport of the Linux port, on libcurl: the four overloads
// reduced to one request, its wire form, and its failures sorted by cause.
// Handles and what calls share are HandlePool's; the rules every connection
// follows (TLS trust, proxies, the clock) are ConnectionRules'.
#include <arpa/inet.h>
#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "ConnectionRules.h"
#include "FormEncoding.h"
#include "HandlePool.h"
#include "Resolver.h"
#include "velmar/http/HTTPRequest.h"

namespace velmar {
namespace http {

using detail::HandlePool;

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
// A caller that gives no time-out still must not block a daemon forever.
constexpr int kDefaultTimeoutMs = 30000;

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
    Call(HandlePool& runtime, const HandlePool::Lease& lease) : mRuntime(runtime), mLease(lease) {}
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
        if (next == nullptr) return false;  // GCOVR_EXCL_BR_LINE: allocation failure
        list = next;
        return true;
    }

    HandlePool& mRuntime;
    HandlePool::Lease mLease;
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
    const std::string unsendable = detail::refusal(x.method, x.url, x.cookie, *x.headers);
    if (!unsendable.empty()) return fail(error, errorMessage, ERROR_HTTP_INIT, unsendable);

    HandlePool& runtime = HandlePool::instance();
    // GCOVR_EXCL_START: libcurl's set-up and handles fail only without memory
    if (!runtime.ready()) {
        return fail(error, errorMessage, ERROR_HTTP_INIT, "libcurl could not be initialised");
    }
    // GCOVR_EXCL_STOP
    unsigned generation = 0;
    // Declared before the call: it lends libcurl what the transfer needs
    // until the handle is reset.
    detail::ConnectionRules rules;
    const std::vector<std::string> pins = runtime.pins(generation, rules.datesUnchecked());
    HandlePool::Lease lease = runtime.acquire(generation);
    // GCOVR_EXCL_START: libcurl's set-up and handles fail only without memory
    if (lease.handle == nullptr) {
        return fail(error, errorMessage, ERROR_HTTP_INIT, "no curl handle");
    }
    // GCOVR_EXCL_STOP
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

    // An append fails only without memory; the call then fails as a whole.
    bool listsOk = true;
    bool callerExpect = false;
    for (const auto& line : *x.headers) {
        if (line.empty()) continue;
        callerExpect |= startsWithNoCase(line, "Expect:");
        listsOk &= Call::append(call.mHeaders, line);
    }
    if (!x.cookie.empty()) listsOk &= Call::append(call.mHeaders, "Cookie: " + x.cookie);
    // No "Expect: 100-continue" round trip before a large form body.
    if (!inQuery && !callerExpect) listsOk &= Call::append(call.mHeaders, "Expect:");
    for (const auto& pin : pins)
        listsOk &= Call::append(call.mResolve, pin);
    if (!x.connectTo.empty()) listsOk &= Call::append(call.mConnectTo, x.connectTo);
    // GCOVR_EXCL_BR_START: allocation failure
    if (!listsOk) return fail(error, errorMessage, ERROR_HTTP_INIT, "out of memory");
    // GCOVR_EXCL_BR_STOP

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
    // GCOVR_EXCL_START: libcurl refuses none of these options
    if (set != CURLE_OK) {
        return fail(error, errorMessage, ERROR_HTTP_INIT, curl_easy_strerror(set));
    }
    // GCOVR_EXCL_STOP

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

    const char* set = std::getenv("VELMAR_DNS_SERVERS");
    const std::string override = set != nullptr ? set : "";
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
