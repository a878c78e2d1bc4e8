// The one libcurl handle the library drives itself (the multipart log
// upload). The porting layer's transport is out of reach here, since a
// firmware may link the maker's own port instead of the host one, so this
// handle applies the host port's connection rules from the same source the
// port compiles (host/ConnectionRules.h: proxy, trust, the clock before the
// build time), plus the $VELMAR_RESOLVE pins.
#pragma once

#include <curl/curl.h>

#include <string>
#include <type_traits>

#include "host/ConnectionRules.h"

namespace velmar {
namespace quil {
namespace api {
namespace detail {

// Sees every whole-number option a handle is given (time-outs, address
// family, keep-alive), which no transfer shows from outside; tests set it,
// null otherwise.
using LongOptionObserver = void (*)(CURLoption option, long value);
void observeLongOptionsForTest(LongOptionObserver observer);
void noteLongOption(CURLoption option, long value);

class OwnCurl {
  public:
    OwnCurl();  // null handle() when libcurl could not make one
    ~OwnCurl();
    OwnCurl(const OwnCurl&) = delete;
    OwnCurl& operator=(const OwnCurl&) = delete;

    CURL* handle() const { return mHandle; }

    // Sets one option unless an earlier one was refused; setResult() tells
    // the first refusal (CURLE_OK when none).
    template <typename T>
    void set(CURLoption option, T value) {
        // GCOVR_EXCL_START: libcurl refuses none of the options set
        if (mSet != CURLE_OK) return;
        // GCOVR_EXCL_STOP
        mSet = curl_easy_setopt(mHandle, option, value);
        if constexpr (std::is_same_v<T, long>) noteLongOption(option, value);
    }
    CURLcode setResult() const { return mSet; }

    // Applies the host rules above for a transfer to `url`; call it before
    // set(). False with the reason in `error`.
    bool applyHostRules(const std::string& url, std::string& error);

  private:
    CURL* mHandle = nullptr;
    CURLcode mSet = CURLE_OK;
    curl_slist* mResolve = nullptr;
    http::detail::ConnectionRules mRules;  // must outlive the transfer: libcurl borrows it
};

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
