// quil-cloud: the local cloud as a process, for the demo and for trying the
// library by hand. Listens on loopback only and runs until SIGINT or SIGTERM.
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>

#include "quilcloud/Cloud.h"

namespace {

const char kUsage[] =
    "usage: quil-cloud [options]\n"
    "  --bind ADDR          loopback address to listen on (default 127.0.0.1)\n"
    "  --port N             HTTP(S) port (default 0: any free port)\n"
    "  --tls                serve HTTPS with a certificate authority made for the run\n"
    "  --work-dir DIR       where ca.pem, server.pem and server.key go (default: a temp dir)\n"
    "  --device-store DIR   register the device whose store is DIR\n"
    "  --dns-port N         also answer DNS on this UDP port (0: any free port)\n"
    "  --extra-name NAME    another name for the certificate (repeatable)\n"
    "  --ready-file FILE    once listening, write {\"baseUrl\",\"caFile\",\"dnsServers\"} here\n"
    "  --verbose            log every request to standard error\n"
    "  --help               this text\n";

std::string jsonString(const std::string& text) {
    std::string out = "\"";
    for (unsigned char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c < 0x20) {
            char buffer[8];
            std::snprintf(buffer, sizeof(buffer), "\\u%04x", c);
            out += buffer;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

bool parsePort(const char* text, int& port) {
    char* end = nullptr;
    long value = std::strtol(text, &end, 10);
    if (!*text || *end || value < 0 || value > 65535) return false;
    port = static_cast<int>(value);
    return true;
}

// Written to a temporary name and renamed, so a reader polling for the file
// never sees half of it.
bool writeReadyFile(const std::string& path, const quilcloud::Cloud& cloud) {
    const std::string temporary = path + ".tmp";
    {
        std::ofstream out(temporary, std::ios::trunc);
        out << "{\"baseUrl\":" << jsonString(cloud.baseUrl())
            << ",\"caFile\":" << jsonString(cloud.caFile())
            << ",\"dnsServers\":" << jsonString(cloud.dnsServers()) << "}\n";
        if (!out.flush()) return false;
    }
    return std::rename(temporary.c_str(), path.c_str()) == 0;
}

}  // namespace

int main(int argc, char** argv) {
    quilcloud::Cloud::Options options;
    std::string readyFile;
    bool verbose = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&]() -> const char* {
            if (i + 1 >= argc) {
                std::cerr << "quil-cloud: " << arg << " needs a value\n" << kUsage;
                std::exit(2);
            }
            return argv[++i];
        };
        if (arg == "--help" || arg == "-h") {
            std::cout << kUsage;
            return 0;
        } else if (arg == "--bind") {
            options.bindAddress = value();
        } else if (arg == "--port" || arg == "--dns-port") {
            int port = 0;
            const char* text = value();
            if (!parsePort(text, port)) {
                std::cerr << "quil-cloud: bad port for " << arg << ": " << text << "\n";
                return 2;
            }
            (arg == "--port" ? options.port : options.dnsPort) = port;
        } else if (arg == "--tls") {
            options.tls = true;
        } else if (arg == "--work-dir") {
            options.workDir = value();
        } else if (arg == "--device-store") {
            options.deviceStore = value();
        } else if (arg == "--extra-name") {
            options.extraNames.push_back(value());
        } else if (arg == "--ready-file") {
            readyFile = value();
        } else if (arg == "--verbose" || arg == "-v") {
            verbose = true;
        } else {
            std::cerr << "quil-cloud: unknown option " << arg << "\n" << kUsage;
            return 2;
        }
    }
    if (verbose) {
        options.requestLog = [](const std::string& line) {
            std::fprintf(stderr, "quil-cloud: %s\n", line.c_str());
        };
    }

    // Every thread the cloud starts inherits this mask; sigwait below is then
    // the only place the signals arrive.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    signal(SIGPIPE, SIG_IGN);

    quilcloud::Cloud cloud(options);
    if (!options.deviceStore.empty() && cloud.registry().size() == 0) {
        std::cerr << "quil-cloud: warning: no device registered from " << options.deviceStore
                  << " (no deviceid file)\n";
    }
    if (!cloud.start()) {
        std::cerr << "quil-cloud: " << cloud.error() << "\n";
        return 1;
    }
    std::cout << cloud.baseUrl() << std::endl;
    if (verbose) {
        std::cerr << "quil-cloud: listening on " << cloud.baseUrl();
        if (!cloud.caFile().empty()) std::cerr << ", CA " << cloud.caFile();
        if (!cloud.dnsServers().empty()) std::cerr << ", DNS " << cloud.dnsServers();
        std::cerr << "\n";
    }
    if (!readyFile.empty() && !writeReadyFile(readyFile, cloud)) {
        std::cerr << "quil-cloud: cannot write " << readyFile << ": " << std::strerror(errno)
                  << "\n";
        return 1;
    }

    int received = 0;
    sigwait(&signals, &received);
    if (verbose) std::cerr << "quil-cloud: " << strsignal(received) << ", stopping\n";
    cloud.stop();
    return 0;
}
