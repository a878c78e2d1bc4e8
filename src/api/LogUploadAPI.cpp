#include "velmar/quil/api/LogUploadAPI.h"

// The form interface is the one this upload is built on; newer libcurl marks
// it deprecated in favour of the MIME one.
#define CURL_DISABLE_DEPRECATION 1
#include <curl/curl.h>

#include <vector>

#include "api/ConfiguredService.h"
#include "api/Endpoint.h"
#include "api/OwnCurl.h"
#include "velmar/crypto/BaseEncoding.h"
#include "velmar/crypto/DigestUtils.h"
#include "velmar/http/HTTPRequest.h"
#include "velmar/utils/ConfigFile.h"
#include "velmar/utils/Logging.h"
#include "velmar/utils/TimeUtils.h"
#include "velmar/utils/UUIDUtils.h"

namespace velmar {
namespace quil {
namespace api {

namespace {

// Built by hand, not by a JSON writer: `version` goes in unescaped.
std::string extraData(const std::string& version, const char* suffix) {
    return "{\"version\":\"" + version + "\", \"suffix\":\"" + suffix + "\"}";
}

// Bound on the service's answer to a lite upload, as the host port bounds its own.
constexpr size_t kMaxAnswerBytes = 8 * 1024 * 1024;

// Where the answer goes: appended to the caller's text, whose earlier content
// does not count against the bound.
struct AnswerSink {
    std::string* text;
    size_t received;
};

size_t appendAnswer(char* data, size_t size, size_t count, void* user) {
    auto* sink = static_cast<AnswerSink*>(user);
    const size_t n = size * count;
    if (n > kMaxAnswerBytes - sink->received) return 0;  // aborts the transfer
    sink->text->append(data, n);
    sink->received += n;
    return n;
}

// The parts of a multipart form, released with it.
class Form {
  public:
    ~Form() { curl_formfree(mFirst); }

    bool addFile(const char* name, const std::string& path) {
        return curl_formadd(&mFirst, &mLast, CURLFORM_COPYNAME, name, CURLFORM_FILE, path.c_str(),
                            CURLFORM_END) == CURL_FORMADD_OK;
    }
    bool add(const char* name, const std::string& value) {
        return curl_formadd(&mFirst, &mLast, CURLFORM_COPYNAME, name, CURLFORM_COPYCONTENTS,
                            value.data(), CURLFORM_CONTENTLEN,
                            static_cast<curl_off_t>(value.size()), CURLFORM_END) == CURL_FORMADD_OK;
    }
    curl_httppost* first() const { return mFirst; }

