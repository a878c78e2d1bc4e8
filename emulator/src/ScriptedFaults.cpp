// Scripted answers and faults: what a test puts in place of a route (an
// answer, a delay, a reset, a truncated, oversized, cut or trickled body), and
// how each is played on the connection.
#include <sys/socket.h>

#include <algorithm>
#include <memory>

#include "CloudImpl.h"
#include "Connections.h"
#include "WireText.h"

namespace quilcloud {

namespace {

// A script of `kind`, every other member at its default.
Scripted ofKind(Scripted::Kind kind, const std::string& body = "") {
    Scripted s;
    s.kind = kind;
    s.body = body;
    return s;
}

// The answer a script gives as it is: its status, body and type.
Reply scriptedReply(const Scripted& s) {
    Reply reply;
    reply.status = s.status;
    reply.body = s.body;
    reply.contentType = s.contentType;
    return reply;
}

}  // namespace

Scripted Scripted::answer(int status, const std::string& body) {
    Scripted s = ofKind(Kind::Answer, body);
    s.status = status;
    return s;
}

Scripted Scripted::delay(int ms) {
    Scripted s = ofKind(Kind::Delay);
    s.delayMs = ms;
    return s;
}

Scripted Scripted::reset() {
    return ofKind(Kind::Reset);
}

Scripted Scripted::truncate(const std::string& body) {
    return ofKind(Kind::Truncate, body);
}

Scripted Scripted::oversize(size_t bytes, bool chunked) {
    Scripted s = ofKind(Kind::Oversize);
    s.oversizeBytes = bytes;
    s.chunked = chunked;
    return s;
}

Scripted Scripted::resetMidAnswer(const std::string& body) {
    return ofKind(Kind::ResetMidAnswer, body);
}

Scripted Scripted::trickle(size_t bytes, int everyMs) {
    Scripted s = ofKind(Kind::Trickle);
    s.trickleBytes = bytes;
    s.trickleMs = everyMs;
    return s;
}

void Cloud::script(const std::string& path, const Scripted& scripted) {
    if (scripted.times == 0) return;
    std::lock_guard<std::mutex> lock(mImpl->mutex);
    mImpl->scripts.emplace_back(path, scripted);
}

void Cloud::clearScripts() {
    std::lock_guard<std::mutex> lock(mImpl->mutex);
    mImpl->scripts.clear();
}

std::optional<Scripted> Cloud::Impl::takeScript(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex);
    for (auto it = scripts.rbegin(); it != scripts.rend(); ++it) {
        if (!pathMatches(it->first, path)) continue;
        Scripted taken = it->second;
        if (it->second.times > 0 && --it->second.times == 0) scripts.erase(std::next(it).base());
        return taken;
    }
    return std::nullopt;
}

std::string Cloud::Impl::answerScripted(const Scripted& s, const Received& r,
                                        httplib::Response& response) {
    switch (s.kind) {
        case Scripted::Kind::Answer:
            return "scripted " + apply(scriptedReply(s), response);
        case Scripted::Kind::Delay: {
            if (!sleepUnlessStopped(s.delayMs)) {
                // A cloud that is going away answers nothing more.
                resetConnection(r);
                response.status = 500;
                return "cut short by stop()";
            }
            return answerScriptedOrRoute(s, r, response) + " after " + std::to_string(s.delayMs) +
                   " ms";
        }
        case Scripted::Kind::Reset:
            resetConnection(r);
            // Never sent: the connection is already closed both ways.
            response.status = 500;
            return "reset";
        case Scripted::Kind::Truncate: {
            if (s.body.empty()) {
                resetConnection(r);
                response.status = 500;
                return "truncated to nothing";
            }
            response.status = s.status;
            auto body = std::make_shared<const std::string>(s.body);
            response.set_content_provider(
                body->size(), s.contentType,
                [this, body, r](size_t offset, size_t, httplib::DataSink& sink) {
                    const size_t half = body->size() / 2;
                    if (offset < half && !sink.write(body->data() + offset, half - offset)) {
                        return false;
                    }
                    resetConnection(r);
                    return false;
                });
            return "truncated to " + std::to_string(body->size() / 2) + " of " +
                   std::to_string(body->size()) + " bytes";
        }
        case Scripted::Kind::Oversize: {
            response.status = 200;
            static const std::string filler(64 * 1024, 'x');
            const size_t total = s.oversizeBytes;
            if (s.chunked) {
                response.set_chunked_content_provider(
                    s.contentType, [this, total](size_t offset, httplib::DataSink& sink) {
                        if (isStopping()) return false;
                        if (offset >= total) {
                            sink.done();
                            return true;
                        }
                        return sink.write(filler.data(), std::min(total - offset, filler.size()));
                    });
            } else {
                response.set_content_provider(
                    total, s.contentType, [this](size_t, size_t length, httplib::DataSink& sink) {
                        if (isStopping()) return false;
                        return sink.write(filler.data(), std::min(length, filler.size()));
                    });
            }
            return "200 oversize " + std::to_string(total) + (s.chunked ? " chunked" : "") +
                   " bytes";
        }
        case Scripted::Kind::ResetMidAnswer: {
            // The headers are out before the provider is first asked for
            // body bytes; the pause lets the client read them first.
            response.status = s.status;
            response.set_content_provider(std::max<size_t>(s.body.size(), 1), s.contentType,
                                          [this, r](size_t, size_t, httplib::DataSink&) {
                                              sleepUnlessStopped(20);
                                              abortConnection(r);
                                              return false;
                                          });
            return "reset after the headers";
        }
        case Scripted::Kind::Trickle: {
            std::string outcome = answerScriptedOrRoute(s, r, response);
            auto body = std::make_shared<const std::string>(std::move(response.body));
            response.body.clear();
            const std::string type = response.get_header_value("Content-Type");
            response.headers.erase("Content-Type");
            const size_t step = std::max<size_t>(s.trickleBytes, 1);
            const int everyMs = s.trickleMs;
            response.set_content_provider(
                body->size(), type,
                [this, body, step, everyMs](size_t offset, size_t length, httplib::DataSink& sink) {
                    if (offset > 0 && !sleepUnlessStopped(everyMs)) return false;
                    return sink.write(body->data() + offset, std::min(step, length));
                });
            return outcome + " trickled " + std::to_string(step) + " bytes every " +
                   std::to_string(everyMs) + " ms";
        }
    }
    return "";
}

std::string Cloud::Impl::answerScriptedOrRoute(const Scripted& s, const Received& request,
                                               httplib::Response& response) {
    if (s.body.empty()) return answerWithRoute(request, response);
    return "scripted " + apply(scriptedReply(s), response);
}

void Cloud::Impl::resetConnection(const Received& request) {
    shutDownConnections(address, port, request.remoteAddr, request.remotePort);
}

void Cloud::Impl::abortConnection(const Received& request) {
    // Connecting a TCP socket to AF_UNSPEC disconnects it, with a reset when
    // the connection was established.
    forEachConnection(address, port, request.remoteAddr, request.remotePort, [](int fd) {
        sockaddr unspecified{};
        unspecified.sa_family = AF_UNSPEC;
        connect(fd, &unspecified, sizeof(unspecified));
    });
}

}  // namespace quilcloud
