// Logging, configuration, commands, files, clock and random sources of the
// Linux port. Every absolute device path is looked up under $VELMAR_ROOT.
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "velmar/crypto/RandomUtils.h"
#include "velmar/utils/ConfigFile.h"
#include "velmar/utils/ExecUtils.h"
#include "velmar/utils/FileUtils.h"
#include "velmar/utils/Logging.h"
#include "velmar/utils/TimeUtils.h"
#include "velmar/utils/UUIDUtils.h"

namespace velmar {
namespace utils {

namespace {

std::string trim(const std::string& text) {
    size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string::npos) return std::string();
    size_t end = text.find_last_not_of(" \t\r\n");
    return text.substr(begin, end - begin + 1);
}

}  // namespace

Logging::Logging(int level, const char* sourceFile, int line)
    : mLevel(level), mSourceFile(sourceFile), mLine(line) {}

Logging::~Logging() {
    // Every level goes out with priority 3; the level only orders our own reading.
    (void)mLevel;
    std::string text = std::string(mSourceFile ? mSourceFile : "") + ":" + std::to_string(mLine) +
                       ": " + mStream.str() + "\n";
    syslog(3, "%s", text.c_str());
    const char* mirror = std::getenv("VELMAR_LOG_STDERR");
    if (mirror != nullptr && std::strcmp(mirror, "1") == 0) {
        // One write per line so that lines of several threads do not interleave.
        ssize_t ignored = ::write(STDERR_FILENO, text.data(), text.size());
        (void)ignored;
    }
}

ConfigFile::ConfigFile(const std::string& path) {
    std::ifstream in(FileUtils::devicePath(path));
    std::string line;
    while (std::getline(in, line)) {
        std::string text = trim(line);
        if (text.empty() || text[0] == '#') continue;
        size_t eq = text.find('=');
        if (eq == std::string::npos) continue;
        mValues[trim(text.substr(0, eq))] = trim(text.substr(eq + 1));
    }
}

std::string ConfigFile::get(const std::string& key) const {
    auto it = mValues.find(key);
    return it == mValues.end() ? std::string() : it->second;
}

int ExecUtils::exec(std::string& output, const std::string& command) {
    output.clear();
    // A device tool named by its absolute path runs from the sandbox root.
    std::string line = command;
    const char* root = std::getenv("VELMAR_ROOT");
    if (root != nullptr && root[0] != '\0' && !line.empty() && line[0] == '/') {
        line = std::string(root) + line;
    }
    FILE* pipe = ::popen(line.c_str(), "re");
    if (pipe == nullptr) return -1;
    char buffer[4096];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof(buffer), pipe)) > 0)
        output.append(buffer, n);
    int status = ::pclose(pipe);
    if (status == -1) return -1;
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    return 128 + (WIFSIGNALED(status) ? WTERMSIG(status) : 0);
}

std::string FileUtils::devicePath(const std::string& path) {
    const char* root = std::getenv("VELMAR_ROOT");
    if (root == nullptr || root[0] == '\0' || path.empty() || path[0] != '/') return path;
    return std::string(root) + path;
}

bool FileUtils::writeAtomically(const std::string& path, const std::string& content) {
    const std::string target = devicePath(path);
    std::string temp = target + ".tmpXXXXXX";
    int fd = ::mkstemp(&temp[0]);
    if (fd < 0) return false;
    const char* data = content.data();
    size_t left = content.size();
    bool ok = true;
    while (left > 0) {
        ssize_t written = ::write(fd, data, left);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            ok = false;
            break;
        }
        data += written;
        left -= static_cast<size_t>(written);
    }
    ok = ok && ::fchmod(fd, 0644) == 0 && ::fsync(fd) == 0;
    ok = ::close(fd) == 0 && ok;
    ok = ok && ::rename(temp.c_str(), target.c_str()) == 0;
    if (!ok) ::unlink(temp.c_str());
    return ok;
}

long long TimeUtils::currentTimeMillis() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::string UUIDUtils::generate() {
    std::vector<unsigned char> b = crypto::RandomUtils::nextBytes(16);
    b[6] = static_cast<unsigned char>((b[6] & 0x0f) | 0x40);  // version 4
    b[8] = static_cast<unsigned char>((b[8] & 0x3f) | 0x80);  // RFC 4122 variant
    char text[37];
    std::snprintf(text, sizeof(text),
                  "%02x%02x%02x%02x-%02x%02x-%02x%02x-%02x%02x-%02x%02x%02x%02x%02x%02x", b[0],
                  b[1], b[2], b[3], b[4], b[5], b[6], b[7], b[8], b[9], b[10], b[11], b[12], b[13],
                  b[14], b[15]);
    return text;
}

}  // namespace utils

namespace crypto {

std::vector<unsigned char> RandomUtils::nextBytes(unsigned count) {
    std::vector<unsigned char> out(count);
    size_t filled = 0;
    while (filled < count) {
        ssize_t n = ::getrandom(out.data() + filled, count - filled, 0);
        if (n < 0) {
            if (errno == EINTR) continue;
            std::abort();  // no entropy source: nothing secure can be made
        }
        filled += static_cast<size_t>(n);
    }
    return out;
}

}  // namespace crypto
}  // namespace velmar
