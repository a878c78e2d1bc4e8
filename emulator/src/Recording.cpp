// The record of what the local cloud received: each request as tests read it
// back (headers, cookies, query and form fields, multipart parts), and the
// connections that carried them.
#include "CloudImpl.h"
#include "WireText.h"

namespace quilcloud {

std::string Received::header(const std::string& name) const {
    auto it = headers.find(lower(name));
    return it == headers.end() ? std::string() : it->second;
}

std::string Received::param(const std::string& name) const {
    auto it = params.find(name);
    return it == params.end() ? std::string() : it->second;
}

Received Cloud::Impl::record(const httplib::Request& request, const Body& body) {
    Received r;
    r.method = request.method;
    r.path = request.path;
    size_t question = request.target.find('?');
    if (question != std::string::npos) r.query = request.target.substr(question + 1);
    if (body.raw) r.body = *body.raw;
    for (const auto& [name, value] : request.headers) {
        // cpp-httplib adds these itself; they were never on the wire.
        if (name == "REMOTE_ADDR" || name == "REMOTE_PORT" || name == "LOCAL_ADDR" ||
            name == "LOCAL_PORT") {
            continue;
        }
        std::string key = lower(name);
        if (key == "cookie") parseCookies(value, r.cookies);
        r.headers.emplace(std::move(key), value);
    }
    for (const auto& [name, value] : request.params) {
        r.fields.emplace(name, value);
        r.params[name] = value;
    }
    if (body.parseForm &&
        lower(r.header("content-type")).rfind("application/x-www-form-urlencoded", 0) == 0) {
        for (const auto& [name, value] : decodeForm(r.body)) {
            r.fields.emplace(name, value);
            r.params[name] = value;
        }
    }
    auto addPart = [&r](const httplib::MultipartFormData& part) {
        r.files[part.name] = part.content;
        if (part.filename.empty()) {
            r.fields.emplace(part.name, part.content);
            r.params[part.name] = part.content;
        }
    };
    for (const auto& [name, part] : request.files)
        addPart(part);
    if (body.parts) {
        for (const auto& part : *body.parts)
            addPart(part);
    }
    r.remoteAddr = request.remote_addr;
    r.remotePort = request.remote_port;

    std::lock_guard<std::mutex> lock(mutex);
    received.push_back(r);
    connections.emplace(r.remoteAddr, r.remotePort);
    return r;
}

std::vector<Received> Cloud::received() const {
    std::lock_guard<std::mutex> lock(mImpl->mutex);
    return mImpl->received;
}

std::vector<Received> Cloud::received(const std::string& path) const {
    std::lock_guard<std::mutex> lock(mImpl->mutex);
    std::vector<Received> matching;
    for (const auto& r : mImpl->received)
        if (r.path == path) matching.push_back(r);
    return matching;
}

void Cloud::clearReceived() {
    std::lock_guard<std::mutex> lock(mImpl->mutex);
    mImpl->received.clear();
    mImpl->connections.clear();
}

int Cloud::connectionCount() const {
    std::lock_guard<std::mutex> lock(mImpl->mutex);
    return static_cast<int>(mImpl->connections.size());
}

}  // namespace quilcloud
