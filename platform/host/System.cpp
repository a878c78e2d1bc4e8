// Logging, clock and random sources of the Linux port.
#include <fcntl.h>
#include <sys/random.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "LogLine.h"
#include "velmar/PortVersion.h"
#include "velmar/crypto/RandomUtils.h"
#include "velmar/utils/Logging.h"
#include "velmar/utils/TimeUtils.h"
#include "velmar/utils/UUIDUtils.h"

namespace velmar {

namespace {

bool writeAll(int fd, const char* data, size_t size) {
    while (size > 0) {
        ssize_t n = ::write(fd, data, size);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        data += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

// GCOVR_EXCL_START: only a kernel without getrandom() (before 3.17) comes here.
bool readUrandom(unsigned char* out, size_t size) {
    int fd = ::open("/dev/urandom", O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    size_t filled = 0;
    while (filled < size) {
        ssize_t n = ::read(fd, out + filled, size - filled);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        filled += static_cast<size_t>(n);
    }
    ::close(fd);
    return filled == size;
}
// GCOVR_EXCL_STOP

}  // namespace

namespace utils {

Logging::Logging(int level, const char* sourceFile, int line)
    : mLevel(level), mSourceFile(sourceFile), mLine(line) {}

Logging::~Logging() {
    // Every level goes to syslog with priority 3, as the device's log
    // collection expects; the level only grades the line for a reader.
    (void)mLevel;
    const char* file = mSourceFile != nullptr ? mSourceFile : "?";
    if (const char* slash = std::strrchr(file, '/')) file = slash + 1;
    // Masked and escaped here, so that every sink gets the same safe line and
    // one statement is one line, whatever an answer holds.
    std::string text = host::escapeControls(std::string(file) + ":" + std::to_string(mLine) + ": " +
                                            host::maskCredentials(mStream.str()));
    text += '\n';
    syslog(3, "%s", text.c_str());
    const char* mirror = std::getenv("VELMAR_LOG_STDERR");
    if (mirror != nullptr && std::strcmp(mirror, "1") == 0) {
        // One write per line, so that lines of several threads never interleave.
        writeAll(STDERR_FILENO, text.data(), text.size());
    }
}

long long TimeUtils::currentTimeMillis() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::string UUIDUtils::generate() {
    std::vector<unsigned char> b = crypto::RandomUtils::nextBytes(16);
    b[6] = static_cast<unsigned char>((b[6] & 0x0f) | 0x40);  // version 4
    b[8] = static_cast<unsigned char>((b[8] & 0x3f) | 0x80);  // RFC 4122 variant
    static const char kHex[] = "0123456789abcdef";
    char text[36];
    size_t at = 0;
    for (size_t i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text[at++] = '-';
        text[at++] = kHex[b[i] >> 4];
        text[at++] = kHex[b[i] & 0x0f];
    }
    return std::string(text, sizeof(text));
}

}  // namespace utils

namespace crypto {

std::vector<unsigned char> RandomUtils::nextBytes(unsigned count) {
    std::vector<unsigned char> out(count);
    size_t filled = 0;
    while (filled < count) {
        ssize_t n = ::getrandom(out.data() + filled, count - filled, 0);
        if (n > 0) {
            filled += static_cast<size_t>(n);
            // GCOVR_EXCL_START: getrandom() fails only when interrupted, on a kernel
            // without it (3.17) or with no random source: none can be made here.
        } else if (n < 0 && errno == EINTR) {
            continue;
        } else if (n < 0 && errno == ENOSYS && readUrandom(out.data() + filled, count - filled)) {
            break;  // a kernel older than getrandom()
        } else {
            // Nonces and identifiers made from anything weaker would be
            // guessable; stopping is the only safe answer.
            static const char message[] = "velmar: no system random source\n";
            writeAll(STDERR_FILENO, message, sizeof(message) - 1);
            std::abort();
            // GCOVR_EXCL_STOP
        }
    }
    return out;
}

}  // namespace crypto
}  // namespace velmar

const char* velmar_port_version(void) {
    return VELMAR_PORT_VERSION_TEXT;
}
