#include "LoopbackServer.h"

#include <httplib.h>
#include <signal.h>
#include <sys/socket.h>

#include <chrono>
#include <thread>

namespace bench {

namespace {

// Every client connection keeps a worker while it stays open: enough for all
// the pooled handles of the library and the bare clients at once.
constexpr size_t kWorkers = 64;

}  // namespace

struct LoopbackServer::Impl {
    std::unique_ptr<httplib::Server> server;
    std::thread thread;
};

LoopbackServer::LoopbackServer(const CertificateFiles* certificate, const std::string& body,
                               int delayMs)
    : mImpl(new Impl), mCertificate(certificate), mBody(body), mDelayMs(delayMs) {}

LoopbackServer::~LoopbackServer() {
    if (mImpl->server) mImpl->server->stop();
    if (mImpl->thread.joinable()) mImpl->thread.join();
}

bool LoopbackServer::start() {
    // A client that goes away mid-answer must not kill the benchmark.
    signal(SIGPIPE, SIG_IGN);
    if (mCertificate != nullptr) {
        mImpl->server = std::make_unique<httplib::SSLServer>(mCertificate->certFile.c_str(),
                                                             mCertificate->keyFile.c_str());
    } else {
        mImpl->server = std::make_unique<httplib::Server>();
    }
    httplib::Server& server = *mImpl->server;
    if (!server.is_valid()) {
        mError = "the server could not be set up";
        return false;
    }
    server.new_task_queue = [] { return new httplib::ThreadPool(kWorkers); };
    // A connection serves as many requests as the client sends while it is
    // busy; one idle for a second is closed, so that stopping the server
    // does not wait long on connections the clients still hold.
    server.set_keep_alive_max_count(1000000);
    server.set_keep_alive_timeout(1);
    // Headers and body leave in separate writes; without this the body waits
    // for the client's delayed acknowledgement.
    server.set_tcp_nodelay(true);
    const std::string body = mBody;
    const auto delay = std::chrono::milliseconds(mDelayMs);
    auto answer = [body, delay](const httplib::Request&, httplib::Response& res) {
        if (delay.count() > 0) std::this_thread::sleep_for(delay);
        res.set_content(body, "application/json");
    };
    server.Get(".*", answer);
    server.Post(".*", answer);
    int listening = -1;
    server.set_socket_options([&listening](int sock) {
        int on = 1;
        setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
        listening = sock;
    });
    mPort = server.bind_to_any_port("127.0.0.1");
    if (mPort <= 0) {
        mError = "cannot bind a loopback port";
        return false;
    }
    // cpp-httplib listens with a backlog of 5: eight threads connecting at
    // once would overflow it and wait a second for their SYN to be resent.
    if (listening >= 0) ::listen(listening, 128);
    mImpl->thread = std::thread([&server] { server.listen_after_bind(); });
    for (int i = 0; i < 500 && !server.is_running(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    if (!server.is_running()) {
        mError = "the server did not start";
        return false;
    }
    return true;
}

std::string LoopbackServer::baseUrl() const {
    return std::string(mCertificate != nullptr ? "https" : "http") +
           "://127.0.0.1:" + std::to_string(mPort);
}

}  // namespace bench
