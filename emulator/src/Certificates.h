// The run's own certificate authority and the server certificate it signs.
#pragma once

#include <string>
#include <vector>

namespace quilcloud {

struct CertificateFiles {
    std::string caFile;    // <dir>/ca.pem
    std::string certFile;  // <dir>/server.pem
    std::string keyFile;   // <dir>/server.key
};

// Makes a fresh CA (EC P-256, CA:TRUE) and a server certificate it signs,
// valid for localhost, 127.0.0.1, ::1 and `extraNames` (an entry that reads
// as an IP address is added as one, any other as a DNS name), and writes
// them as PEM into `dir`. The server certificate becomes valid
// `notBeforeOffsetSeconds` from now (0: an hour ago, as the CA). False with a
// reason in `error`.
bool makeCertificates(const std::string& dir, const std::vector<std::string>& extraNames,
                      long long notBeforeOffsetSeconds, CertificateFiles& files,
                      std::string& error);

}  // namespace quilcloud
