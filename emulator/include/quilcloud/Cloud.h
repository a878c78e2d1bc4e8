// quil-cloud: the local stand-in for every service the library talks to.
// Tests run it in-process; the demo runs the quil-cloud binary. It listens on
// loopback only, over HTTP or HTTPS (with a certificate authority it makes for
// the run), and optionally answers DNS queries on a loopback UDP port.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "quilcloud/Registry.h"

namespace quilcloud {

// One request as the server received it.
struct Received {
    std::string method;
    std::string path;
    std::string query;                                // raw query string, without "?"
    std::string body;                                 // raw body
    std::multimap<std::string, std::string> headers;  // names in lower case
    std::map<std::string, std::string> params;        // query and form fields decoded (last wins)
    std::multimap<std::string, std::string> fields;   // every decoded query/form pair
    std::map<std::string, std::string> cookies;       // from the Cookie header
    // Multipart parts: name -> content. Parts without a file name are also in
    // params and fields; the raw body of a multipart request is not kept.
    std::map<std::string, std::string> files;
    std::string remoteAddr;
    int remotePort = 0;

    std::string header(const std::string& name) const;  // first value or ""
    std::string param(const std::string& name) const;   // params[name] or ""
};

// What a route handler answers.
struct Reply {
    int status = 200;
    std::string body;
    std::string contentType = "application/json";
    std::vector<std::pair<std::string, std::string>> headers;

    void json(int httpStatus, const std::string& text) {
        status = httpStatus;
        body = text;
    }
};

// A scripted answer or fault, applied instead of the route to the requests
// whose path equals the scripted path ("*" for every path, "/prefix*" for
// every path under a prefix). Scripts are checked before routes; the most
// recent one that matches wins.
struct Scripted {
    enum class Kind {
        Answer,    // status + body as given
        Delay,     // wait delayMs, then answer normally (the route, or body if set)
        Reset,     // close the connection without answering
        Truncate,  // announce the full length of body, send half of it, close
        // A 200 answer of oversizeBytes bytes, its length stated unless
        // chunked (then the client sees the size only as the bytes come).
        Oversize,
        // Send the status line and headers announcing body, then reset the
        // connection (RST) without a byte of the body.
        ResetMidAnswer,
        // Answer normally (the route, or body if set), trickleBytes of the
        // body every trickleMs.
        Trickle,
    };
    Kind kind = Kind::Answer;
    int status = 200;
    std::string body;
    std::string contentType = "application/json";
    int delayMs = 0;
    size_t oversizeBytes = 0;
    bool chunked = false;
    size_t trickleBytes = 0;
    int trickleMs = 0;
    int times = -1;  // how many requests it applies to; -1 for all

    static Scripted answer(int status, const std::string& body);
    static Scripted delay(int ms);
    static Scripted reset();
    static Scripted truncate(const std::string& body);
    static Scripted oversize(size_t bytes, bool chunked = false);
    static Scripted resetMidAnswer(const std::string& body);
    static Scripted trickle(size_t bytes, int everyMs);
};

using Handler = std::function<void(const Received&, Reply&)>;

class Cloud {
  public:
    struct Options {
        bool tls = false;
        std::string bindAddress = "127.0.0.1";
        int port = 0;             // 0: any free port
        std::string workDir;      // where the CA, certificate and key are written; "" = a temp dir
        std::string deviceStore;  // device-store directory to register the device from; "" = none
        int dnsPort = -1;         // -1: no DNS responder, 0: any free port
        std::vector<std::string> extraNames;  // host names added to the certificate
        // When not 0, the server certificate becomes valid this many seconds
        // from now: a certificate "not yet valid" for a client whose clock is right.
        long long certificateNotBeforeOffsetSeconds = 0;
        // Called with one line per request answered ("GET /path?query -> 200"); none when empty.
        std::function<void(const std::string& line)> requestLog;
    };

    explicit Cloud(const Options& options);
    ~Cloud();
    Cloud(const Cloud&) = delete;
    Cloud& operator=(const Cloud&) = delete;

    // Starts listening (and the DNS responder); false with a reason in error().
    bool start();
    void stop();
    const std::string& error() const;

    int port() const;
    std::string baseUrl() const;     // "http(s)://127.0.0.1:PORT"
    std::string caFile() const;      // PEM of the run's CA ("" over plain HTTP)
    int dnsPort() const;             // -1 when no DNS responder runs
    std::string dnsServers() const;  // "127.0.0.1:PORT", as VELMAR_DNS_SERVERS takes it
    // Every DNS name asked so far.
    std::vector<std::string> dnsQueries() const;
    // A records the DNS responder gives (name -> IPv4, case and a final dot
    // ignored); any other name gets 127.0.0.1. An address that is not dotted
    // IPv4 is ignored.
    void setDnsAnswer(const std::string& name, const std::string& address);

    void script(const std::string& path, const Scripted& scripted);
    void clearScripts();

    std::vector<Received> received() const;
    std::vector<Received> received(const std::string& path) const;
    void clearReceived();  // also forgets the connections seen
    // Distinct client connections that carried at least one request.
    int connectionCount() const;

    // Routes of the service families register here (exact path match; a path
    // ending in "*" matches every path that starts with the rest, the longest
    // such prefix winning). A later route for the same method and path
    // replaces the earlier one. HEAD requests reach the GET routes.
    void route(const std::string& method, const std::string& path, Handler handler);

    Registry& registry();

  private:
    struct Impl;
    std::unique_ptr<Impl> mImpl;
};

}  // namespace quilcloud
