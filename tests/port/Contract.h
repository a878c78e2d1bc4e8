// The porting contract: what every port (the host port, the fake, a firmware
// team's own libraries) must do for the library, as points named for an
// integrator. The points use the porting headers only; each port's adapter
// (HostPort.cpp, FakePort.cpp, IntegratorPort.cpp) puts the port into the
// state a point needs, or says why it cannot, and the point is skipped.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace port {

// Thrown where a port cannot be prepared for a point: the point is skipped.
struct Skip {
    std::string reason;
};

// What some points need beyond the port's own functions.
enum class Need {
    Wire,          // seeing what reached the server
    TimeOut,       // a server that answers late
    LargeAnswers,  // a server that answers megabytes
    SystemClock,   // the port's clock follows the system's
    ConfigText,    // a configuration file given as text
    Commands,      // ExecUtils running real shell commands
    IdCheck,       // uid_isvalid_str checking the text
};

// One request as the server received it; header names in lower case.
struct Sent {
    std::string method, path, query, body;
    std::map<std::string, std::string> headers;
};

// A port under test, new for each point.
class Port {
  public:
    virtual ~Port() = default;
    // Why the port cannot provide `need`; nullptr when it can.
    virtual const char* lacks(Need need) const = 0;

    // The base URL of a server that answers every path with `status` and
    // `body`; with status 0, of one that refuses the connection.
    virtual std::string serve(int status, const std::string& body) = 0;
    // One that answers only after `ms`; one that answers 200 with `bytes` bytes;
    // one that answers "/contract/echo" with 200 and "METHOD QUERY BODY".
    virtual std::string serveLate(int ms) = 0;
    virtual std::string serveBytes(size_t bytes) = 0;
    virtual std::string serveEcho() = 0;
    // Resolvers ("a.b.c.d:port,...") that know the host name in named(baseUrl).
    virtual std::string resolvers() = 0;
    virtual std::string named(const std::string& baseUrl) = 0;
    // What the server received, oldest first.
    virtual std::vector<Sent> sent() = 0;

    // Stores a device value under its store name ("sn", "device_token",
    // "rssi", ...); nullopt: no value at all.
    virtual void store(const std::string& name, const std::optional<std::string>& value) = 0;
    // The path to hand ConfigFile, or file_read_string, for a file holding
    // `content`; nullopt: no such file.
    virtual std::string configFile(const std::optional<std::string>& text) = 0;
    virtual std::string deviceFile(const std::optional<std::string>& content) = 0;
};

// Made by the adapter linked in, anew for each point.
std::unique_ptr<Port> makePort();
extern const char* const kPortName;

inline void require(const Port& port, Need need) {
    if (const char* reason = port.lacks(need)) throw Skip{reason};
}

// What a point found wrong, in words: `status 404 (got 200); body "x" (got "")`.
class Verdict {
  public:
    void expect(bool held, const std::string& expected) {
        if (!held) mMissed += (mMissed.empty() ? "" : "; ") + expected;
    }
    template <typename Got, typename Wanted>
    void equal(const std::string& what, const Got& got, const Wanted& wanted) {
        expect(got == wanted, what + " " + show(wanted) + " (got " + show(got) + ")");
    }
    const std::string& missed() const { return mMissed; }

    template <typename T>
    static std::string show(const T& value) {
        const std::string text = ::testing::PrintToString(value);
        return text.size() > 72 ? text.substr(0, 64) + "...[" + std::to_string(text.size()) + "]"
                                : text;
    }
    static std::string show(utils::ErrorType error) {
        return std::to_string(static_cast<int>(error)) + " " + Error::getErrorMessage(error);
    }

  private:
    using Error = utils::ErrorCode;
    std::string mMissed;
};

struct Point {
    std::string name;  // "transport.url: a 404 answer is an answer too: ..."
    std::function<void(Port&, Verdict&)> check;
};
inline void PrintTo(const Point& point, std::ostream* out) {
    *out << point.name;
}

class Contract : public ::testing::TestWithParam<Point> {};
// gtest's name of a point: its words, "_" for the rest.
std::string testName(const ::testing::TestParamInfo<Point>& info);
// The points of one part of the contract, in one list.
std::vector<Point> joined(std::initializer_list<std::vector<Point>> parts);

}  // namespace port
}  // namespace velmar
