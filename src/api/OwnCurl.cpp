#include "api/OwnCurl.h"

#include <strings.h>

#include <cstdlib>
#include <fstream>
#include <mutex>

namespace velmar {
namespace quil {
namespace api {
namespace detail {

namespace {

// As the host port: a CA bundle larger than this is not read.
constexpr std::streamsize kMaxCaBundleBytes = 4 * 1024 * 1024;

std::string envValue(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool readBounded(const std::string& path, std::string& out) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    out.assign(static_cast<size_t>(kMaxCaBundleBytes) + 1, '\0');
    in.read(&out[0], kMaxCaBundleBytes + 1);
    if (in.bad() || in.gcount() > kMaxCaBundleBytes) return false;
    out.resize(static_cast<size_t>(in.gcount()));
    return true;
}

}  // namespace

OwnCurl::OwnCurl() {
    // Once per process, before the first handle; the port may have done it too
    // (libcurl counts the calls).
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    mHandle = curl_easy_init();
}

OwnCurl::~OwnCurl() {
    if (mHandle != nullptr) curl_easy_cleanup(mHandle);
    curl_slist_free_all(mResolve);
}

bool OwnCurl::applyHostRules(const std::string& url, std::string& error) {
#if LIBCURL_VERSION_NUM >= 0x075500
    set(CURLOPT_PROTOCOLS_STR, "http,https");
#else
    set(CURLOPT_PROTOCOLS, long{CURLPROTO_HTTP | CURLPROTO_HTTPS});
#endif
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);

    // The extra bundle is added to libcurl's own, not put in its place.
    const std::string caFile = envValue("VELMAR_CA_FILE");
    if (!caFile.empty() && strncasecmp(url.c_str(), "https:", 6) == 0) {
        std::string extra;
        if (!readBounded(caFile, extra) || extra.empty()) {
            error = "cannot read the CA bundle " + caFile + " named by VELMAR_CA_FILE";
            return false;
        }
        char* builtIn = nullptr;
#if LIBCURL_VERSION_NUM >= 0x075400
        curl_easy_getinfo(mHandle, CURLINFO_CAINFO, &builtIn);
#endif
        std::string system;
        if (builtIn != nullptr && readBounded(builtIn, system)) mCaBundle = system + "\n";
        mCaBundle += extra;
        curl_blob blob{&mCaBundle[0], mCaBundle.size(), CURL_BLOB_NOCOPY};
        set(CURLOPT_CAINFO_BLOB, &blob);
    }

    // "host:port:address" entries, as curl's --resolve takes them.
    const std::string pins = envValue("VELMAR_RESOLVE");
    size_t start = 0;
    while (start < pins.size()) {
        size_t end = pins.find(',', start);
        if (end == std::string::npos) end = pins.size();
        const std::string item = pins.substr(start, end - start);
        const size_t first = item.find_first_not_of(" \t");
        if (first != std::string::npos) {
            const size_t last = item.find_last_not_of(" \t");
            curl_slist* next =
                curl_slist_append(mResolve, item.substr(first, last - first + 1).c_str());
            if (next == nullptr) {
                error = "out of memory";
                return false;
            }
            mResolve = next;
        }
        start = end + 1;
    }
    if (mResolve != nullptr) set(CURLOPT_RESOLVE, mResolve);

    if (mSet != CURLE_OK) {
        error = curl_easy_strerror(mSet);
        return false;
    }
    return true;
}

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
