// The local cloud's life cycle: its work folder and certificates, the HTTP(S)
// server on loopback and its threads, the DNS responder, start and stop, and
// the addresses it gives its clients.
#include <arpa/inet.h>
#include <stdlib.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "CloudImpl.h"
#include "Connections.h"
#include "WireText.h"
#include "WorkerPool.h"
#include "routes/Routes.h"

namespace quilcloud {

namespace {

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

}  // namespace

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

Registry& Cloud::registry() {
    return mImpl->registry;
}

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

}  // namespace quilcloud
