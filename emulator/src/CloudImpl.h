// What stands behind a Cloud, shared by the files of its concerns: the
// server's life cycle (ServerLifecycle.cpp), the record of what was received
// (Recording.cpp), scripted faults (ScriptedFaults.cpp) and the way of one
// request to its answer (Dispatch.cpp).
#pragma once

#include <httplib.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Certificates.h"
#include "DnsResponder.h"
#include "quilcloud/Cloud.h"

namespace quilcloud {

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

    // ServerLifecycle.cpp
    bool start();
    void stop();
    void stopLocked();
    bool prepareWorkDir();
    // Sleeps `ms` or until stop(); false when stopping.
    bool sleepUnlessStopped(int ms);
    bool isStopping();

    // Dispatch.cpp
    // A body read by cpp-httplib (params already hold its form fields) or by
    // the content reader (`parts` multipart, or a raw body still to parse).
    struct Body {
        const std::string* raw = nullptr;
        const std::vector<httplib::MultipartFormData>* parts = nullptr;
        bool parseForm = false;
    };
    void serve(const httplib::Request& request, httplib::Response& response, const Body& body);
    std::string answerWithRoute(const Received& request, httplib::Response& response);
    // Puts `reply` into `response`; its status as text, for the request log.
    static std::string apply(const Reply& reply, httplib::Response& response);

    // Recording.cpp
    Received record(const httplib::Request& request, const Body& body);

    // ScriptedFaults.cpp
    std::optional<Scripted> takeScript(const std::string& path);
    // Plays the script on the connection; the outcome, for the request log.
    std::string answerScripted(const Scripted& s, const Received& request,
                               httplib::Response& response);
    // The script's own body when it has one, the route's answer otherwise.
    std::string answerScriptedOrRoute(const Scripted& s, const Received& request,
                                      httplib::Response& response);
    void resetConnection(const Received& request);
    // Resets the connection (RST) at once, where a shutdown would close it.
    void abortConnection(const Received& request);
};

}  // namespace quilcloud
