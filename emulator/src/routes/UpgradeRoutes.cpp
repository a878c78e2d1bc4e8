// The upgrade service: checks the query's signature and offers the newest
// image of the device's platform when the device runs an older version.
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "DeviceAuth.h"
#include "ServiceDigests.h"
#include "quilcloud/Cloud.h"

namespace quilcloud {

namespace {

struct Image {
    const char* platform;
    const char* version;
    long long size;
};

// The images on offer, one per platform.
constexpr Image kImages[] = {
    {"quil.speaker.v2", "2.15.0", 73400320},
    {"quil.speaker.v1", "1.9.8", 41943040},
};

constexpr const char kPathPrefix[] = "/rs/grayupgrade/v2/";

// Dotted versions compared part by part as numbers ("2.9" < "2.10").
std::vector<long long> versionParts(const std::string& version) {
    std::vector<long long> parts;
    std::stringstream in(version);
    std::string part;
    while (std::getline(in, part, '.'))
        parts.push_back(std::strtoll(part.c_str(), nullptr, 10));
    return parts;
}

std::string answer(const std::string& code, const std::string& message, const std::string& data) {
    return "{\"code\":\"" + code + "\",\"message\":\"" + jsonEscape(message) +
           "\",\"data\":" + data + "}";
}

}  // namespace

void registerUpgradeRoutes(Cloud& cloud) {
    cloud.route("GET", std::string(kPathPrefix) + "*", [](const Received& request, Reply& reply) {
        const std::string platform = request.path.substr(sizeof(kPathPrefix) - 1);
        std::map<std::string, std::string> signedParams = request.params;
        signedParams.erase("s");
        for (const char* key :
             {"version", "filterID", "channel", "locale", "countryCode", "platform"}) {
            if (request.params.count(key) == 0) {
                reply.json(200, answer("2", std::string("missing ") + key, "{}"));
                return;
            }
        }
        if (request.param("s") != upgradeSignature(signedParams)) {
            reply.json(200, answer("401", "signature mismatch", "{}"));
            return;
        }
        if (request.param("platform") != platform) {
            reply.json(200, answer("3", "platform does not match the path", "{}"));
            return;
        }
        for (const Image& image : kImages) {
            if (platform != image.platform ||
                versionParts(request.param("version")) >= versionParts(image.version)) {
                continue;
            }
            const std::string link = std::string("https://ota.velmar-cloud.test/images/") +
                                     image.platform + "/" + image.version + "/update.bin";
            reply.json(200, answer("0", "ok",
                                   "{\"upgradeInfo\":{\"version\":\"" + std::string(image.version) +
                                       "\",\"link\":\"" + link +
                                       "\",\"size\":" + std::to_string(image.size) + "}}"));
            return;
        }
        reply.json(200, answer("0", "ok", "{}"));  // nothing newer
    });
}

}  // namespace quilcloud
