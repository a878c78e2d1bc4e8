#include "ConnectionRules.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <strings.h>
#include <sys/stat.h>
#include <time.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <tuple>
#include <vector>

#include "FileRead.h"
#include "velmar/BuildTime.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace http {
namespace detail {

namespace {

// Bound on a CA bundle read into memory.
constexpr size_t kMaxCaBundleBytes = 4 * 1024 * 1024;

std::atomic<long long> gBuildTime{VELMAR_BUILD_TIME};

std::string envValue(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

// What tells that a file was replaced or changed since it was read.
struct FileStamp {
    bool found = false;
    unsigned long long device = 0;
    unsigned long long inode = 0;
    long long seconds = 0;
    long long nanoseconds = 0;
    long long size = 0;
    auto fields() const { return std::tie(found, device, inode, seconds, nanoseconds, size); }
    bool operator==(const FileStamp& o) const { return fields() == o.fields(); }
};

FileStamp stampOf(const std::string& path) {
    FileStamp stamp;
    struct stat info;
    if (!path.empty() && ::stat(path.c_str(), &info) == 0) {
        stamp.found = true;
        stamp.device = static_cast<unsigned long long>(info.st_dev);
        stamp.inode = static_cast<unsigned long long>(info.st_ino);
        stamp.seconds = static_cast<long long>(info.st_mtim.tv_sec);
        stamp.nanoseconds = static_cast<long long>(info.st_mtim.tv_nsec);
        stamp.size = static_cast<long long>(info.st_size);
    }
    return stamp;
}

// The whole regular file at `path`, when it holds at most kMaxCaBundleBytes
// (a byte over the bound tells a larger one).
bool readBounded(const std::string& path, std::string& out) {
    if (velmar::host::readFile(path, kMaxCaBundleBytes + 1, out) &&
        out.size() <= kMaxCaBundleBytes) {
        return true;
    }
    out.clear();
    return false;
}

// The bundle $VELMAR_CA_FILE names, read again only when the file changed.
// libcurl gets it as an in-memory CA bundle: being part of the TLS settings
// libcurl compares, it keeps a connection or TLS session made under one
// bundle from serving a call under another.
class ExtraBundle {
  public:
    static ExtraBundle& instance() {
        // Outlives late calls at exit.
        static ExtraBundle* bundle = new ExtraBundle;  // GCOVR_EXCL_BR_LINE: init guard
        return *bundle;
    }

    // Null when the file is missing, unreadable, too large or empty.
    std::shared_ptr<const std::string> get(const std::string& path) {
        const FileStamp stamp = stampOf(path);
        if (!stamp.found) return nullptr;
        std::lock_guard<std::mutex> lock(mMutex);
        if (mText && path == mPath && stamp == mStamp) return mText;
        auto text = std::make_shared<std::string>();
        if (!readBounded(path, *text) || text->empty()) return nullptr;
        mPath = path;
        mStamp = stamp;
        mText = text;
        return mText;
    }

  private:
    std::mutex mMutex;
    std::string mPath;
    FileStamp mStamp;
    std::shared_ptr<const std::string> mText;
};

// libcurl's own CA file, parsed once and again when it changes. libcurl
// loads an in-memory bundle in place of that file (its CA directory still
// counts, if it has one and it is hashed), so these certificates are added to
// the store of every connection that also trusts $VELMAR_CA_FILE.
class SystemRoots {
  public:
    // Made outside libcurl's callbacks (it asks a handle for the file name).
    static SystemRoots& instance() {
        static SystemRoots* roots = new SystemRoots;  // GCOVR_EXCL_BR_LINE: init guard
        return *roots;
    }

    void addTo(X509_STORE* store) {
        const std::shared_ptr<const Certificates> certificates = current();
        for (X509* certificate : certificates->list)
            X509_STORE_add_cert(store, certificate);  // takes its own reference
        ERR_clear_error();  // a certificate the store already has is no failure
    }

  private:
    struct Certificates {
        std::vector<X509*> list;
        Certificates() = default;
        Certificates(const Certificates&) = delete;
        Certificates& operator=(const Certificates&) = delete;
        // GCOVR_EXCL_START: runs only when the system's CA file changes
        ~Certificates() {
            for (X509* certificate : list)
                X509_free(certificate);
        }
        // GCOVR_EXCL_STOP
    };

    // GCOVR_EXCL_BR_START: how libcurl was built decides which file it is
    SystemRoots() {
#if LIBCURL_VERSION_NUM >= 0x075400
        if (CURL* probe = curl_easy_init()) {
            char* file = nullptr;
            if (curl_easy_getinfo(probe, CURLINFO_CAINFO, &file) == CURLE_OK && file != nullptr) {
                mPath = file;
            }
            curl_easy_cleanup(probe);
        }
#endif
        if (mPath.empty()) mPath = X509_get_default_cert_file();
    }
    // GCOVR_EXCL_BR_STOP

    std::shared_ptr<const Certificates> current() {
        const FileStamp stamp = stampOf(mPath);
        std::lock_guard<std::mutex> lock(mMutex);
        if (mCertificates && stamp == mStamp) return mCertificates;
        auto certificates = std::make_shared<Certificates>();
        std::string text;
        if (stamp.found && readBounded(mPath, text)) {
            BIO* bio = BIO_new_mem_buf(text.data(), static_cast<int>(text.size()));
            if (bio != nullptr) {  // GCOVR_EXCL_BR_LINE: allocation failure
                while (X509* certificate = PEM_read_bio_X509(bio, nullptr, nullptr, nullptr))
                    certificates->list.push_back(certificate);
                BIO_free(bio);
            }
            ERR_clear_error();  // the end of the text reads as an error
        }
        mStamp = stamp;
        mCertificates = certificates;
        return mCertificates;
    }

    std::string mPath;
    std::mutex mMutex;
    FileStamp mStamp;
    std::shared_ptr<const Certificates> mCertificates;
};

// True while the system clock reads earlier than this build: no certificate
// issued since can be valid yet, and the time service itself is reached over
// HTTPS. A negative reading (a 32-bit time_t past 2038) does not count: dates
// are then checked, as they are whenever the clock cannot be judged.
bool clockBeforeBuild() {
    timespec now{};
    // GCOVR_EXCL_BR_START: CLOCK_REALTIME is always there
    if (clock_gettime(CLOCK_REALTIME, &now) != 0) return false;
    // GCOVR_EXCL_BR_STOP
    const long long seconds = static_cast<long long>(now.tv_sec);
    return seconds >= 0 && seconds < gBuildTime.load(std::memory_order_relaxed);
}

// One line each time the clock enters that state, not one per call: a daemon
// asks many times before its clock is set, and a clock that is set back later
// in the same process deserves the line again.
void noteClockState(bool datesUnchecked) {
    static std::atomic<bool> noted{false};
    if (!datesUnchecked) {
        if (noted.load(std::memory_order_relaxed)) noted.store(false);
        return;
    }
    if (!noted.exchange(true)) {
        VLOG(3) << "The system clock reads earlier than this build ("
                << gBuildTime.load(std::memory_order_relaxed)
                << "): a TLS certificate that is not yet valid is accepted; chain, host name "
                   "and expiry are still checked";
    }
}

struct ContextMode {
    bool addSystemRoots;
    bool datesUnchecked;
};
const ContextMode kModes[2][2] = {{{false, false}, {false, true}}, {{true, false}, {true, true}}};

// While the clock reads before the build, a certificate that is "not yet
// valid" is forgiven, and nothing else: one that expired before even that
// early reading is expired for certain.
int forgiveNotYetValid(int ok, X509_STORE_CTX* store) {
    if (ok == 0) {
        const int error = X509_STORE_CTX_get_error(store);
        if (error == X509_V_ERR_CERT_NOT_YET_VALID || error == X509_V_ERR_CRL_NOT_YET_VALID) {
            X509_STORE_CTX_set_error(store, X509_V_OK);
            return 1;
        }
    }
    return ok;
}

// Called by libcurl with each new connection's TLS context, its trust store
// already loaded.
CURLcode configureContext(CURL*, void* sslContext, void* data) {
    SSL_CTX* context = static_cast<SSL_CTX*>(sslContext);
    const ContextMode* mode = static_cast<const ContextMode*>(data);
    if (mode->addSystemRoots) SystemRoots::instance().addTo(SSL_CTX_get_cert_store(context));
    if (mode->datesUnchecked) {
        SSL_CTX_set_verify(context, SSL_CTX_get_verify_mode(context), forgiveNotYetValid);
    }
    return CURLE_OK;
}

// The context callback hands over an OpenSSL context only when libcurl's TLS
// is OpenSSL's; with any other backend it must never be set.
// GCOVR_EXCL_BR_START: the tests' libcurl is built on OpenSSL
bool tlsIsOpenSsl() {
    const curl_version_info_data* info = curl_version_info(CURLVERSION_NOW);
    return info != nullptr && info->ssl_version != nullptr &&
           std::strncmp(info->ssl_version, "OpenSSL/", 8) == 0;
}
// GCOVR_EXCL_BR_STOP

}  // namespace

ConnectionRules::ConnectionRules() : mDatesUnchecked(clockBeforeBuild()) {}

CURLcode ConnectionRules::apply(CURL* curl, const std::string& url, std::string& error) {
    CURLcode code = CURLE_OK;
    auto set = [&code, curl](CURLoption option, auto value) {
        if (code == CURLE_OK)
            code = curl_easy_setopt(curl, option, value);  // GCOVR_EXCL_BR_LINE: as below
    };
#if LIBCURL_VERSION_NUM >= 0x075500
    set(CURLOPT_PROTOCOLS_STR, "http,https");
#else
    set(CURLOPT_PROTOCOLS, long{CURLPROTO_HTTP | CURLPROTO_HTTPS});
#endif
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    // An explicit value, even "", keeps libcurl from reading the proxy
    // variables; an explicit empty exception list keeps no_proxy from
    // exempting hosts from the proxy that is named.
    const std::string proxy = envValue("VELMAR_PROXY");
    set(CURLOPT_PROXY, proxy.c_str());
    set(CURLOPT_NOPROXY, "");

    mExtraBundle.reset();
    const bool https = strncasecmp(url.c_str(), "https:", 6) == 0;
    if (https) {
        const std::string caFile = envValue("VELMAR_CA_FILE");
        if (!caFile.empty()) {
            mExtraBundle = ExtraBundle::instance().get(caFile);
            if (!mExtraBundle) {
                error = "cannot read the CA bundle " + caFile + " named by VELMAR_CA_FILE";
                return CURLE_SSL_CACERT_BADFILE;
            }
            SystemRoots::instance();
            curl_blob blob{const_cast<char*>(mExtraBundle->data()), mExtraBundle->size(),
                           CURL_BLOB_NOCOPY};
            set(CURLOPT_CAINFO_BLOB, &blob);
#if LIBCURL_VERSION_NUM >= 0x075700
            // The store gets the system roots added: it must be this
            // connection's own, never one libcurl keeps for the next.
            set(CURLOPT_CA_CACHE_TIMEOUT, 0L);
#endif
        }
        const bool datesUnchecked = mDatesUnchecked;
        noteClockState(datesUnchecked);
        // No TLS session is kept from a connection whose dates went
        // unchecked, to be resumed once the clock is right.
        set(CURLOPT_SSL_SESSIONID_CACHE, datesUnchecked ? 0L : 1L);
        // Only a connection that needs the context changed gets the callback.
        if (mExtraBundle || datesUnchecked) {
            static const bool openSsl = tlsIsOpenSsl();  // GCOVR_EXCL_BR_LINE: init guard
            // GCOVR_EXCL_START: the tests' libcurl is built on OpenSSL
            if (!openSsl) {
                error =
                    "libcurl's TLS is not OpenSSL: cannot add the system roots to "
                    "VELMAR_CA_FILE or forgive a clock before the build";
                return CURLE_SSL_CONNECT_ERROR;
            }
            // GCOVR_EXCL_STOP
            set(CURLOPT_SSL_CTX_FUNCTION, static_cast<curl_ssl_ctx_callback>(configureContext));
            set(CURLOPT_SSL_CTX_DATA,
                const_cast<ContextMode*>(&kModes[mExtraBundle ? 1 : 0][datesUnchecked ? 1 : 0]));
        }
    }
    // GCOVR_EXCL_START: libcurl refuses none of these settings
    if (code != CURLE_OK)
        error = std::string("libcurl refused a setting: ") + curl_easy_strerror(code);
    // GCOVR_EXCL_STOP
    return code;
}

long long buildTime() {
    return gBuildTime.load(std::memory_order_relaxed);
}

long long setBuildTimeForTest(long long seconds) {
    return gBuildTime.exchange(seconds);
}

}  // namespace detail
}  // namespace http
}  // namespace velmar
