#include "api/OwnCurl.h"

#include <atomic>
#include <cstdlib>
#include <mutex>

namespace velmar {
namespace quil {
namespace api {
namespace detail {

namespace {

std::atomic<LongOptionObserver> gLongOptionObserver{nullptr};

}  // namespace

void observeLongOptionsForTest(LongOptionObserver observer) {
    gLongOptionObserver = observer;
}

void noteLongOption(CURLoption option, long value) {
    if (LongOptionObserver observer = gLongOptionObserver) observer(option, value);
}

OwnCurl::OwnCurl() {
    // Once per process, before the first handle; the port may have done it too
    // (libcurl counts the calls).
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    mHandle = curl_easy_init();
}

OwnCurl::~OwnCurl() {
    curl_easy_cleanup(mHandle);  // a null handle is allowed
    curl_slist_free_all(mResolve);
}

bool OwnCurl::applyHostRules(const std::string& url, std::string& error) {
    mSet = mRules.apply(mHandle, url, error);
    if (mSet != CURLE_OK) return false;

    // "host:port:address" entries, as curl's --resolve takes them.
    const char* value = std::getenv("VELMAR_RESOLVE");
    const std::string pins = value != nullptr ? value : "";
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
            // GCOVR_EXCL_START: libcurl appends unless memory runs out
            if (next == nullptr) {
                error = "out of memory";
                return false;
            }
            // GCOVR_EXCL_STOP
            mResolve = next;
        }
        start = end + 1;
    }
    // A refusal of the list shows in setResult(), with the options still to come.
    if (mResolve != nullptr) set(CURLOPT_RESOLVE, mResolve);
    return true;
}

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
