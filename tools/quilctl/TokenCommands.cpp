// Tokens of the cloud services and the linked Tencent account. Credentials
// are shown masked.
#include "Command.h"
#include "Common.h"
#include "velmar/quil/api/AIServiceTokenAPI.h"
#include "velmar/quil/api/TencentAccountAPI.h"
#include "velmar/quil/api/VEOTTokenAPI.h"
#include "velmar/quil/api/VemcTokenAPI.h"

namespace quilctl {

namespace {

using namespace velmar::quil::api;

int runAiToken(const Args&, Output& out) {
    std::string token;
    long long expiresIn = 0;
    auto status = AIServiceTokenAPI::getServiceToken(token, expiresIn, cloudBaseUrl());
    if (status == velmar::utils::ERROR_NONE) {
        // An empty token is the cloud's refusal.
        out.add("token", masked(token));
        out.add("expiresIn", expiresIn);
    }
    return reportStatus(out, status);
}

int runVemcToken(const Args&, Output& out) {
    std::string token;
    auto status = VemcTokenAPI::getToken(token, cloudBaseUrl());
    if (status == velmar::utils::ERROR_NONE) out.add("token", masked(token));
    return reportStatus(out, status);
}

int runVeotUpload(const Args& args, Output& out) {
    auto status = VEOTTokenAPI::upload(args.positional[0], args.positional[1], args.positional[2],
                                       cloudBaseUrl());
    return reportStatus(out, status);
}

int runVeotDownload(const Args&, Output& out) {
    std::string sessionId;
    std::string token;
    int expire = 0;
    auto status = VEOTTokenAPI::download(sessionId, token, expire, cloudBaseUrl());
    if (status == velmar::utils::ERROR_NONE) {
        out.add("sessionId", sessionId);
        out.add("token", masked(token));
        out.add("expire", expire);
    }
    return reportStatus(out, status);
}

int runTencentAccount(const Args&, Output& out) {
    TencentAccount account;
    auto status = TencentAccountAPI::getTencentAccount(account, cloudBaseUrl());
    if (status == velmar::utils::ERROR_NONE) {
        out.add("txAppID", account.txAppID);
        out.add("txID", account.txID);
        out.add("txIDType", account.txIDType);
        out.add("txVendorUID", account.txVendorUID);
        out.add("txAccessToken", masked(account.txAccessToken));
        out.add("txRefreshToken", masked(account.txRefreshToken));
        out.add("txExpiresIn", account.txExpiresIn);
    }
    return reportStatus(out, status);
}

}  // namespace

std::vector<Command> tokenCommands() {
    return {
        {"ai-token", "", "the voice-assistant service token", 0, 0, runAiToken},
        {"vemc-token", "", "the messaging-cloud token", 0, 0, runVemcToken},
        {"veot-upload", "TOKEN SESSIONID USERID", "hand the IoT-platform session token over", 3, 3,
         runVeotUpload},
        {"veot-download", "", "fetch the IoT-platform session token back", 0, 0, runVeotDownload},
        {"tencent-account", "", "the linked Tencent account", 0, 0, runTencentAccount},
    };
}

}  // namespace quilctl
