// What the host-port benchmarks run against: the sandboxed device, a fixed
// answer server over HTTP and one over HTTPS, one over HTTPS that answers
// after a wait as a distant cloud would, and a stat log to report.
#pragma once

#include <string>

#include "LoopbackServer.h"
#include "Sandbox.h"

namespace bench {

// How long the stand-in for a distant cloud takes to answer.
constexpr int kDistantMs = 2;

// The body every request is answered with.
constexpr const char* kPresenceBody = "{\"code\":0,\"message\":\"ok\",\"data\":{\"online\":true}}";

struct HostEnvironment {
    Sandbox device;
    CertificateFiles certificate;  // made by main, before the servers start
    LoopbackServer http{nullptr, kPresenceBody};
    LoopbackServer https{&certificate, kPresenceBody};
    LoopbackServer distant{&certificate, kPresenceBody, kDistantMs};
    std::string statLog = device.path("stat.log");

    const LoopbackServer& server(bool tls) const { return tls ? https : http; }
};

// Set up by main before any benchmark runs.
HostEnvironment& host();

}  // namespace bench
