#include "DnsResponder.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "WireText.h"

namespace quilcloud {

namespace {

constexpr uint16_t kTypeA = 1;
constexpr uint16_t kClassIn = 1;
constexpr size_t kHeaderSize = 12;
constexpr size_t kMaxName = 255;

uint16_t read16(const uint8_t* p) {
    return static_cast<uint16_t>((p[0] << 8) | p[1]);
}

void put16(std::vector<uint8_t>& out, uint16_t value) {
    out.push_back(static_cast<uint8_t>(value >> 8));
    out.push_back(static_cast<uint8_t>(value & 0xff));
}

std::string normalName(const std::string& name) {
    std::string out = lower(name);
    if (!out.empty() && out.back() == '.') out.pop_back();
    return out;
}

}  // namespace

std::optional<DnsQuestion> parseQuery(const uint8_t* data, size_t size) {
    if (!data || size < kHeaderSize) return std::nullopt;
    DnsQuestion q;
    q.id = read16(data);
    q.flags = read16(data + 2);
    const bool isResponse = (q.flags & 0x8000) != 0;
    const int opcode = (q.flags >> 11) & 0xf;
    if (isResponse || opcode != 0) return std::nullopt;
    if (read16(data + 4) != 1 || read16(data + 6) != 0 || read16(data + 8) != 0) {
        return std::nullopt;
    }
    size_t pos = kHeaderSize;
    size_t encoded = 0;
    for (;;) {
        if (pos >= size) return std::nullopt;
        const uint8_t length = data[pos++];
        if (length == 0) break;
        // Compression pointers and the reserved label types have no place in a question.
        if ((length & 0xc0) != 0) return std::nullopt;
        encoded += length + 1u;
        if (encoded > kMaxName || length > size - pos) return std::nullopt;
        if (!q.name.empty()) q.name += '.';
        q.name.append(reinterpret_cast<const char*>(data + pos), length);
        pos += length;
    }
    if (size - pos < 4) return std::nullopt;
    q.type = read16(data + pos);
    q.qclass = read16(data + pos + 2);
    q.questionEnd = pos + 4;
    return q;
}

std::vector<uint8_t> buildResponse(const uint8_t* query, const DnsQuestion& question,
                                   std::optional<uint32_t> address) {
    const bool answered = address && question.type == kTypeA && question.qclass == kClassIn;
    std::vector<uint8_t> out;
    out.reserve(question.questionEnd + 16);
    put16(out, question.id);
    // QR, authoritative, recursion desired as asked, recursion available, NOERROR.
    put16(out, static_cast<uint16_t>(0x8000 | 0x0400 | (question.flags & 0x0100) | 0x0080));
    put16(out, 1);
    put16(out, answered ? 1 : 0);
    put16(out, 0);
    put16(out, 0);
    out.insert(out.end(), query + kHeaderSize, query + question.questionEnd);
    if (answered) {
        put16(out, 0xc000 | kHeaderSize);  // the name: a pointer to the question's
        put16(out, kTypeA);
        put16(out, kClassIn);
        put16(out, 0);
        put16(out, 60);  // TTL
        put16(out, 4);
        const uint8_t* bytes = reinterpret_cast<const uint8_t*>(&*address);
        out.insert(out.end(), bytes, bytes + 4);
    }
    return out;
}

DnsResponder::~DnsResponder() {
    stop();
}

bool DnsResponder::start(const std::string& address, int port, std::string& error) {
    sockaddr_storage storage{};
    socklen_t length = 0;
    auto* v4 = reinterpret_cast<sockaddr_in*>(&storage);
    auto* v6 = reinterpret_cast<sockaddr_in6*>(&storage);
    if (inet_pton(AF_INET, address.c_str(), &v4->sin_addr) == 1) {
        v4->sin_family = AF_INET;
        v4->sin_port = htons(static_cast<uint16_t>(port));
        length = sizeof(*v4);
    } else if (inet_pton(AF_INET6, address.c_str(), &v6->sin6_addr) == 1) {
        v6->sin6_family = AF_INET6;
        v6->sin6_port = htons(static_cast<uint16_t>(port));
        length = sizeof(*v6);
    } else {
        error = "DNS responder: not an address: " + address;
        return false;
    }
    mSocket = ::socket(storage.ss_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    mWake = eventfd(0, EFD_CLOEXEC);
    if (mSocket < 0 || mWake < 0 ||
        ::bind(mSocket, reinterpret_cast<sockaddr*>(&storage), length) != 0 ||
        ::getsockname(mSocket, reinterpret_cast<sockaddr*>(&storage), &length) != 0) {
        error = "DNS responder: cannot bind " + address + ":" + std::to_string(port) + ": " +
                std::strerror(errno);
        stop();
        return false;
    }
    mPort = ntohs(storage.ss_family == AF_INET ? v4->sin_port : v6->sin6_port);
    mThread = std::thread([this] { serve(); });
    return true;
}

void DnsResponder::stop() {
    if (mThread.joinable()) {
        uint64_t one = 1;
        // The thread polls this descriptor: one write is enough to end it.
        ssize_t written = ::write(mWake, &one, sizeof(one));
        (void)written;
        mThread.join();
    }
    if (mSocket >= 0) ::close(mSocket);
    if (mWake >= 0) ::close(mWake);
    mSocket = mWake = -1;
}

std::vector<std::string> DnsResponder::queries() const {
    std::lock_guard<std::mutex> lock(mMutex);
    return mQueries;
}

bool DnsResponder::setAnswer(const std::string& name, const std::string& address) {
    in_addr parsed{};
    if (inet_pton(AF_INET, address.c_str(), &parsed) != 1) return false;
    std::lock_guard<std::mutex> lock(mMutex);
    mAnswers[normalName(name)] = parsed.s_addr;
    return true;
}

std::vector<uint8_t> DnsResponder::answer(const uint8_t* data, size_t size) {
    auto question = parseQuery(data, size);
    if (!question) return {};
    uint32_t address = htonl(INADDR_LOOPBACK);
    {
        std::lock_guard<std::mutex> lock(mMutex);
        mQueries.push_back(question->name);
        auto it = mAnswers.find(normalName(question->name));
        if (it != mAnswers.end()) address = it->second;
    }
    return buildResponse(data, *question, address);
}

void DnsResponder::serve() {
    uint8_t buffer[4096];
    for (;;) {
        pollfd fds[2] = {{mSocket, POLLIN, 0}, {mWake, POLLIN, 0}};
        if (::poll(fds, 2, -1) < 0) {
            if (errno == EINTR) continue;
            return;
        }
        if (fds[1].revents != 0) return;
        if ((fds[0].revents & POLLIN) == 0) continue;
        sockaddr_storage from{};
        socklen_t fromLength = sizeof(from);
        ssize_t n = ::recvfrom(mSocket, buffer, sizeof(buffer), MSG_DONTWAIT,
                               reinterpret_cast<sockaddr*>(&from), &fromLength);
        if (n <= 0) continue;
        std::vector<uint8_t> reply = answer(buffer, static_cast<size_t>(n));
        if (reply.empty()) continue;
        // A lost answer is the client's time-out to handle, as with any UDP resolver.
        ::sendto(mSocket, reply.data(), reply.size(), MSG_DONTWAIT,
                 reinterpret_cast<sockaddr*>(&from), fromLength);
    }
}

}  // namespace quilcloud
