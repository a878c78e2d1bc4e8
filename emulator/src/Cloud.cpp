#include "quilcloud/Cloud.h"

#include <arpa/inet.h>
#include <httplib.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <mutex>
#include <set>
#include <thread>

#include "Certificates.h"
#include "Connections.h"
#include "DeviceAuth.h"
#include "DnsResponder.h"
#include "routes/Routes.h"

namespace quilcloud {

namespace {

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

std::string trim(const std::string& text) {
    size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string::npos) return "";
    size_t end = text.find_last_not_of(" \t");
    return text.substr(begin, end - begin + 1);
}

// "k=v; k2=v2" as a client sends it; values are taken as they are.
void parseCookies(const std::string& header, std::map<std::string, std::string>& cookies) {
    size_t start = 0;
    while (start <= header.size()) {
        size_t end = header.find(';', start);
        if (end == std::string::npos) end = header.size();
        std::string pair = trim(header.substr(start, end - start));
        size_t equals = pair.find('=');
        if (!pair.empty() && equals != 0) {
            if (equals == std::string::npos) {
                cookies[pair] = "";
            } else {
                cookies[trim(pair.substr(0, equals))] = trim(pair.substr(equals + 1));
            }
        }
        start = end + 1;
    }
}

// The numeric form of a loopback address ("localhost" included); "" for any other.
std::string loopbackAddress(const std::string& address) {
    if (address == "localhost") return "127.0.0.1";
    char text[INET6_ADDRSTRLEN] = {};
    in_addr v4{};
    in6_addr v6{};
    if (inet_pton(AF_INET, address.c_str(), &v4) == 1) {
        if ((ntohl(v4.s_addr) >> 24) != 127) return "";
        return inet_ntop(AF_INET, &v4, text, sizeof(text)) ? text : "";
    }
    if (inet_pton(AF_INET6, address.c_str(), &v6) == 1) {
        if (!IN6_IS_ADDR_LOOPBACK(&v6)) return "";
        return inet_ntop(AF_INET6, &v6, text, sizeof(text)) ? text : "";
    }
    return "";
}

std::string hostPart(const std::string& address) {
    return address.find(':') == std::string::npos ? address : "[" + address + "]";
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// "+" is a space, "%XX" a byte; a "%" not followed by two hex digits stays.
std::string formDecode(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        int high = 0, low = 0;
        if (text[i] == '+') {
            out += ' ';
        } else if (text[i] == '%' && i + 2 < text.size() && (high = hexDigit(text[i + 1])) >= 0 &&
                   (low = hexDigit(text[i + 2])) >= 0) {
            out += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

std::vector<std::pair<std::string, std::string>> decodeForm(const std::string& body) {
    std::vector<std::pair<std::string, std::string>> pairs;
    size_t start = 0;
    while (start < body.size()) {
        size_t end = body.find('&', start);
        if (end == std::string::npos) end = body.size();
        const std::string pair = body.substr(start, end - start);
        if (!pair.empty()) {
            size_t equals = pair.find('=');
            if (equals == std::string::npos) {
                pairs.emplace_back(formDecode(pair), "");
            } else {
                pairs.emplace_back(formDecode(pair.substr(0, equals)),
                                   formDecode(pair.substr(equals + 1)));
            }
        }
        start = end + 1;
    }
    return pairs;
}

bool pathMatches(const std::string& pattern, const std::string& path) {
    if (pattern == "*") return true;
    if (!pattern.empty() && pattern.back() == '*') {
        return path.compare(0, pattern.size() - 1, pattern, 0, pattern.size() - 1) == 0;
    }
    return pattern == path;
}

// Writes to a connection the client already closed must fail with EPIPE, not
// kill the process: OpenSSL writes to the socket without MSG_NOSIGNAL. A
// blocked SIGPIPE stays pending on the thread and is dropped with it.
void blockSigpipe() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

// Connection workers for the server. A worker stays with its connection while
// the client keeps it alive, so a fixed pool would leave the next client
// waiting for an idle one to time out; this one grows instead.
class WorkerPool : public httplib::TaskQueue {
  public:
    void enqueue(std::function<void()> job) override {
        std::lock_guard<std::mutex> lock(mMutex);
        mJobs.push_back(std::move(job));
        if (mJobs.size() > mIdle && mThreads.size() < kMaxThreads) {
            mThreads.emplace_back([this] { run(); });
        } else {
            mWake.notify_one();
        }
    }

    void shutdown() override {
        {
            std::lock_guard<std::mutex> lock(mMutex);
            mShutdown = true;
        }
        mWake.notify_all();
        for (auto& thread : mThreads)
            thread.join();
    }

  private:
    static constexpr size_t kMaxThreads = 256;

    void run() {
        blockSigpipe();
        for (;;) {
            std::function<void()> job;
            {
                std::unique_lock<std::mutex> lock(mMutex);
                ++mIdle;
                mWake.wait(lock, [this] { return mShutdown || !mJobs.empty(); });
                --mIdle;
                if (mJobs.empty()) return;
                job = std::move(mJobs.front());
                mJobs.pop_front();
            }
            job();
        }
    }

    std::mutex mMutex;
    std::condition_variable mWake;
    std::deque<std::function<void()>> mJobs;
    std::vector<std::thread> mThreads;
    size_t mIdle = 0;
    bool mShutdown = false;
};

}  // namespace

std::string Received::header(const std::string& name) const {
    auto it = headers.find(lower(name));
    return it == headers.end() ? std::string() : it->second;
}

std::string Received::param(const std::string& name) const {
    auto it = params.find(name);
    return it == params.end() ? std::string() : it->second;
}

Scripted Scripted::answer(int status, const std::string& body) {
    Scripted s;
    s.kind = Kind::Answer;
    s.status = status;
    s.body = body;
    return s;
}

Scripted Scripted::delay(int ms) {
    Scripted s;
    s.kind = Kind::Delay;
    s.delayMs = ms;
    return s;
}

Scripted Scripted::reset() {
    Scripted s;
    s.kind = Kind::Reset;
    return s;
}

Scripted Scripted::truncate(const std::string& body) {
    Scripted s;
    s.kind = Kind::Truncate;
    s.body = body;
    return s;
}

Scripted Scripted::oversize(size_t bytes) {
    Scripted s;
    s.kind = Kind::Oversize;
    s.oversizeBytes = bytes;
    return s;
}

Scripted Scripted::resetMidAnswer(const std::string& body) {
    Scripted s;
    s.kind = Kind::ResetMidAnswer;
    s.body = body;
    return s;
}

Scripted Scripted::trickle(size_t bytes, int everyMs) {
    Scripted s;
    s.kind = Kind::Trickle;
    s.trickleBytes = bytes;
    s.trickleMs = everyMs;
    return s;
}

struct Cloud::Impl {
    explicit Impl(const Options& o) : options(o) {}

    struct Route {
        std::string method;
        std::string path;
        Handler handler;
    };

    Options options;
    Registry registry;
    std::string error;
    std::string address;  // numeric loopback address served on
    std::string workDir;
    bool ownsWorkDir = false;
    CertificateFiles certificates;

    std::mutex lifecycleMutex;  // start() and stop()
    std::unique_ptr<httplib::Server> server;
    std::thread serverThread;
    std::atomic<bool> serverDone{false};
    int port = 0;
    int lastPort = 0;
    int listenSocket = -1;
    DnsResponder dns;
    bool dnsRunning = false;
    int lastDnsPort = 0;

    std::mutex stopMutex;
    std::condition_variable stopWake;
    bool stopping = false;

    mutable std::mutex mutex;  // everything below
    std::vector<Received> received;
    std::set<std::pair<std::string, int>> connections;
    std::vector<std::pair<std::string, Scripted>> scripts;  // most recent last
    std::vector<Route> routes;

    bool start();
    void stop();
    void stopLocked();
    bool prepareWorkDir();
    // A body read by cpp-httplib (params already hold its form fields) or by
    // the content reader (`parts` multipart, or a raw body still to parse).
    struct Body {
        const std::string* raw = nullptr;
        const std::vector<httplib::MultipartFormData>* parts = nullptr;
        bool parseForm = false;
    };
    void serve(const httplib::Request& request, httplib::Response& response, const Body& body);
    Received record(const httplib::Request& request, const Body& body);
    std::optional<Scripted> takeScript(const std::string& path);
    std::string answerWithRoute(const Received& request, httplib::Response& response);
    // The script's own body when it has one, the route's answer otherwise.
    std::string answerScriptedOrRoute(const Scripted& s, const Received& request,
                                      httplib::Response& response);
    void resetConnection(const Received& request);
    // Resets the connection (RST) at once, where a shutdown would close it.
    void abortConnection(const Received& request);
    // Sleeps `ms` or until stop(); false when stopping.
    bool sleepUnlessStopped(int ms);
    bool isStopping();
};

namespace {

std::string apply(const Reply& reply, httplib::Response& response) {
    response.status = reply.status;
    for (const auto& [name, value] : reply.headers)
        response.set_header(name, value);
    response.set_content(reply.body, reply.contentType);
    return std::to_string(reply.status);
}

}  // namespace

bool Cloud::Impl::prepareWorkDir() {
    namespace fs = std::filesystem;
    if (!workDir.empty()) return true;
    if (options.workDir.empty()) {
        const char* tmp = getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/quil-cloud-XXXXXX";
        if (!mkdtemp(pattern.data())) {
            error = "cannot make a temporary directory under " + pattern;
            return false;
        }
        workDir = pattern;
        ownsWorkDir = true;
        return true;
    }
    std::error_code ec;
    fs::create_directories(options.workDir, ec);
    if (ec) {
        error = "cannot make the work directory " + options.workDir + ": " + ec.message();
        return false;
    }
    workDir = options.workDir;
    return true;
}

bool Cloud::Impl::start() {
    std::lock_guard<std::mutex> lifecycle(lifecycleMutex);
    if (server) return true;
    error.clear();
    address = loopbackAddress(options.bindAddress);
    if (address.empty()) {
        error = "refusing to listen on " + options.bindAddress + ": not a loopback address";
        return false;
    }
    if (options.tls) {
        if (certificates.caFile.empty() &&
            (!prepareWorkDir() ||
             !makeCertificates(workDir, options.extraNames,
                               options.certificateNotBeforeOffsetSeconds, certificates, error))) {
            certificates = CertificateFiles();
            return false;
        }
        server = std::make_unique<httplib::SSLServer>(certificates.certFile.c_str(),
                                                      certificates.keyFile.c_str());
    } else {
        server = std::make_unique<httplib::Server>();
    }
    if (!server->is_valid()) {
        error = "cannot set up the server (certificate or key refused)";
        server.reset();
        return false;
    }
    {
        std::lock_guard<std::mutex> lock(stopMutex);
        stopping = false;
    }

    server->new_task_queue = [] { return new WorkerPool(); };
    server->set_keep_alive_max_count(1000);
    server->set_keep_alive_timeout(10);
    // Headers and body go out in separate writes; without this a small answer
    // can wait for the client's delayed ACK.
    server->set_tcp_nodelay(true);
    listenSocket = -1;
    // Not cpp-httplib's defaults: they add SO_REUSEPORT, which would let a
    // second cloud bind this same port and take half of its connections.
    server->set_socket_options([this](socket_t sock) {
        int on = 1;
        setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
        listenSocket = sock;
    });
    auto handler = [this](const httplib::Request& request, httplib::Response& response) {
        serve(request, response, Body{&request.body, nullptr, false});
    };
    // cpp-httplib refuses a form body over 8 KiB when it reads the body
    // itself; read through the content reader, any size gets through.
    auto reading = [this](const httplib::Request& request, httplib::Response& response,
                          const httplib::ContentReader& reader) {
        std::string raw;
        std::vector<httplib::MultipartFormData> parts;
        if (request.is_multipart_form_data()) {
            reader(
                [&parts](const httplib::MultipartFormData& part) {
                    parts.push_back(part);
                    return true;
                },
                [&parts](const char* data, size_t size) {
                    if (parts.empty()) return false;
                    parts.back().content.append(data, size);
                    return true;
                });
            serve(request, response, Body{&raw, &parts, false});
        } else {
            reader([&raw](const char* data, size_t size) {
                raw.append(data, size);
                return true;
            });
            serve(request, response, Body{&raw, nullptr, true});
        }
    };
    server->Get(".*", handler);
    server->Options(".*", handler);
    server->Post(".*", reading);
    server->Put(".*", reading);
    server->Patch(".*", reading);
    server->Delete(".*", reading);
    // Bodyless requests of these methods skip the content reader.
    server->Post(".*", handler);
    server->Put(".*", handler);
    server->Patch(".*", handler);
    server->Delete(".*", handler);

    // A restarted cloud comes back where clients knew it, when it can.
    int wanted = options.port != 0 ? options.port : lastPort;
    int bound = -1;
    if (wanted != 0 && server->bind_to_port(address, wanted)) bound = wanted;
    if (bound < 0 && options.port == 0) bound = server->bind_to_any_port(address);
    if (bound <= 0) {
        error = "cannot listen on " + hostPart(address) + ":" + std::to_string(wanted);
        server.reset();
        return false;
    }
    port = lastPort = bound;
    // cpp-httplib listens with a backlog of 5: a burst of clients connecting
    // at once would overflow it and wait a second for the SYN to be resent.
    if (listenSocket >= 0) ::listen(listenSocket, 128);

    serverDone = false;
    serverThread = std::thread([this, listener = server.get()] {
        blockSigpipe();
        listener->listen_after_bind();
        serverDone = true;
    });
    // stop() is lost on a server that has not begun its accept loop.
    while (!server->is_running() && !serverDone)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (!server->is_running()) {
        serverThread.join();
        server.reset();
        error = "the server did not start on " + hostPart(address) + ":" + std::to_string(port);
        return false;
    }

    if (options.dnsPort >= 0 && !dnsRunning) {
        int dnsWanted = options.dnsPort != 0 ? options.dnsPort : lastDnsPort;
        std::string dnsError;
        dnsRunning = (dnsWanted != 0 && dns.start(address, dnsWanted, dnsError)) ||
                     (options.dnsPort == 0 && dns.start(address, 0, dnsError));
        if (!dnsRunning) {
            stopLocked();
            error = dnsError;
            return false;
        }
        lastDnsPort = dns.port();
    }
    return true;
}

void Cloud::Impl::stop() {
    std::lock_guard<std::mutex> lifecycle(lifecycleMutex);
    stopLocked();
}

void Cloud::Impl::stopLocked() {
    {
        std::lock_guard<std::mutex> lock(stopMutex);
        stopping = true;
    }
    stopWake.notify_all();
    if (server) {
        server->stop();
        // Workers wait on idle keep-alive connections (and slow clients) for
        // many seconds; ending those connections lets them finish now.
        shutDownConnections(address, port);
        if (serverThread.joinable()) serverThread.join();
        server.reset();
    }
    if (dnsRunning) {
        dns.stop();
        dnsRunning = false;
    }
}

bool Cloud::Impl::isStopping() {
    std::lock_guard<std::mutex> lock(stopMutex);
    return stopping;
}

bool Cloud::Impl::sleepUnlessStopped(int ms) {
    std::unique_lock<std::mutex> lock(stopMutex);
    return !stopWake.wait_for(lock, std::chrono::milliseconds(std::max(ms, 0)),
                              [this] { return stopping; });
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

std::string Cloud::Impl::answerScriptedOrRoute(const Scripted& s, const Received& request,
                                               httplib::Response& response) {
    if (s.body.empty()) return answerWithRoute(request, response);
    Reply reply;
    reply.status = s.status;
    reply.body = s.body;
    reply.contentType = s.contentType;
    return "scripted " + apply(reply, response);
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

void Cloud::Impl::serve(const httplib::Request& request, httplib::Response& response,
                        const Body& body) {
    const Received r = record(request, body);
    std::optional<Scripted> scripted = takeScript(r.path);
    std::string outcome;
    if (!scripted) {
        outcome = answerWithRoute(r, response);
    } else {
        const Scripted& s = *scripted;
        switch (s.kind) {
            case Scripted::Kind::Answer: {
                Reply reply;
                reply.status = s.status;
                reply.body = s.body;
                reply.contentType = s.contentType;
                outcome = "scripted " + apply(reply, response);
                break;
            }
            case Scripted::Kind::Delay: {
                if (!sleepUnlessStopped(s.delayMs)) {
                    // A cloud that is going away answers nothing more.
                    resetConnection(r);
                    response.status = 500;
                    outcome = "cut short by stop()";
                    break;
                }
                outcome = answerScriptedOrRoute(s, r, response);
                outcome += " after " + std::to_string(s.delayMs) + " ms";
                break;
            }
            case Scripted::Kind::Reset:
                resetConnection(r);
                // Never sent: the connection is already closed both ways.
                response.status = 500;
                outcome = "reset";
                break;
            case Scripted::Kind::Truncate: {
                if (s.body.empty()) {
                    resetConnection(r);
                    response.status = 500;
                    outcome = "truncated to nothing";
                    break;
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
                outcome = "truncated to " + std::to_string(body->size() / 2) + " of " +
                          std::to_string(body->size()) + " bytes";
                break;
            }
            case Scripted::Kind::Oversize: {
                response.status = 200;
                response.set_content_provider(
                    s.oversizeBytes, s.contentType,
                    [this](size_t, size_t length, httplib::DataSink& sink) {
                        static const std::string filler(64 * 1024, 'x');
                        if (isStopping()) return false;
                        return sink.write(filler.data(), std::min(length, filler.size()));
                    });
                outcome = "200 oversize " + std::to_string(s.oversizeBytes) + " bytes";
                break;
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
                outcome = "reset after the headers";
                break;
            }
            case Scripted::Kind::Trickle: {
                outcome = answerScriptedOrRoute(s, r, response);
                auto body = std::make_shared<const std::string>(std::move(response.body));
                response.body.clear();
                const std::string type = response.get_header_value("Content-Type");
                response.headers.erase("Content-Type");
                const size_t step = std::max<size_t>(s.trickleBytes, 1);
                const int everyMs = s.trickleMs;
                response.set_content_provider(
                    body->size(), type,
                    [this, body, step, everyMs](size_t offset, size_t length,
                                                httplib::DataSink& sink) {
                        if (offset > 0 && !sleepUnlessStopped(everyMs)) return false;
                        return sink.write(body->data() + offset, std::min(step, length));
                    });
                outcome += " trickled " + std::to_string(step) + " bytes every " +
                           std::to_string(everyMs) + " ms";
                break;
            }
        }
    }
    if (options.requestLog) {
        std::string line =
            r.method + " " + r.path + (r.query.empty() ? "" : "?" + r.query) + " -> " + outcome;
        options.requestLog(line);
    }
}

Cloud::Cloud(const Options& options) : mImpl(std::make_unique<Impl>(options)) {
    if (!options.deviceStore.empty()) mImpl->registry.loadDeviceStore(options.deviceStore);
    registerAllRoutes(*this);
}

Cloud::~Cloud() {
    stop();
    if (mImpl->ownsWorkDir) {
        std::error_code ignored;
        std::filesystem::remove_all(mImpl->workDir, ignored);
    }
}

bool Cloud::start() {
    return mImpl->start();
}

void Cloud::stop() {
    mImpl->stop();
}

const std::string& Cloud::error() const {
    return mImpl->error;
}

int Cloud::port() const {
    return mImpl->port;
}

std::string Cloud::baseUrl() const {
    return std::string(mImpl->options.tls ? "https://" : "http://") +
           hostPart(mImpl->address.empty() ? "127.0.0.1" : mImpl->address) + ":" +
           std::to_string(mImpl->port);
}

std::string Cloud::caFile() const {
    return mImpl->options.tls ? mImpl->certificates.caFile : "";
}

int Cloud::dnsPort() const {
    return mImpl->dnsRunning ? mImpl->dns.port() : -1;
}

std::string Cloud::dnsServers() const {
    if (!mImpl->dnsRunning) return "";
    return hostPart(mImpl->address) + ":" + std::to_string(mImpl->dns.port());
}

std::vector<std::string> Cloud::dnsQueries() const {
    return mImpl->dns.queries();
}

void Cloud::setDnsAnswer(const std::string& name, const std::string& address) {
    mImpl->dns.setAnswer(name, address);
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

Registry& Cloud::registry() {
    return mImpl->registry;
}

}  // namespace quilcloud
