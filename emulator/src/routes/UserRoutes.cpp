// Binding a device to an account, and the account service: access tokens it
// issues to a client for a user, and the user profile such a token opens.
// The account service has a fixed address in the device library; tests and
// the demo point that name at a cloud that carries it in its certificate.
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "DeviceAuth.h"
#include "ServiceDigests.h"
#include "quilcloud/Cloud.h"

namespace quilcloud {

namespace {

struct Grant {
    std::string userId;
    std::string clientId;
};

// What this cloud's account and binding services remember.
struct Accounts {
    std::mutex mutex;
    std::map<std::string, Grant> tokens;  // access token -> its grant
    std::set<std::string> bindRequests;   // request IDs already served
};

bool isUserId(const std::string& text) {
    return !text.empty() && text.size() <= 20 &&
           text.find_first_not_of("0123456789") == std::string::npos;
}

std::string accountError(const std::string& description) {
    return "{\"result\":\"error\",\"description\":\"" + jsonEscape(description) + "\"}";
}

}  // namespace

void registerUserRoutes(Cloud& cloud) {
    auto accounts = std::make_shared<Accounts>();

    // A repeated request ID is a replay and is refused.
    cloud.route("POST", "/bind/", [accounts](const Received& request, Reply& reply) {
        const std::string userId = request.param("userId");
        const std::string requestId = request.param("requestId");
        if (request.param("payload").empty()) {
            reply.json(200, errorBody(1, "missing payload"));
            return;
        }
        if (!isUserId(userId)) {
            reply.json(200, errorBody(2, "invalid userId: " + userId));
            return;
        }
        {
            std::lock_guard<std::mutex> lock(accounts->mutex);
            if (requestId.empty() || !accounts->bindRequests.insert(requestId).second) {
                reply.json(200, errorBody(3, "missing or repeated requestId"));
                return;
            }
        }
        reply.json(200, "{\"code\":0,\"message\":\"ok\",\"data\":{\"userId\":" + userId +
                            ",\"requestId\":\"" + jsonEscape(requestId) + "\"}}");
    });

    // Stands in for the account's sign-in: a token for USER used by CLIENT.
    cloud.route("POST", "/user/token", [accounts](const Received& request, Reply& reply) {
        const std::string userId = request.param("userId");
        const std::string clientId = request.param("clientId");
        if (!isUserId(userId) || clientId.empty()) {
            reply.json(200, accountError("userId and clientId are required"));
            return;
        }
        const std::string token = "acc-" + randomHex(16);
        {
            std::lock_guard<std::mutex> lock(accounts->mutex);
            accounts->tokens[token] = Grant{userId, clientId};
        }
        reply.json(200, "{\"result\":\"ok\",\"data\":{\"token\":\"" + token +
                            "\",\"userId\":" + userId + "}}");
    });

    cloud.route("GET", "/user/profile", [accounts](const Received& request, Reply& reply) {
        Grant grant;
        {
            std::lock_guard<std::mutex> lock(accounts->mutex);
            auto it = accounts->tokens.find(request.param("token"));
            if (it == accounts->tokens.end() || it->second.clientId != request.param("clientId")) {
                reply.json(200, accountError("invalid token"));
                return;
            }
            grant = it->second;
        }
        reply.json(200, "{\"result\":\"ok\",\"data\":{\"userId\":" + grant.userId +
                            ",\"clientId\":\"" + jsonEscape(grant.clientId) + "\"}}");
    });
}

}  // namespace quilcloud
