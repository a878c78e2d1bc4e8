// A minimal HTTP or HTTPS server on 127.0.0.1 that answers every request with
// one fixed body, so that what a benchmark times is the client's work; or,
// standing in for a distant cloud, answers it after a fixed wait.
#pragma once

#include <memory>
#include <string>

#include "Certificates.h"  // quil-cloud's: a CA for the run and a certificate it signs

namespace bench {

using quilcloud::CertificateFiles;

class LoopbackServer {
  public:
    // Plain HTTP when `certificate` is null.
    LoopbackServer(const CertificateFiles* certificate, const std::string& body, int delayMs = 0);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    // False with a reason in error().
    bool start();
    const std::string& error() const { return mError; }
    std::string baseUrl() const;  // "http(s)://127.0.0.1:PORT"

  private:
    struct Impl;
    std::unique_ptr<Impl> mImpl;
    const CertificateFiles* mCertificate;
    std::string mBody;
    int mDelayMs;
    std::string mError;
    int mPort = 0;
};

}  // namespace bench
