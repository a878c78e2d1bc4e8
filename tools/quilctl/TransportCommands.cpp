// Raw transport calls: what a field engineer uses to see whether a service
// answers at all, before blaming an endpoint.
#include <map>

#include "Command.h"
#include "velmar/http/HTTPRequest.h"

namespace quilctl {

namespace {

int runHttp(const Args& args, Output& out) {
    const std::string& method = args.positional[0];
    const std::string& url = args.positional[1];
    std::map<std::string, std::string> params;
    for (size_t i = 2; i < args.positional.size(); ++i) {
        const std::string& pair = args.positional[i];
        size_t eq = pair.find('=');
        params[pair.substr(0, eq)] = eq == std::string::npos ? "" : pair.substr(eq + 1);
    }
    int status = 0;
    std::string response;
    velmar::utils::ErrorType error = velmar::utils::ERROR_NONE;
    std::string errorMessage;
    bool ok = velmar::http::HTTPRequest::httpRequest(
        status, response, error, errorMessage, url,
        velmar::http::HTTPRequest::encodeHTTPParams(params), method, {}, 15000, "");
    out.add("ok", ok);
    out.add("httpStatus", status);
    out.add("error", static_cast<int>(error));
    out.add("errorMessage", errorMessage);
    out.addDocument("response", response);
    return ok ? 0 : 1;
}

}  // namespace

std::vector<Command> transportCommands() {
    return {
        {"http", "METHOD URL [KEY=VALUE...]",
         "send one plain request through the platform transport", 2, 64, runHttp},
    };
}

}  // namespace quilctl
