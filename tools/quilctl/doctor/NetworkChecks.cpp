// The checks that reach the network: each configured host:port once (name,
// connection, TLS, HTTP answer), the time service's answer taken from the
// same contact, and one signed call with the device's credentials.
#include <curl/curl.h>
#include <openssl/bio.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>
#include <rapidjson/document.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

#include "Checks.h"
#include "host/ConnectionRules.h"
#include "velmar/quil/api/PresenceAPI.h"

namespace quilctl {
namespace doctor {

namespace {

// Bound on an answer kept: the time service's is a few dozen bytes.
constexpr size_t kMaxBodyBytes = 64 * 1024;

struct Target {
    std::string scheme, host, port, url;
    bool servesTime = false;
};

bool parseTarget(const std::string& url, Target& target) {
    std::unique_ptr<CURLU, void (*)(CURLU*)> parsed(curl_url(), curl_url_cleanup);
    if (!parsed || curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK)
        return false;
    auto part = [&parsed](CURLUPart which, unsigned flags) {
        char* text = nullptr;
        std::string value;
        if (curl_url_get(parsed.get(), which, &text, flags) == CURLUE_OK && text != nullptr)
            value = text;
        curl_free(text);
        return value;
    };
    target.scheme = part(CURLUPART_SCHEME, 0);
    target.host = part(CURLUPART_HOST, 0);
    target.port = part(CURLUPART_PORT, CURLU_DEFAULT_PORT);
    target.url = url;
    return !target.host.empty();
}

struct Probe {
    CURL* curl = nullptr;
    std::string body;
    std::string protocol;
    std::unique_ptr<X509, void (*)(X509*)> leaf{nullptr, X509_free};
};

size_t keepBody(char* data, size_t size, size_t count, void* user) {
    Probe* probe = static_cast<Probe*>(user);
    const size_t n = size * count;
    probe->body.append(data,
                       std::min(n, kMaxBodyBytes - std::min(kMaxBodyBytes, probe->body.size())));
    return n;
}

// The TLS session lives only during the transfer: its protocol is read as
// the first header line arrives.
size_t noteHeader(char*, size_t size, size_t count, void* user) {
    Probe* probe = static_cast<Probe*>(user);
    curl_tlssessioninfo* tls = nullptr;
    if (probe->protocol.empty() &&
        curl_easy_getinfo(probe->curl, CURLINFO_TLS_SSL_PTR, &tls) == CURLE_OK && tls != nullptr &&
        tls->backend == CURLSSLBACKEND_OPENSSL && tls->internals != nullptr)
        probe->protocol = SSL_get_version(static_cast<SSL*>(tls->internals));
    return size * count;
}

struct CurlHandle {
    CURL* curl = curl_easy_init();
    curl_slist* pins = nullptr;
    ~CurlHandle() {
        curl_slist_free_all(pins);
        if (curl != nullptr) curl_easy_cleanup(curl);
    }
};

// VELMAR_RESOLVE as the transport applies it: "host:port:address[,...]".
std::string pinFor(const Target& target, curl_slist*& list) {
    const char* env = std::getenv("VELMAR_RESOLVE");
    std::string text = env != nullptr ? env : "";
    std::string pinned;
    size_t start = 0;
    while (start <= text.size()) {
        size_t comma = text.find(',', start);
        if (comma == std::string::npos) comma = text.size();
        std::string entry = text.substr(start, comma - start);
        entry.erase(0, entry.find_first_not_of(' '));
        if (!entry.empty()) {
            list = curl_slist_append(list, entry.c_str());
            const std::string prefix = target.host + ":" + target.port + ":";
            if (entry.compare(0, prefix.size(), prefix) == 0) pinned = entry.substr(prefix.size());
        }
        start = comma + 1;
    }
    return pinned;
}

unsigned long long be(const unsigned char* bytes, size_t n) {
    unsigned long long value = 0;
    for (size_t i = 0; i < n; ++i)
        value = value << 8 | bytes[i];
    return value;
}

// The server's certificate, taken from its TLS Certificate message as the
// handshake reads it: a failed verification ends the handshake before
// libcurl would report the certificate, and this leaves verification as the
// connection rules set it.
int noteHandshake(CURL*, curl_infotype type, char* data, size_t size, void* user) {
    Probe* probe = static_cast<Probe*>(user);
    const unsigned char* m = reinterpret_cast<const unsigned char*>(data);
    if (type != CURLINFO_SSL_DATA_IN || probe->leaf || size < 10 || m[0] != 11) return 0;
    const size_t length = std::min<size_t>(be(m + 1, 3), size - 4);
    // TLS 1.3 puts a request context before the list; TLS 1.2 has none.
    size_t at = 4;
    if (be(m + 4, 3) != length - 3) {
        at += 1 + m[4];
        if (at + 3 > size || be(m + at, 3) != length - (at - 4) - 3) return 0;
    }
    at += 3;
    if (at + 3 > size) return 0;
    const size_t certificate = be(m + at, 3);
    at += 3;
    if (at + certificate > size) return 0;
    const unsigned char* der = m + at;
    probe->leaf.reset(d2i_X509(nullptr, &der, static_cast<long>(certificate)));
    return 0;
}

std::string nameText(X509_NAME* name) {
    char buffer[256] = "";
    X509_NAME_oneline(name, buffer, sizeof(buffer));
    return buffer;
}

std::string timeText(const ASN1_TIME* time) {
    std::unique_ptr<BIO, int (*)(BIO*)> bio(BIO_new(BIO_s_mem()), BIO_free);
    if (!bio || ASN1_TIME_print(bio.get(), time) != 1) return "?";
    char* text = nullptr;
    const long n = BIO_get_mem_data(bio.get(), &text);
    return std::string(text, static_cast<size_t>(n));
}

// Subject, issuer and validity dates of the server's certificate.
std::string certificateText(X509* leaf) {
    if (leaf == nullptr) return "no certificate seen";
    return "subject " + nameText(X509_get_subject_name(leaf)) + "; issuer " +
           nameText(X509_get_issuer_name(leaf)) + "; valid " + timeText(X509_get0_notBefore(leaf)) +
           " to " + timeText(X509_get0_notAfter(leaf));
}

long long remainingMs(std::chrono::steady_clock::time_point deadline) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(deadline -
                                                                 std::chrono::steady_clock::now())
        .count();
}

// The time service's answer {"code":0,"data":{"t":MILLISECONDS}}; -1 when unusable.
long long serviceTime(const std::string& body) {
    rapidjson::Document doc;
    doc.Parse(body.c_str());
    if (doc.HasParseError() || !doc.IsObject() || !doc.HasMember("data") ||
        !doc["data"].IsObject() || !doc["data"].HasMember("t") || !doc["data"]["t"].IsInt64())
        return -1;
    const long long t = doc["data"]["t"].GetInt64();
    return t < 100000000000LL ? t * 1000 : t;  // seconds or milliseconds
}

void probeTarget(Report& report, const Target& target, long long timeoutMs, NetworkResult& result,
                 bool& reachable) {
    const std::string name = target.host + ":" + target.port;
    const bool https = target.scheme == "https";
    CurlHandle handle;
    Probe probe;
    velmar::http::detail::ConnectionRules rules;
    std::string error;
    if (handle.curl == nullptr) {
        report.fail(name, "libcurl could not start", "internal", "retry");
        return;
    }
    CURL* curl = handle.curl;
    probe.curl = curl;
    const CURLcode applied = rules.apply(curl, target.url, error);
    if (applied != CURLE_OK) {
        report.fail(name + " tls", error, "ca-file-unreadable",
                    "point VELMAR_CA_FILE at a readable PEM bundle, or unset it");
        return;
    }
    const std::string pinned = pinFor(target, handle.pins);
    curl_easy_setopt(curl, CURLOPT_URL, target.url.c_str());
    curl_easy_setopt(curl, CURLOPT_RESOLVE, handle.pins);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_FRESH_CONNECT, 1L);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(timeoutMs));
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(timeoutMs));
    curl_easy_setopt(curl, CURLOPT_DEBUGFUNCTION, noteHandshake);
    curl_easy_setopt(curl, CURLOPT_DEBUGDATA, &probe);
    curl_easy_setopt(curl, CURLOPT_VERBOSE, https ? 1L : 0L);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, keepBody);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &probe);
    curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, noteHeader);
    curl_easy_setopt(curl, CURLOPT_HEADERDATA, &probe);
    const CURLcode code = curl_easy_perform(curl);

    char* ip = nullptr;
    curl_easy_getinfo(curl, CURLINFO_PRIMARY_IP, &ip);
    const std::string address = ip != nullptr ? ip : "";
    if (code == CURLE_COULDNT_RESOLVE_PROXY) {
        report.fail(name + " proxy", "the proxy VELMAR_PROXY names does not resolve",
                    "proxy-unreachable", "correct or unset VELMAR_PROXY");
        return;
    }
    if (code == CURLE_COULDNT_RESOLVE_HOST) {
        report.fail(name + " name", target.host + " does not resolve", "name-unresolved",
                    "check the host name in the configuration and the device's DNS servers");
        return;
    }
    // No address is known when the connection failed: the pin or the literal tells it.
    const std::string found = !address.empty() ? address : !pinned.empty() ? pinned : target.host;
    const char* proxy = std::getenv("VELMAR_PROXY");
    report.ok(name + " name", found + (pinned.empty() ? "" : " (VELMAR_RESOLVE)") +
                                  (proxy != nullptr && *proxy != '\0' ? " (the proxy's)" : ""));
    double connectSeconds = 0;
    curl_easy_getinfo(curl, CURLINFO_CONNECT_TIME, &connectSeconds);
    if (code == CURLE_COULDNT_CONNECT ||
        (code == CURLE_OPERATION_TIMEDOUT && connectSeconds <= 0)) {
        report.fail(
            name + " connect", curl_easy_strerror(code), "port-unanswered",
            "check that the service listens on " + target.port + " and that no firewall drops it");
        return;
    }
    report.ok(name + " connect",
              std::to_string(static_cast<long long>(connectSeconds * 1000)) + " ms");
    if (https) {
        long verify = 0;
        curl_easy_getinfo(curl, CURLINFO_SSL_VERIFYRESULT, &verify);
        const std::string certificate = certificateText(probe.leaf.get());
        if (code == CURLE_PEER_FAILED_VERIFICATION) {
            const std::string why = X509_verify_cert_error_string(verify);
            if (verify == X509_V_ERR_CERT_NOT_YET_VALID)
                report.fail(name + " tls", why + "; " + certificate, "certificate-not-yet-valid",
                            "check the clock, then the certificate's start date");
            else if (verify == X509_V_ERR_CERT_HAS_EXPIRED)
                report.fail(name + " tls", why + "; " + certificate, "certificate-expired",
                            "renew the service's certificate, or check the clock");
            else
                report.fail(name + " tls", why + "; " + certificate, "certificate-untrusted",
                            "install the issuing CA in the system store or VELMAR_CA_FILE");
            return;
        }
        double handshakeSeconds = 0;
        curl_easy_getinfo(curl, CURLINFO_APPCONNECT_TIME, &handshakeSeconds);
        if (code != CURLE_OK && handshakeSeconds <= 0) {
            report.fail(name + " tls", curl_easy_strerror(code), "tls-failed",
                        "check that the port speaks TLS and the CA bundle");
            return;
        }
        report.ok(name + " tls",
                  (probe.protocol.empty() ? std::string("TLS") : probe.protocol) +
                      (rules.datesUnchecked() ? ", verified but for dates; " : ", verified; ") +
                      certificate);
    }
    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    if (code != CURLE_OK || status == 0) {
        report.fail(name + " http", curl_easy_strerror(code), "no-http-answer",
                    "check the service behind " + name);
        return;
    }
    reachable = true;
    if (status >= 500)
        report.warn(name + " http", "HTTP " + std::to_string(status), "http-server-error",
                    "the service is up but failing; retry later");
    else
        report.ok(name + " http", "HTTP " + std::to_string(status) + " from " + target.url);
    if (target.servesTime) {
        result.serverMillis = status == 200 ? serviceTime(probe.body) : -1;
        result.timeWhy =
            "the time service answered HTTP " + std::to_string(status) + " without a usable time";
    }
}

}  // namespace

