// The HTTP(S) transport of the Linux port, on libcurl. One process-wide share
// keeps connections, DNS answers and TLS sessions between calls and threads;
// easy handles are pooled so a call costs no handle set-up.
#include <ares.h>
#include <arpa/inet.h>
#include <curl/curl.h>
#include <netdb.h>
#include <sys/select.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

#include "FormEncoding.h"
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

// Answers beyond this are refused instead of exhausting a small device's memory.
constexpr size_t kMaxAnswer = 8 * 1024 * 1024;
constexpr size_t kPooledHandles = 16;

class Share {
  public:
    static Share& instance() {
        static Share share;
        return share;
    }

    CURL* acquire() {
        {
            std::lock_guard<std::mutex> lock(mPoolMutex);
            if (!mPool.empty()) {
                CURL* handle = mPool.back();
                mPool.pop_back();
                return handle;
            }
        }
        return curl_easy_init();
    }

    void release(CURL* handle) {
        curl_easy_reset(handle);
        std::lock_guard<std::mutex> lock(mPoolMutex);
        if (mPool.size() < kPooledHandles) {
            mPool.push_back(handle);
            return;
        }
        curl_easy_cleanup(handle);
    }

    CURLSH* share() const { return mShare; }

  private:
    Share() {
        curl_global_init(CURL_GLOBAL_DEFAULT);
        ares_library_init(ARES_LIB_INIT_ALL);
        mShare = curl_share_init();
        if (mShare != nullptr) {
            curl_share_setopt(mShare, CURLSHOPT_LOCKFUNC, lock);
            curl_share_setopt(mShare, CURLSHOPT_UNLOCKFUNC, unlock);
            curl_share_setopt(mShare, CURLSHOPT_USERDATA, this);
            curl_share_setopt(mShare, CURLSHOPT_SHARE, CURL_LOCK_DATA_DNS);
            curl_share_setopt(mShare, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
            curl_share_setopt(mShare, CURLSHOPT_SHARE, CURL_LOCK_DATA_CONNECT);
        }
    }
    // At exit: the pooled handles and the share go, closing kept connections.
    ~Share() {
        for (CURL* handle : mPool)
            curl_easy_cleanup(handle);
        mPool.clear();
        if (mShare != nullptr) curl_share_cleanup(mShare);
        ares_library_cleanup();
        curl_global_cleanup();
    }

    static void lock(CURL*, curl_lock_data data, curl_lock_access, void* self) {
        static_cast<Share*>(self)->mLocks[data % CURL_LOCK_DATA_LAST].lock();
    }
    static void unlock(CURL*, curl_lock_data data, void* self) {
        static_cast<Share*>(self)->mLocks[data % CURL_LOCK_DATA_LAST].unlock();
    }

    CURLSH* mShare = nullptr;
    std::mutex mLocks[CURL_LOCK_DATA_LAST];
    std::mutex mPoolMutex;
    std::vector<CURL*> mPool;
};

struct Sink {
    std::string* body;
    bool tooLarge = false;
};

size_t writeBody(char* data, size_t size, size_t count, void* user) {
    Sink* sink = static_cast<Sink*>(user);
    size_t n = size * count;
    if (sink->body->size() + n > kMaxAnswer) {
        sink->tooLarge = true;
        return 0;  // aborts the transfer
    }
    sink->body->append(data, n);
    return n;
}

curl_slist* append(curl_slist* list, const std::string& line) {
    curl_slist* next = curl_slist_append(list, line.c_str());
    if (next == nullptr) curl_slist_free_all(list);
    return next;
}

std::vector<std::string> splitList(const char* text) {
    std::vector<std::string> out;
    if (text == nullptr) return out;
    std::string all = text;
    size_t start = 0;
    while (start <= all.size()) {
        size_t end = all.find(',', start);
        if (end == std::string::npos) end = all.size();
        if (end > start) out.push_back(all.substr(start, end - start));
        start = end + 1;
    }
    return out;
}

ErrorType classify(CURLcode code, bool tooLarge) {
    if (tooLarge) return ERROR_HTTP_TOO_LARGE;
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
            return ERROR_HTTP_TLS;
        case CURLE_URL_MALFORMAT:
        case CURLE_UNSUPPORTED_PROTOCOL:
            return ERROR_HTTP_INIT;
        default:
            return ERROR_HTTP_FAILED;
    }
}

struct Exchange {
    std::string url;
    std::string params;
    std::string method;
    const std::vector<std::string>* headers;
    std::string cookie;
    std::vector<std::string> pinned;  // extra "host:port:address" entries
    int timeoutMs;
};

