// Internal to the Linux port: the easy handles every call borrows and the one
// share they all use.
//
// One process-wide share holds the DNS cache and the TLS sessions for every
// thread. Connections live in the easy handles, which are pooled: a call
// borrows a handle, so its open connections serve the next call, whichever
// thread makes it. (libcurl does not support one connection cache used by
// concurrent threads, which a shared connection cache would be.)
#pragma once

#include <curl/curl.h>

#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace velmar {
namespace http {
namespace detail {

class HandlePool {
  public:
    // Never destroyed: daemons may still be making calls from other threads
    // while the process exits.
    static HandlePool& instance();

    bool ready() const { return mShare != nullptr; }

    // A handle and the generation of the pins and clock state it was made under.
    struct Lease {
        CURL* handle = nullptr;
        unsigned generation = 0;
    };

    // A pooled handle of this generation, or a new one on the share; a null
    // handle when libcurl could make none. Handles of older generations are
    // closed on the way.
    Lease acquire(unsigned generation);
    // Back to the pool, its connections kept, unless the pool is full or the
    // generation has changed since.
    void release(const Lease& lease);

    // The --resolve entries for this call: $VELMAR_RESOLVE, plus removals of
    // pins an earlier value set, since the shared DNS cache keeps them. A
    // changed value also retires the pooled handles, whose open connections
    // were made to the old addresses; so does a change of the clock state
    // (`datesUnchecked`), since a connection whose certificate dates went
    // unchecked must not serve a call once the clock is right.
    std::vector<std::string> pins(unsigned& generation, bool datesUnchecked);

  private:
    HandlePool();

    static std::mutex& lockFor(void* self, curl_lock_data data);
    static void lock(CURL*, curl_lock_data data, curl_lock_access, void* self);
    static void unlock(CURL*, curl_lock_data data, void* self);

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

}  // namespace detail
}  // namespace http
}  // namespace velmar