void checkNetwork(Report& report, const ServiceUrls& urls, const Options& options,
                  std::chrono::steady_clock::time_point deadline, NetworkResult& result) {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    // One contact per host:port: the time service's URL where it is one of
    // them (its answer sets the clock finding), else the first URL of the host.
    std::vector<Target> targets;
    auto timeUrl = urls.find("sTimeSyncURL");
    std::string apiName;
    for (const auto& [key, url] : urls) {
        Target target;
        if (!parseTarget(url, target)) continue;
        if (key == "sQuilAPIURL") apiName = target.host + ":" + target.port;
        auto same = std::find_if(targets.begin(), targets.end(), [&target](const Target& t) {
            return t.host == target.host && t.port == target.port;
        });
        const bool isTime = key == "sTimeSyncURL";
        if (same == targets.end()) {
            target.servesTime = isTime;
            targets.push_back(target);
        } else if (isTime) {
            same->url = url;
            same->servesTime = true;
        }
    }
    if (timeUrl != urls.end()) result.timeWhy = "the time service's host was not reached";
    for (const auto& target : targets) {
        const long long left = remainingMs(deadline);
        const std::string name = target.host + ":" + target.port;
        if (left < 500) {
            report.warn(name, "not checked", "run-time-spent", "run the doctor again");
            continue;
        }
        bool reachable = false;
        probeTarget(report, target, std::min(options.stepTimeoutMs, left), result, reachable);
        if (name == apiName) result.apiReachable = reachable;
    }
}