bool perform(const Exchange& x, int& status, std::string& response, ErrorType& error,
             std::string& errorMessage) {
    Share& share = Share::instance();
    response.clear();
    status = 0;
    CURL* curl = share.acquire();
    if (curl == nullptr) {
        error = ERROR_HTTP_INIT;
        errorMessage = "curl_easy_init() failed";
        return false;
    }
    std::string url = x.url;
    const bool get = x.method == "GET";
    if (get && !x.params.empty()) {
        url += (url.find('?') == std::string::npos ? "?" : "&") + x.params;
    }
    curl_slist* headers = nullptr;
    bool listOk = true;
    for (const auto& line : *x.headers) {
        if (line.empty()) continue;
        if ((headers = append(headers, line)) == nullptr) listOk = false;
    }
    if (listOk && !x.cookie.empty()) {
        if ((headers = append(headers, "Cookie: " + x.cookie)) == nullptr) listOk = false;
    }
    curl_slist* resolve = nullptr;
    std::vector<std::string> pins = splitList(std::getenv("VELMAR_RESOLVE"));
    pins.insert(pins.end(), x.pinned.begin(), x.pinned.end());
    for (const auto& pin : pins) {
        if (listOk && (resolve = append(resolve, pin)) == nullptr) listOk = false;
    }

    char errorBuffer[CURL_ERROR_SIZE] = {};
    Sink sink{&response};
    curl_easy_setopt(curl, CURLOPT_SHARE, share.share());
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(x.timeoutMs));
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(x.timeoutMs));
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, errorBuffer);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, writeBody);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &sink);
    curl_easy_setopt(curl, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(kMaxAnswer));
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 2L);
    if (const char* ca = std::getenv("VELMAR_CA_FILE")) {
        if (ca[0] != '\0') {
            // Both are loaded: the extra bundle and the system store.
            curl_easy_setopt(curl, CURLOPT_CAINFO, ca);
            curl_easy_setopt(curl, CURLOPT_CAPATH, "/etc/ssl/certs");
        }
    }
    if (get) {
        curl_easy_setopt(curl, CURLOPT_HTTPGET, 1L);
    } else {
        curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE,
                         static_cast<curl_off_t>(x.params.size()));
        curl_easy_setopt(curl, CURLOPT_COPYPOSTFIELDS, x.params.c_str());
        if (x.method != "POST") curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, x.method.c_str());
    }
    if (headers != nullptr) curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
    if (resolve != nullptr) curl_easy_setopt(curl, CURLOPT_RESOLVE, resolve);

    CURLcode code = listOk ? curl_easy_perform(curl) : CURLE_OUT_OF_MEMORY;
    long httpStatus = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &httpStatus);
    status = static_cast<int>(httpStatus);
    share.release(curl);
    curl_slist_free_all(headers);
    curl_slist_free_all(resolve);

    if (code != CURLE_OK) {
        error = classify(code, sink.tooLarge);
        errorMessage = error == ERROR_HTTP_TOO_LARGE
                           ? "answer larger than " + std::to_string(kMaxAnswer) + " bytes refused"
                           : std::string(curl_easy_strerror(code)) +
                                 (errorBuffer[0] ? std::string(": ") + errorBuffer : std::string());
        response.clear();
        return false;
    }
    error = ERROR_NONE;
    errorMessage.clear();
    return true;
}

// ---- host resolution through a given resolver list (c-ares) ----------------

struct Lookup {
    bool done = false;
    int status = ARES_ETIMEOUT;
    std::string address;
};

void onHost(void* arg, int status, int, struct hostent* host) {
    Lookup* lookup = static_cast<Lookup*>(arg);
    lookup->done = true;
    lookup->status = status;
    if (status == ARES_SUCCESS && host != nullptr && host->h_addr_list[0] != nullptr) {
        char text[INET_ADDRSTRLEN];
        if (inet_ntop(AF_INET, host->h_addr_list[0], text, sizeof(text)) != nullptr) {
            lookup->address = text;
        }
    }
}

