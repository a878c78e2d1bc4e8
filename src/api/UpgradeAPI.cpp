#include "velmar/quil/api/UpgradeAPI.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "api/ConfiguredService.h"
#include "api/Endpoint.h"
#include "velmar/crypto/BaseEncoding.h"
#include "velmar/crypto/DigestUtils.h"
#include "velmar/http/HTTPRequest.h"
#include "velmar/utils/ConfigFile.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

namespace {

using http::HTTPRequest;

// One exchange with the upgrade service; the outputs are shared by both attempts.
struct Attempt {
    int status = -1;
    std::string response;
    utils::ErrorType error = utils::ERROR_NONE;
    std::string errorMessage;

    // A 200 with a transport error value still counts as a failed attempt.
    bool succeeded(bool sent) const { return sent && status == 200 && error == utils::ERROR_NONE; }

    void logFailure() const {
        VLOG(4) << "HTTPRequest failed ("
                << "status: " << status << ", "
                << "error code: " << error << ", "
                << "error message: " << errorMessage << ")";
    }
};

}  // namespace

void UpgradeAPI::computeS(std::string& s, std::map<std::string, std::string> params,
                          std::string& key) {
    // Sorted as whole "key=value" texts, not by key: where one key is a prefix
    // of another, "=" decides against the longer key's next character.
    std::vector<std::string> pairs;
    for (const auto& [name, value] : params)
        pairs.push_back(name + "=" + value);
    std::sort(pairs.begin(), pairs.end());
    std::string text;
    for (const auto& pair : pairs) {
        text += pair;
        text += "&";
    }
    text += key;

    std::string encoded;
    crypto::BaseEncoding::encodeB64(encoded, text.data(), static_cast<unsigned>(text.size()));
    std::vector<unsigned char> digest;
    crypto::DigestUtils::md5(digest, encoded.data(), static_cast<unsigned>(encoded.size()));
    s = crypto::BaseEncoding::encodeHex(digest);
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
}

bool UpgradeAPI::checkUpgrade(std::string& link, long long& size, const std::string& platform,
                              const std::string& filterID, const std::string& version,
                              const std::string& channel, const std::string& locale,
                              const std::string& countryCode) {
    static const std::string secret(
        "3f6a1c9e-2b7d-4e80-9c5a-71d0e4b2f863");  // GCOVR_EXCL_BR_LINE: init guard
    // Asked only when the system's resolver has let the first attempt down.
    static const std::string fallbackResolvers(
        "1.1.1.1,8.8.8.8,9.9.9.9");                        // GCOVR_EXCL_BR_LINE: init guard
    static const std::string path("/rs/grayupgrade/v2/");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("GET");

    detail::Params params;
    params["version"] = version;
    params["filterID"] = filterID;
    params["channel"] = channel;
    params["locale"] = locale;
    params["countryCode"] = countryCode;
    params["platform"] = platform;
    std::string key(secret);
    std::string s;
    computeS(s, params, key);
    params["s"] = s;

    std::string segment;
    if (!detail::pathSegment(platform, segment)) {
        VLOG(4) << "platform \"" << platform << "\" cannot be a path segment";
        return false;
    }
    const std::string url =
        detail::configuredUrl(utils::ConfigFile::sVeWiFiAPIURL) + path + segment;
    const std::string query = HTTPRequest::encodeHTTPParams(params);
    VLOG(2) << "URL: " << url;
    VLOG(2) << "Params: " << query;

    Attempt attempt;
    bool sent = HTTPRequest::httpRequest(attempt.status, attempt.response, attempt.error,
                                         attempt.errorMessage, url, query, method, {}, 15000, "");
    if (!attempt.succeeded(sent)) {
        attempt.logFailure();
        VLOG(4) << "try use dns list " << fallbackResolvers << " and retry";
        sent = HTTPRequest::httpRequest(attempt.status, attempt.response, attempt.error,
                                        attempt.errorMessage, url, query, method, {}, 15000, "",
                                        fallbackResolvers);
        if (!attempt.succeeded(sent)) {
            attempt.logFailure();
            return false;
        }
    }
    const std::string& response = attempt.response;

    json::JSONObjectCleaner cleaner;
    json_object* root = detail::parseAnswer(cleaner, response);
    if (root == nullptr) {
        VLOG(4) << "Invalid JSON: " << response;
        return false;
    }
    std::string code;
    if (!json::JSONUtils::getString(root, "code", code)) {
        VLOG(4) << "Invalid result: " << response;
        return false;
    }
    if (code != "0") {
        VLOG(4) << "Error result: " << response;
        return false;
    }
    json_object* data = nullptr;
    if (!json::JSONUtils::getJSONObject(root, "data", data)) {
        VLOG(4) << "Invalid result: " << response;
        return false;
    }
    json_object* upgradeInfo = nullptr;
    if (!json::JSONUtils::getJSONObject(data, "upgradeInfo", upgradeInfo)) {
        VLOG(2) << "No need to upgrade: " << response;
        return true;
    }
    // The link is handed over before the size is read, even if the size then fails.
    if (!json::JSONUtils::getString(upgradeInfo, "link", link) ||
        !json::JSONUtils::getInt(upgradeInfo, "size", size)) {
        VLOG(4) << "Invalid result: " << response;
        return false;
    }
    return true;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
