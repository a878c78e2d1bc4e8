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
#include <thread>
#include <vector>

namespace velmar::port {

// Thrown where a port cannot be prepared for a point: the point is skipped.
struct Skip {
    std::string reason;
};

// What some points need beyond the port's own functions: seeing what reached
// the server, a server that answers late, one that answers megabytes, a clock
// that follows the system's, a configuration file given as text, ExecUtils
// running real commands, uid_isvalid_str checking the text.
enum class Need { Wire, TimeOut, LargeAnswers, SystemClock, ConfigText, Commands, IdCheck };

// How the server answers every request.
struct Serve {
    int status = 200;  // 0: the connection is refused
    std::string body = "{}";
    int lateMs = 0;        // the answer comes only after this
    size_t bytes = 0;      // not 0: a 200 answer of this many bytes
    bool chunked = false;  // with bytes: its length not stated
    bool echo = false;     // 200 with "METHOD QUERY BODY" of the request
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
    // Why the port cannot provide `need`; nullptr when it can. require()
    // skips the point then.
    virtual const char* lacks(Need need) const = 0;
    void require(Need need) const {
        if (const char* reason = lacks(need)) throw Skip{reason};
    }
    // The base URL of a server that answers as `serve` says.
    virtual std::string serve(const Serve& serve) = 0;
    // Resolvers ("a.b.c.d:port,...") that know the host name in named(baseUrl).
    virtual std::string resolvers() = 0;
    virtual std::string named(std::string baseUrl) = 0;
    // What the server received, oldest first.
    virtual std::vector<Sent> sent() = 0;
    // Stores a device value by its store name ("sn", "rssi", ...); nullopt: none.
    virtual void store(const std::string& name, const std::optional<std::string>& value) = 0;
    // The path to hand ConfigFile, or file_read_string, for a file holding
    // `content`; nullopt: no such file.
    virtual std::string configFile(const std::optional<std::string>& text) = 0;
    virtual std::string deviceFile(const std::optional<std::string>& content) = 0;
};

// Made by the adapter linked in, anew for each point; VELMAR_PORT_ADAPTER
// names the adapter's class.
std::unique_ptr<Port> makePort();
extern const char* const kPortName;
#define VELMAR_PORT_ADAPTER(Class, name)                           \
    const char* const velmar::port::kPortName = name;              \
    std::unique_ptr<velmar::port::Port> velmar::port::makePort() { \
        return std::make_unique<Class>();                          \
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
    template <typename T>
    static std::string show(const T& value) {
        const std::string text = ::testing::PrintToString(value);
        return text.size() > 72 ? text.substr(0, 64) + "...[" + std::to_string(text.size()) + "]"
                                : text;
    }
    const std::string& missed() const { return mMissed; }

  private:
    std::string mMissed;
};

struct Point {
    std::string name;  // "transport.url: a 404 answer is an answer too: ..."
    std::function<void(Port&, Verdict&)> check;
    friend void PrintTo(const Point& point, std::ostream* out) { *out << point.name; }
};

// Runs `call(t)` for t = 0..3 on four threads at once; what each returned.
inline std::vector<std::string> onThreads(const std::function<std::string(int)>& call) {
    std::vector<std::string> out(4);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&call, &out, t] { out[t] = call(t); });
    for (auto& thread : threads)
        thread.join();
    return out;
}

class Contract : public ::testing::TestWithParam<Point> {};
// gtest's name of a point: its words, "_" for the rest.
std::string testName(const ::testing::TestParamInfo<Point>& info);
std::vector<Point> joined(std::initializer_list<std::vector<Point>> parts);

}  // namespace velmar::port