bool resolveWith(const std::string& host, const std::string& servers, int timeoutMs,
                 std::string& address, std::string& message) {
    ares_channel channel;
    ares_options options{};
    options.timeout = timeoutMs > 0 ? timeoutMs : 1000;
    options.tries = 1;
    if (ares_init_options(&channel, &options, ARES_OPT_TIMEOUTMS | ARES_OPT_TRIES) !=
        ARES_SUCCESS) {
        message = "resolver could not be set up";
        return false;
    }
    int rc = ares_set_servers_ports_csv(channel, servers.c_str());
    if (rc != ARES_SUCCESS) {
        ares_destroy(channel);
        message = std::string("bad resolver list \"") + servers + "\": " + ares_strerror(rc);
        return false;
    }
    Lookup lookup;
    ares_gethostbyname(channel, host.c_str(), AF_INET, onHost, &lookup);
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!lookup.done) {
        fd_set readers, writers;
        FD_ZERO(&readers);
        FD_ZERO(&writers);
        int nfds = ares_fds(channel, &readers, &writers);
        if (nfds == 0) break;
        auto left = std::chrono::duration_cast<std::chrono::microseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) break;
        timeval limit{static_cast<time_t>(left.count() / 1000000),
                      static_cast<suseconds_t>(left.count() % 1000000)};
        timeval wait;
        timeval* tv = ares_timeout(channel, &limit, &wait);
        select(nfds, &readers, &writers, nullptr, tv);
        ares_process(channel, &readers, &writers);
    }
    ares_destroy(channel);  // completes a pending lookup with ARES_EDESTRUCTION
    if (lookup.status != ARES_SUCCESS || lookup.address.empty()) {
        message = "could not resolve " + host + " through " + servers + ": " +
                  ares_strerror(lookup.status == ARES_EDESTRUCTION ? ARES_ETIMEOUT : lookup.status);
        return false;
    }
    address = lookup.address;
    return true;
}

}  // namespace

bool HTTPRequest::httpRequest(int& status, std::string& response, ErrorType& error,
                              std::string& errorMessage, const std::string& url,
                              const std::string& params, const std::string& method,
                              const std::vector<std::string>& headers, int timeoutMs,
                              const std::string& cookie) {
    Exchange x{url, params, method, &headers, cookie, {}, timeoutMs};
    return perform(x, status, response, error, errorMessage);
}

bool HTTPRequest::httpRequest(int& status, std::string& response, ErrorType& error,
                              std::string& errorMessage, const std::string& url,
                              const std::string& params, const std::string& method,
                              const std::vector<std::string>& headers, int timeoutMs,
                              const std::string& cookie, const std::string& dnsServers) {
    Share::instance();  // library initialisation, including c-ares
    Exchange x{url, params, method, &headers, cookie, {}, timeoutMs};
    CURLU* parsed = curl_url();
    char* host = nullptr;
    char* port = nullptr;
    bool ok = parsed != nullptr &&
              curl_url_set(parsed, CURLUPART_URL, url.c_str(), 0) == CURLUE_OK &&
              curl_url_get(parsed, CURLUPART_HOST, &host, 0) == CURLUE_OK &&
              curl_url_get(parsed, CURLUPART_PORT, &port, CURLU_DEFAULT_PORT) == CURLUE_OK;
    std::string hostName = host ? host : "";
    std::string portText = port ? port : "";
    curl_free(host);
    curl_free(port);
    curl_url_cleanup(parsed);
    if (!ok) {
        status = 0;
        error = ERROR_HTTP_INIT;
        errorMessage = "malformed URL: " + url;
        return false;
    }
    in_addr literal;
    if (inet_pton(AF_INET, hostName.c_str(), &literal) != 1 &&
        hostName.find(':') == std::string::npos && hostName.find('[') == std::string::npos) {
        const char* override = std::getenv("VELMAR_DNS_SERVERS");
        const std::string servers =
            override != nullptr && override[0] != '\0' ? override : dnsServers;
        std::string address;
        if (!resolveWith(hostName, servers, timeoutMs, address, errorMessage)) {
            status = 0;
            response.clear();
            error = ERROR_HTTP_RESOLVE;
            return false;
        }
        x.pinned.push_back(hostName + ":" + portText + ":" + address);
    }
    return perform(x, status, response, error, errorMessage);
}

bool HTTPRequest::httpRequest(int& status, std::string& response, ErrorType& error,
                              std::string& errorMessage, const std::string& baseUrl,
                              const std::string& path, const std::string& params,
                              const std::string& method, const std::vector<std::string>& headers,
                              int timeoutMs) {
    Exchange x{detail::joinUrl(baseUrl, path), params, method, &headers, "", {}, timeoutMs};
    return perform(x, status, response, error, errorMessage);
}

bool HTTPRequest::httpRequest(int& status, std::string& response, ErrorType& error,
                              std::string& errorMessage, const std::string& baseUrl,
                              const std::string& path,
                              const std::map<std::string, std::vector<std::string>>& fields,
                              const std::string& method, const std::vector<std::string>& headers,
                              int timeoutMs) {
    Exchange x{detail::joinUrl(baseUrl, path),
               detail::encodeFormFields(fields),
               method,
               &headers,
               "",
               {},
               timeoutMs};
    return perform(x, status, response, error, errorMessage);
}

}  // namespace http
}  // namespace velmar
