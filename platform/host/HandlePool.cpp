#include "HandlePool.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace velmar {
namespace http {
namespace detail {

namespace {

// Idle handles kept; more only exist while that many calls run at once.
constexpr size_t kPooledHandles = 8;

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

}  // namespace

HandlePool& HandlePool::instance() {
    static HandlePool* pool = new HandlePool;  // GCOVR_EXCL_BR_LINE: init guard
    return *pool;
}

// GCOVR_EXCL_BR_START: libcurl's set-up fails only without memory
HandlePool::HandlePool() {
    if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) return;
    CURLSH* share = curl_share_init();
    if (share == nullptr) return;
    if (curl_share_setopt(share, CURLSHOPT_LOCKFUNC, lock) != CURLSHE_OK ||
        curl_share_setopt(share, CURLSHOPT_UNLOCKFUNC, unlock) != CURLSHE_OK ||
        curl_share_setopt(share, CURLSHOPT_USERDATA, this) != CURLSHE_OK ||
        curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_DNS) != CURLSHE_OK ||
        curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION) != CURLSHE_OK) {
        curl_share_cleanup(share);  // GCOVR_EXCL_LINE: as above
        return;                     // GCOVR_EXCL_LINE: as above
    }
    mShare = share;
}
// GCOVR_EXCL_BR_STOP

HandlePool::Lease HandlePool::acquire(unsigned generation) {
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
        // GCOVR_EXCL_START: a new handle fails only without memory
        if (lease.handle != nullptr &&
            curl_easy_setopt(lease.handle, CURLOPT_SHARE, mShare) != CURLE_OK) {
            curl_easy_cleanup(lease.handle);
            lease.handle = nullptr;
        }
        // GCOVR_EXCL_STOP
    }
    return lease;
}

void HandlePool::release(const Lease& lease) {
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

std::vector<std::string> HandlePool::pins(unsigned& generation, bool datesUnchecked) {
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

std::mutex& HandlePool::lockFor(void* self, curl_lock_data data) {
    // A kind of data a later libcurl adds shares the spare lock.
    // GCOVR_EXCL_BR_START: this libcurl shares only the kinds it knows
    const int index = data >= 0 && data < CURL_LOCK_DATA_LAST ? data : CURL_LOCK_DATA_NONE;
    // GCOVR_EXCL_BR_STOP
    return static_cast<HandlePool*>(self)->mLocks[index];
}

void HandlePool::lock(CURL*, curl_lock_data data, curl_lock_access, void* self) {
    lockFor(self, data).lock();
}

void HandlePool::unlock(CURL*, curl_lock_data data, void* self) {
    lockFor(self, data).unlock();
}

}  // namespace detail
}  // namespace http
}  // namespace velmar
