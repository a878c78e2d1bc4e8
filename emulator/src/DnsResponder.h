// The local cloud's DNS responder: answers A queries on a loopback UDP port so
// that resolver-list lookups in tests never leave the machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quilcloud {

struct DnsQuestion {
    uint16_t id = 0;
    uint16_t flags = 0;
    std::string name;        // dotted, without the final dot
    uint16_t type = 0;       // 1 = A, 28 = AAAA
    uint16_t qclass = 0;     // 1 = IN
    size_t questionEnd = 0;  // offset just past the question section
};

// The question of a standard query (QR = 0, opcode 0, exactly one question,
// no answer or authority records, no compression in the name); nothing for
// anything else. Every read is bounds-checked: any byte string is safe.
std::optional<DnsQuestion> parseQuery(const uint8_t* data, size_t size);

// The response to `query` (whose question `question` describes): one A record
// with `address` (network order) for an A/IN question when given, an empty
// NOERROR answer otherwise.
std::vector<uint8_t> buildResponse(const uint8_t* query, const DnsQuestion& question,
                                   std::optional<uint32_t> address);

class DnsResponder {
  public:
    DnsResponder() = default;
    ~DnsResponder();
    DnsResponder(const DnsResponder&) = delete;
    DnsResponder& operator=(const DnsResponder&) = delete;

    // Binds `address`:`port` (0: any free port) and serves on its own thread.
    bool start(const std::string& address, int port, std::string& error);
    void stop();
    int port() const { return mPort; }

    std::vector<std::string> queries() const;
    // A records to give (lower-cased name -> IPv4 in network order); others get 127.0.0.1.
    bool setAnswer(const std::string& name, const std::string& address);

  private:
    void serve();
    std::vector<uint8_t> answer(const uint8_t* data, size_t size);

    int mSocket = -1;
    int mWake = -1;  // eventfd that ends serve()
    int mPort = 0;
    std::thread mThread;
    mutable std::mutex mMutex;
    std::vector<std::string> mQueries;
    std::map<std::string, uint32_t> mAnswers;
};

}  // namespace quilcloud
