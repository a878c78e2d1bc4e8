// One request's way through the local cloud: recorded, answered by a
// scripted fault or by its route, then told to the request log; and the
// routes the service families register.
#include "CloudImpl.h"
#include "DeviceAuth.h"
#include "WireText.h"

namespace quilcloud {

void Cloud::Impl::serve(const httplib::Request& request, httplib::Response& response,
                        const Body& body) {
    const Received r = record(request, body);
    std::optional<Scripted> scripted = takeScript(r.path);
    const std::string outcome =
        scripted ? answerScripted(*scripted, r, response) : answerWithRoute(r, response);
    if (options.requestLog) {
        std::string line =
            r.method + " " + r.path + (r.query.empty() ? "" : "?" + r.query) + " -> " + outcome;
        options.requestLog(line);
    }
}

std::string Cloud::Impl::answerWithRoute(const Received& request, httplib::Response& response) {
    const std::string method = request.method == "HEAD" ? "GET" : request.method;
    Handler handler;
    bool pathKnown = false;
    {
        std::lock_guard<std::mutex> lock(mutex);
        size_t bestPrefix = 0;
        for (const auto& route : routes) {
            if (!pathMatches(route.path, request.path)) continue;
            pathKnown = true;
            if (route.method != method) continue;
            if (route.path == request.path) {
                handler = route.handler;
                break;
            }
            if (route.path.size() > bestPrefix) {
                bestPrefix = route.path.size();
                handler = route.handler;
            }
        }
    }
    Reply reply;
    if (handler) {
        try {
            handler(request, reply);
        } catch (const std::exception& e) {
            reply = Reply();
            reply.json(500, errorBody(500, std::string("handler failed: ") + e.what()));
        }
    } else if (pathKnown) {
        reply.json(405, errorBody(405, "method not allowed: " + request.method));
    } else {
        reply.json(404, errorBody(404, "no such endpoint: " + request.path));
    }
    return apply(reply, response);
}

std::string Cloud::Impl::apply(const Reply& reply, httplib::Response& response) {
    response.status = reply.status;
    for (const auto& [name, value] : reply.headers)
        response.set_header(name, value);
    response.set_content(reply.body, reply.contentType);
    return std::to_string(reply.status);
}

void Cloud::route(const std::string& method, const std::string& path, Handler handler) {
    std::lock_guard<std::mutex> lock(mImpl->mutex);
    const std::string m = upper(method);
    for (auto& existing : mImpl->routes) {
        if (existing.method == m && existing.path == path) {
            existing.handler = std::move(handler);
            return;
        }
    }
    mImpl->routes.push_back({m, path, std::move(handler)});
}

}  // namespace quilcloud
