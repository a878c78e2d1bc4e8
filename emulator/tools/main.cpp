// quil-cloud: the local cloud as a process, for the demo and for trying the
// library by hand. Listens on loopback only and runs until SIGINT or SIGTERM.
#include <httplib.h>
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
    "       quil-cloud control [--ca FILE] URL [KEY=VALUE...]\n"
    "                       post the fields to a running cloud's control route\n"
    "                       (e.g. BASE/quil-cloud/super_admin deviceId=ID userId=N)\n"
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

bool isLoopback(const std::string& host) {
    return host == "localhost" || host == "[::1]" || host.rfind("127.", 0) == 0;
}

// `quil-cloud control`: one form POST to a cloud on loopback; prints the
// answer and succeeds on a 2xx status.
int control(int argc, char** argv) {
    int i = 2;
    std::string caFile;
    if (i + 1 < argc && std::strcmp(argv[i], "--ca") == 0) {
        caFile = argv[i + 1];
        i += 2;
    }
    if (i >= argc) {
        std::cerr << kUsage;
        return 2;
    }
    const std::string url = argv[i++];
    const size_t hostStart = url.find("://");
    const size_t pathStart =
        hostStart == std::string::npos ? hostStart : url.find('/', hostStart + 3);
    const std::string origin = url.substr(0, pathStart);
    std::string host = hostStart == std::string::npos ? "" : origin.substr(hostStart + 3);
    host = host.substr(0, host[0] == '[' ? host.find(']') + 1 : host.rfind(':'));
    if (!isLoopback(host)) {
        std::cerr << "quil-cloud control: not a loopback URL: " << url << "\n";
        return 2;
    }
    httplib::Params fields;
    for (; i < argc; ++i) {
        const std::string field = argv[i];
        const size_t eq = field.find('=');
        fields.emplace(field.substr(0, eq), eq == std::string::npos ? "" : field.substr(eq + 1));
    }
    httplib::Client client(origin);
    if (!caFile.empty()) client.set_ca_cert_path(caFile.c_str());
    auto result = client.Post(pathStart == std::string::npos ? "/" : url.substr(pathStart), fields);
    if (!result) {
        std::cerr << "quil-cloud control: " << httplib::to_string(result.error()) << "\n";
        return 1;
    }
    std::cout << result->body << std::endl;
    return result->status / 100 == 2 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::strcmp(argv[1], "control") == 0) return control(argc, argv);
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