void checkCredentials(Report& report, const ServiceUrls& urls, const NetworkResult& network) {
    auto api = urls.find("sQuilAPIURL");
    if (api == urls.end() || !network.apiReachable) {
        report.warn("presence", "not tried: the device cloud service is not reachable",
                    "presence-not-tried", "fix the findings above first");
        return;
    }
    std::string response;
    const auto status = velmar::quil::api::PresenceAPI::getPresence(response, api->second);
    rapidjson::Document doc;
    doc.Parse(response.c_str());
    long long code = -1;
    std::string message;
    if (!doc.HasParseError() && doc.IsObject()) {
        if (doc.HasMember("code") && doc["code"].IsInt64()) code = doc["code"].GetInt64();
        if (doc.HasMember("message") && doc["message"].IsString())
            message = doc["message"].GetString();
    }
    const std::string value = "status " + std::to_string(static_cast<int>(status)) + ", code " +
                              std::to_string(code) + (message.empty() ? "" : ", " + message);
    if (status == 0 && code == 0) {
        report.ok("presence", value + ": signature and token pair accepted");
    } else if (message.find("device token") != std::string::npos) {
        report.fail("presence", value, "token-refused",
                    "the cloud no longer accepts the stored token pair: quilctl token-renew, or "
                    "register the device again");
    } else if (message.find("signature") != std::string::npos ||
               message.find("unknown device") != std::string::npos ||
               message.find("serial number") != std::string::npos) {
        report.fail("presence", value, "signature-refused",
                    "deviceid, sn or channel_secret differ from the cloud's registration: "
                    "restore the factory data");
    } else {
        report.fail("presence", value, "presence-failed",
                    "run quilctl --verbose presence to see the exchange");
    }
}

}  // namespace doctor
}  // namespace quilctl
