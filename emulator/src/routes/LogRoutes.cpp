// The log-collection services: the signed form upload, the multipart upload
// of a log archive, and the action-log collector. What arrived stays in the
// cloud's record of received requests for tests to read back.
#include <string>

#include "DeviceAuth.h"
#include "ServiceDigests.h"
#include "quilcloud/Cloud.h"

namespace quilcloud {

namespace {

constexpr const char kFormPrefix[] = "/log/common/";
constexpr const char kLitePrefix[] = "/log/lite/common/";
constexpr const char kActionPrefix[] = "/action/v2/c/";

std::string accepted(const std::string& uploadId, size_t bytes) {
    return "{\"code\":0,\"message\":\"ok\",\"data\":{\"uploadId\":\"" + jsonEscape(uploadId) +
           "\",\"bytes\":" + std::to_string(bytes) + "}}";
}

bool hasAll(const Received& request, std::initializer_list<const char*> keys, Reply& reply) {
    for (const char* key : keys) {
        if (request.params.count(key) == 0) {
            reply.json(400, errorBody(400, std::string("missing ") + key));
            return false;
        }
    }
    return true;
}

// The extra data names the archive's compression; anything else is no log.
bool extraNames(const std::string& extra, const std::string& suffix) {
    return extra.find("\"suffix\":\"" + suffix + "\"") != std::string::npos;
}

}  // namespace

void registerLogRoutes(Cloud& cloud) {
    cloud.route("POST", std::string(kFormPrefix) + "*", [](const Received& request, Reply& reply) {
        if (!hasAll(request, {"_n", "_t", "_s", "extra_data", "id", "payload"}, reply)) return;
        std::map<std::string, std::string> signedParams = request.params;
        signedParams.erase("_s");
        if (request.param("_s") != logSignature(signedParams)) {
            reply.json(403, errorBody(403, "signature mismatch"));
            return;
        }
        const auto extra = base64Decode(request.param("extra_data"));
        if (!extra || !extraNames(*extra, "gz")) {
            reply.json(400, errorBody(400, "invalid extra_data"));
            return;
        }
        reply.json(200, accepted(request.path.substr(sizeof(kFormPrefix) - 1),
                                 request.param("payload").size()));
    });

    cloud.route("POST", std::string(kLitePrefix) + "*", [](const Received& request, Reply& reply) {
        if (!hasAll(request, {"_n", "_t", "extra_data", "id", "mode"}, reply)) return;
        // The archive comes as a file part, never as a plain field.
        auto file = request.files.find("payload");
        if (file == request.files.end() || request.params.count("payload") != 0) {
            reply.json(400, errorBody(400, "missing the payload file"));
            return;
        }
        if (request.param("mode") != "useRomTime" ||
            !extraNames(request.param("extra_data"), "tar.gz")) {
            reply.json(400, errorBody(400, "invalid mode or extra_data"));
            return;
        }
        reply.json(200,
                   accepted(request.path.substr(sizeof(kLitePrefix) - 1), file->second.size()));
    });

    cloud.route("POST", std::string(kActionPrefix) + "*",
                [](const Received& request, Reply& reply) {
                    if (!hasAll(request, {"_nonce", "payload"}, reply)) return;
                    // Eight characters of a UUID and a 32-bit minute count.
                    const auto nonce = base64Decode(request.param("_nonce"));
                    if (!nonce || nonce->size() != 12) {
                        reply.json(400, errorBody(400, "invalid _nonce"));
                        return;
                    }
                    reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":{\"did\":\"" +
                                        jsonEscape(request.path.substr(sizeof(kActionPrefix) - 1)) +
                                        "\"}}");
                });
}

}  // namespace quilcloud
