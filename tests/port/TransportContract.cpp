// The transport: what each of the four overloads returns for an answer, a
// refusal and a time-out; the wire form the services expect; the failures
// that must never reach the wire; calls from several threads; the two text
// helpers.
#include <chrono>
#include <thread>

#include "Contract.h"
#include "velmar/http/HTTPRequest.h"

namespace velmar {
namespace port {
namespace {

using http::HTTPRequest;
using utils::ErrorType;

// The four overloads, by the arguments they take.
enum Overload { kUrl, kUrlResolvers, kBasePath, kFields };
const char* const kOverloads[] = {"url", "url+resolvers", "base+path", "base+path+fields"};

struct Reply {
    bool ok = false;
    int status = -1;  // stale values the port must overwrite
    std::string body = "stale";
    ErrorType error = utils::ERROR_GENERAL;
    std::string text = "stale";
    long long ms = 0;
};

struct Request {
    std::string path = "/contract/x";
    std::string params = "a=1&b=x%20y";  // the fields overload sends a=1, b="x y"
    std::string method = "GET";
    std::vector<std::string> headers;
    std::string cookie;  // the URL overloads only
    int timeoutMs = 5000;
};

Reply send(Port& port, int overload, const std::string& base, const Request& q = {}) {
    Reply r;
    const auto start = std::chrono::steady_clock::now();
    if (overload == kUrl) {
        r.ok = HTTPRequest::httpRequest(r.status, r.body, r.error, r.text, base + q.path, q.params,
                                        q.method, q.headers, q.timeoutMs, q.cookie);
    } else if (overload == kUrlResolvers) {
        r.ok = HTTPRequest::httpRequest(r.status, r.body, r.error, r.text,
                                        port.named(base) + q.path, q.params, q.method, q.headers,
                                        q.timeoutMs, q.cookie, port.resolvers());
    } else if (overload == kBasePath) {
        r.ok = HTTPRequest::httpRequest(r.status, r.body, r.error, r.text, base, q.path, q.params,
                                        q.method, q.headers, q.timeoutMs);
    } else {
        r.ok = HTTPRequest::httpRequest(r.status, r.body, r.error, r.text, base, q.path,
                                        {{"b", {"x y"}}, {"a", {"1"}}}, q.method, q.headers,
                                        q.timeoutMs);
    }
    r.ms = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 start)
               .count();
    return r;
}

// An answer: true, its status and body, ERROR_NONE, no text. A failure:
// false, status 0, no body, `error`, and a text that says what happened.
void expectReply(Verdict& v, const Reply& r, int status, const std::string& body, ErrorType error) {
    v.equal("return", r.ok, error == utils::ERROR_NONE);
    v.equal("status", r.status, status);
    v.equal("body", r.body, body);
    v.equal("error", r.error, error);
    if (error == utils::ERROR_NONE) v.equal("error text", r.text, "");
    if (error != utils::ERROR_NONE) v.expect(!r.text.empty() && r.text != "stale", "a text");
}

std::vector<Point> outcomes() {
    const struct {
        const char* name;
        void (*check)(Port&, int, Verdict&);
    } scenarios[] = {
        {"a 200 answer: true, status 200, its body, ERROR_NONE, no error text",
         [](Port& port, int o, Verdict& v) {
             expectReply(v, send(port, o, port.serve(200, "{\"a\":1}")), 200, "{\"a\":1}",
                         utils::ERROR_NONE);
         }},
        {"a 404 answer is an answer too: true, status 404, its body, ERROR_NONE",
         [](Port& port, int o, Verdict& v) {
             expectReply(v, send(port, o, port.serve(404, "gone")), 404, "gone", utils::ERROR_NONE);
         }},
        {"a refused connection: false, status 0, no body, ERROR_HTTP_CONNECT and a text",
         [](Port& port, int o, Verdict& v) {
             expectReply(v, send(port, o, port.serve(0, "")), 0, "", utils::ERROR_HTTP_CONNECT);
         }},
        {"no answer within timeoutMs: false, status 0, no body, ERROR_HTTP_TIMEOUT, in time",
         [](Port& port, int o, Verdict& v) {
             require(port, Need::TimeOut);
             Request q;
             q.timeoutMs = 300;
             const Reply r = send(port, o, port.serveLate(5000), q);
             expectReply(v, r, 0, "", utils::ERROR_HTTP_TIMEOUT);
             v.expect(r.ms < 3000, "back within 3 s of a 300 ms time-out (took " +
                                       std::to_string(r.ms) + " ms)");
         }},
    };
    std::vector<Point> points;
    for (int o = 0; o < 4; ++o) {
        for (const auto& s : scenarios) {
            points.push_back({std::string("transport.") + kOverloads[o] + ": " + s.name,
                              [o, check = s.check](Port& port, Verdict& v) { check(port, o, v); }});
        }
    }
    return points;
}

// A member of the request the server received last; "nothing" when none came.
std::string last(Port& port, std::string Sent::*member) {
    const std::vector<Sent> sent = port.sent();
    return sent.empty() ? "nothing" : sent.back().*member;
}

// A point on what the server received from each of `overloads` sending `q`:
// `seen` of the request, compared with `wanted`.
Point wire(const std::string& name, std::vector<int> overloads, Request q,
           std::string (*seen)(Sent), const std::string& wanted) {
    return {name, [=](Port& port, Verdict& v) {
                require(port, Need::Wire);
                const std::string base = port.serve(200, "{}");
                for (int o : overloads) {
                    send(port, o, base, q);
                    const std::vector<Sent> sent = port.sent();
                    v.equal(kOverloads[o], sent.empty() ? "nothing" : seen(sent.back()), wanted);
                }
            }};
}

Request with(const char* method, std::vector<std::string> headers = {}, std::string cookie = "") {
    Request q;
    q.method = method;
    q.headers = std::move(headers);
    q.cookie = std::move(cookie);
    return q;
}

std::vector<Point> wireForm() {
    const auto form = [](Sent s) {
        return s.method + " [" + s.query + "] [" + s.body + "] " +
               s.headers["content-type"].substr(0, 33);
    };
    std::vector<Point> points = {
        wire("transport.GET: the parameters are the query string, no body is sent",
             {kUrl, kUrlResolvers, kBasePath, kFields}, with("GET"), form, "GET [a=1&b=x%20y] [] "),
        wire("transport.POST: the parameters are an application/x-www-form-urlencoded body",
             {kUrl, kUrlResolvers, kBasePath, kFields}, with("POST"), form,
             "POST [] [a=1&b=x%20y] application/x-www-form-urlencoded"),
        wire(
            "transport: header lines go out as given, empty entries skipped",
            {kUrl, kUrlResolvers, kBasePath, kFields},
            with("GET", {"X-Tag: t1", "", HTTPRequest::buildCookieHeader({{"sn", "4417/2026"}})}),
            [](Sent s) { return s.headers["x-tag"] + " | " + s.headers["cookie"]; },
            "t1 | sn=4417/2026"),
        wire(
            "transport.url: the cookie argument is the Cookie header exactly as given",
            {kUrl, kUrlResolvers}, with("GET", {}, "deviceId=7300; nonce=n-1; sn=4417/2026"),
            [](Sent s) { return s.headers["cookie"]; }, "deviceId=7300; nonce=n-1; sn=4417/2026"),
    };
    points.push_back(
        {"transport.base+path: exactly one \"/\" between base URL and path, whatever slashes "
         "each brings",
         [](Port& port, Verdict& v) {
             require(port, Need::Wire);
             const std::string base = port.serve(200, "{}");
             const char* const rows[][3] = {{"", "/contract/x", "/contract/x"},
                                            {"/", "/contract/x", "/contract/x"},
                                            {"", "contract/x", "/contract/x"},
                                            {"//", "//contract/x", "/contract/x"},
                                            {"/api/", "/v2/x", "/api/v2/x"}};
             for (const auto& row : rows) {
                 for (int o : {kBasePath, kFields}) {
                     Request q;
                     q.path = row[1];
                     send(port, o, base + row[0], q);
                     v.equal(std::string(kOverloads[o]) + ": base URL \"..." + row[0] +
                                 "\" and path \"" + row[1] + "\" arrive as",
                             last(port, &Sent::path), row[2]);
                 }
             }
         }});
    points.push_back({"transport.base+path+fields: every value of every field, keys in map order",
                      [](Port& port, Verdict& v) {
                          require(port, Need::Wire);
                          Reply r;
                          HTTPRequest::httpRequest(
                              r.status, r.body, r.error, r.text, port.serve(200, "{}"), "/x",
                              {{"p", {"a b"}}, {"id", {"1", "2"}}, {"q", {}}}, "POST", {}, 5000);
                          v.equal("body", last(port, &Sent::body), "id=1&id=2&p=a%20b");
                      }});
    return points;
}

std::vector<Point> faults() {
    return {
        {"transport: a 1 MiB answer arrives whole",
         [](Port& port, Verdict& v) {
             require(port, Need::LargeAnswers);
             const Reply r = send(port, kBasePath, port.serveBytes(1 << 20));
             v.equal("return and body size",
                     std::to_string(r.ok) + " " + std::to_string(r.body.size()), "1 1048576");
         }},
        {"transport: an answer over 16 MiB is refused: false, no body, ERROR_HTTP_TOO_LARGE",
         [](Port& port, Verdict& v) {
             require(port, Need::LargeAnswers);
             Request q;
             q.timeoutMs = 60000;
             const Reply r = send(port, kBasePath, port.serveBytes((16 << 20) + 1), q);
             v.equal("return and body size",
                     std::to_string(r.ok) + " " + std::to_string(r.body.size()), "0 0");
             v.equal("error", r.error, utils::ERROR_HTTP_TOO_LARGE);
         }},
        {"transport: a line break in a header line or the cookie is refused unsent: false, "
         "ERROR_HTTP_INIT",
         [](Port& port, Verdict& v) {
             const std::string base = port.serve(200, "{}");
             for (int o = 0; o < 4; ++o) {
                 const Reply r = send(port, o, base, with("GET", {"X-A: 1\r\nX-Evil: 1"}));
                 v.equal(std::string(kOverloads[o]) + ": error", r.error, utils::ERROR_HTTP_INIT);
                 v.equal(std::string(kOverloads[o]) + ": return", r.ok, false);
             }
             const Reply r = send(port, kUrl, base, with("GET", {}, "a=1\nX-Evil: 1"));
             v.equal("cookie: error", r.error, utils::ERROR_HTTP_INIT);
             if (!port.lacks(Need::Wire)) v.equal("requests received", port.sent().size(), 0u);
         }},
        {"transport: calls from several threads at once each get their own answer",
         [](Port& port, Verdict& v) {
             require(port, Need::Wire);
             const std::string base = port.serveEcho();
             std::vector<std::string> wrong(4);
             std::vector<std::thread> threads;
             for (int t = 0; t < 4; ++t) {
                 threads.emplace_back([&port, &base, &wrong, t] {
                     for (int i = 0; i < 12 && wrong[t].empty(); ++i) {
                         Request q = with(i % 2 ? "GET" : "POST");
                         q.path = "/contract/echo";
                         q.params = "t=" + std::to_string(t) + "&i=" + std::to_string(i);
                         const std::string want =
                             i % 2 ? "GET " + q.params + " " : "POST  " + q.params;
                         const Reply r = send(port, i % 3, base, q);
                         if (r.body != want) wrong[t] = r.body + " for " + want;
                     }
                 });
             }
             for (auto& thread : threads)
                 thread.join();
             for (const auto& text : wrong)
                 v.expect(text.empty(), "its own answer (got " + text + ")");
         }},
    };
}

std::vector<Point> textForms() {
    return {
        {"encodeHTTPParams: k=v pairs joined by \"&\" in map order, all but A-Z a-z 0-9 - . _ ~ "
         "percent-encoded in upper-case hex",
         [](Port&, Verdict& v) {
             v.equal("encoded",
                     HTTPRequest::encodeHTTPParams(
                         {{"b", "a b&c=d"}, {"a", "-._~"}, {"u", "\xc3\xa9+/*"}, {"k y", ""}}),
                     "a=-._~&b=a%20b%26c%3Dd&k%20y=&u=%C3%A9%2B%2F%2A");
             v.equal("no parameters", HTTPRequest::encodeHTTPParams({}), "");
         }},
        {"buildCookieHeader: \"Cookie: k1=v1; k2=v2\" in map order, values as they are",
         [](Port&, Verdict& v) {
             v.equal("header", HTTPRequest::buildCookieHeader({{"z", "1"}, {"a", "x y/=%"}}),
                     "Cookie: a=x y/=%; z=1");
         }},
    };
}

INSTANTIATE_TEST_SUITE_P(
    Transport, Contract,
    ::testing::ValuesIn(joined({outcomes(), wireForm(), faults(), textForms()})), testName);

}  // namespace
}  // namespace port
}  // namespace velmar