  private:
    curl_httppost* mFirst = nullptr;
    curl_httppost* mLast = nullptr;
};

}  // namespace

std::string LogUploadAPI::generateUploadID(const std::string& part1, const std::string& part2,
                                           const std::string& part3) {
    return "common-" + part1 + "-" + part2 + "-" + part3;
}

bool LogUploadAPI::upload(std::string& response, const std::string& uploadID,
                          const std::string& version, const std::string& id,
                          const std::string& payload) {
    static const std::string secret(
        "5b0c2e1a-7d44-4f9e-a3c1-0e9d8b7f6a25");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string nonce = utils::UUIDUtils::generate();
    const std::string t = detail::decimal(utils::TimeUtils::currentTimeMillis());
    const std::string extra = extraData(version, "gz");

    detail::Params params;
    params["extra_data"] =
        crypto::BaseEncoding::encodeB64URL(extra.data(), static_cast<unsigned>(extra.size()));
    params["id"] = id;
    params["payload"] = payload;
    params["_t"] = t;
    params["_n"] = nonce;

    // Signed over the raw values in key order, the secret appended without a separator.
    std::string signing;
    for (const auto& [name, value] : params) {
        if (!signing.empty()) signing += "&";
        signing += name + "=" + value;
    }
    signing += secret;
    std::vector<unsigned char> digest;
    crypto::DigestUtils::md5(digest, signing.data(), static_cast<unsigned>(signing.size()));
    params["_s"] = crypto::BaseEncoding::encodeB64URL(digest);

    const std::string body = http::HTTPRequest::encodeHTTPParams(params);
    const std::string baseUrl = detail::configuredUrl(utils::ConfigFile::sVeWiFiLOGURL);
    std::string segment;
    if (!detail::pathSegment(uploadID, segment)) {
        VLOG(4) << "upload ID \"" << uploadID << "\" cannot be a path segment";
        return false;
    }
    const std::string path = "/log/common/" + segment;
    int status = -1;
    utils::ErrorType error = utils::ERROR_NONE;
    std::string errorMessage;
    if (!http::HTTPRequest::httpRequest(status, response, error, errorMessage, baseUrl, path, body,
                                        "POST", {}, 15000)) {
        VLOG(4) << "httpRequest() failed";
        return false;
    }
    // The status and the body are the caller's to judge.
    if (error != utils::ERROR_NONE) {
        VLOG(4) << "httpRequest() failed with error: " << error;
        return false;
    }
    return true;
}

bool LogUploadAPI::uploadLite(std::string& response, const std::string& uploadID,
                              const std::string& version, const std::string& id,
                              const std::string& timestamp, const std::string& payloadPath) {
    std::string segment;
    if (!detail::pathSegment(uploadID, segment)) {
        VLOG(4) << "upload ID \"" << uploadID << "\" cannot be a path segment";
        return false;
    }
    const std::string url =
        detail::configuredUrl(utils::ConfigFile::sVeWiFiLOGURL) + "/log/lite/common/" + segment;
    const std::string nonce = utils::UUIDUtils::generate();
    const std::string extra = extraData(version, "tar.gz");

    // The form outlives the handle that borrows it.
    Form form;
    detail::OwnCurl curl;
    CURL* handle = curl.handle();
    // GCOVR_EXCL_START: libcurl makes a handle unless memory runs out
    if (handle == nullptr) {
        VLOG(4) << "curl_easy_init() failed";
        return false;
    }
    // GCOVR_EXCL_STOP
    // GCOVR_EXCL_BR_START: libcurl takes these parts unless memory runs out
    if (!form.addFile("payload", payloadPath) || !form.add("extra_data", extra) ||
        !form.add("id", id) || !form.add("mode", "useRomTime") || !form.add("_t", timestamp) ||
        !form.add("_n", nonce)) {
        VLOG(4) << "curl_formadd() failed";  // GCOVR_EXCL_LINE: out of memory
        return false;                        // GCOVR_EXCL_LINE: out of memory
    }
    // GCOVR_EXCL_BR_STOP

    std::string refused;
    if (!curl.applyHostRules(url, refused)) {
        VLOG(4) << "Upload not set up: " << refused;
        return false;
    }
    curl.set(CURLOPT_TIMEOUT_MS, 100000L);
    curl.set(CURLOPT_NOSIGNAL, 1L);
    curl.set(CURLOPT_TCP_KEEPALIVE, 1L);
    curl.set(CURLOPT_IPRESOLVE, long{CURL_IPRESOLVE_V4});
    curl.set(CURLOPT_URL, url.c_str());
    curl.set(CURLOPT_HTTPPOST, form.first());
    AnswerSink sink{&response, 0};
    curl.set(CURLOPT_WRITEFUNCTION, appendAnswer);
    curl.set(CURLOPT_WRITEDATA, &sink);
    // GCOVR_EXCL_START: libcurl takes every option set here
    if (curl.setResult() != CURLE_OK) {
        VLOG(4) << "curl_easy_setopt() failed: " << curl_easy_strerror(curl.setResult());
        return false;
    }
    // GCOVR_EXCL_STOP

    const CURLcode result = curl_easy_perform(handle);
    if (result != CURLE_OK) {
        VLOG(4) << "curl_easy_perform() failed: " << curl_easy_strerror(result);
        return false;
    }
    return true;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
