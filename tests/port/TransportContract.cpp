// The transport: what each of the four overloads returns for an answer, a
// refusal and a time-out; the wire form the services expect; what must never
// reach the wire; answers too large; calls from several threads; the two text
// helpers.
#include <chrono>

#include "Contract.h"
#include "velmar/http/HTTPRequest.h"

namespace velmar::port {
namespace {

using http::HTTPRequest;

// The four overloads, by the arguments they take.
enum Overload { kUrl, kUrlResolvers, kBasePath, kFields };
const char* const kOverloads[] = {"url", "url+resolvers", "base+path", "base+path+fields"};

struct Request {
    explicit Request(const char* m = "GET", std::vector<std::string> h = {}, std::string c = "")
        : method(m), headers(std::move(h)), cookie(std::move(c)) {}
    std::string base;  // after the server's base URL
    std::string path = "/contract/x";
    std::string params = "a=1&b=x%20y";
    std::map<std::string, std::vector<std::string>> fields = {{"b", {"x y"}}, {"a", {"1"}}};
    std::string method;
    std::vector<std::string> headers;
    std::string cookie;  // the URL overloads only
    int timeoutMs = 5000;
};

// What a call returned, in one line: "true 200 "{}" 0 no-text", or for a
// failure "false 0 "" 602 a-text"; starting from stale values.
struct Reply {
    std::string line, body;
    long long ms;
    int status;
};
Reply send(Port& port, int overload, const std::string& base, const Request& q = Request()) {
    int status = -1;
    std::string body = "stale", text = "stale";
    utils::ErrorType error = utils::ERROR_GENERAL;
    bool ok = false;
    const auto start = std::chrono::steady_clock::now();
    if (overload == kUrl) {
        ok = HTTPRequest::httpRequest(status, body, error, text, base + q.path, q.params, q.method,
                                      q.headers, q.timeoutMs, q.cookie);
    } else if (overload == kUrlResolvers) {
        ok =
            HTTPRequest::httpRequest(status, body, error, text, port.named(base) + q.path, q.params,
                                     q.method, q.headers, q.timeoutMs, q.cookie, port.resolvers());
    } else if (overload == kBasePath) {
        ok = HTTPRequest::httpRequest(status, body, error, text, base + q.base, q.path, q.params,
                                      q.method, q.headers, q.timeoutMs);
    } else {
        ok = HTTPRequest::httpRequest(status, body, error, text, base + q.base, q.path, q.fields,
                                      q.method, q.headers, q.timeoutMs);
    }
    const auto ms = std::chrono::steady_clock::now() - start;
    return {std::string(ok ? "true " : "false ") + std::to_string(status) + " " +
                Verdict::show(body.size() > 64 ? "..." : body) + " " + std::to_string(error) +
                (text.empty()      ? " no-text"
                 : text == "stale" ? " stale-text"
                                   : " a-text"),
            body, std::chrono::duration_cast<std::chrono::milliseconds>(ms).count(), status};
}

const char* const kReturned = "return, status, body, error, error text";

std::vector<Point> outcomes() {
    const struct {
        const char* name;
        Serve serve;
        const char* returned;
    } rows[] = {
        {"a 200 answer: true, status 200, its body, ERROR_NONE, no error text",
         {200, "{\"a\":1}"},
         "true 200 \"{\\\"a\\\":1}\" 0 no-text"},
        {"a 404 answer is an answer too: true, status 404, its body, ERROR_NONE",
         {404, "gone"},
         "true 404 \"gone\" 0 no-text"},
        {"a refused connection: false, status 0, no body, ERROR_HTTP_CONNECT (602) and a text",
         {0},
         "false 0 \"\" 602 a-text"},
        {"no answer within timeoutMs: false, status 0, no body, ERROR_HTTP_TIMEOUT (603) and a "
         "text, in time",
         {200, "{}", 5000},
         "false 0 \"\" 603 a-text"},
    };
    std::vector<Point> points;
    for (int o = 0; o < 4; ++o) {
        for (const auto& row : rows) {
            points.push_back({std::string("transport.") + kOverloads[o] + ": " + row.name,
                              [o, row](Port& port, Verdict& v) {
                                  Request q;
                                  if (row.serve.lateMs > 0) port.require(Need::TimeOut);
                                  if (row.serve.lateMs > 0) q.timeoutMs = 300;
                                  const Reply r = send(port, o, port.serve(row.serve), q);
                                  v.equal(kReturned, r.line, row.returned);
                                  v.expect(r.ms < 3000, "back within 3 s (took " +
                                                            std::to_string(r.ms) + " ms)");
                              }});
        }
    }
    return points;
}

// What the server received last from each of `overloads` sending `q`, as
// `seen` puts it.
Point wire(const std::string& name, std::vector<int> overloads, Request q,
           std::string (*seen)(Sent), const std::string& wanted) {
    return {name, [=](Port& port, Verdict& v) {
                port.require(Need::Wire);
                const std::string base = port.serve({});
                for (int o : overloads) {
                    send(port, o, base, q);
                    const std::vector<Sent> sent = port.sent();
                    v.equal(kOverloads[o], sent.empty() ? "nothing" : seen(sent.back()), wanted);
                }
            }};
}

std::vector<Point> wireForm() {
    const auto form = [](Sent s) {
        return s.method + " [" + s.query + "] [" + s.body + "] " +
               s.headers["content-type"].substr(0, 33);
    };
    const auto path = [](Sent s) { return s.path; };
    std::vector<Point> points = {
        wire("transport.GET: the parameters are the query string, no body is sent",
             {kUrl, kUrlResolvers, kBasePath, kFields}, Request("GET"), form,
             "GET [a=1&b=x%20y] [] "),
        wire("transport.POST: the parameters are an application/x-www-form-urlencoded body",
             {kUrl, kUrlResolvers, kBasePath, kFields}, Request("POST"), form,
             "POST [] [a=1&b=x%20y] application/x-www-form-urlencoded"),
        wire("transport.HEAD: the parameters are the query string, as for GET", {kUrl, kBasePath},
             Request("HEAD"), form, "HEAD [a=1&b=x%20y] [] "),
        wire("transport: any other method (PUT) carries the parameters in a form body, as POST",
             {kUrl, kBasePath}, Request("PUT"), form,
             "PUT [] [a=1&b=x%20y] application/x-www-form-urlencoded"),
        wire(
            "transport: header lines go out as given, empty entries skipped",
            {kUrl, kUrlResolvers, kBasePath, kFields},
            Request("GET",
                    {"X-Tag: t1", "", HTTPRequest::buildCookieHeader({{"sn", "4417/2026"}})}),
            [](Sent s) { return s.headers["x-tag"] + " | " + s.headers["cookie"]; },
            "t1 | sn=4417/2026"),
        wire(
            "transport.url: the cookie argument is the Cookie header exactly as given",
            {kUrl, kUrlResolvers}, Request("GET", {}, "deviceId=7300; nonce=n-1; sn=4417/2026"),
            [](Sent s) { return s.headers["cookie"]; }, "deviceId=7300; nonce=n-1; sn=4417/2026"),
    };
    Request multi("POST");
    multi.fields = {{"p", {"a b"}}, {"id", {"1", "2"}}, {"q", {}}};
    points.push_back(wire(
        "transport.base+path+fields: every value of every field, keys in map order", {kFields},
        multi, [](Sent s) { return s.body; }, "id=1&id=2&p=a%20b"));
    // Whatever slashes the base URL ends and the path begins with.
    // clang-format off
    const char* const joins[][3] = {
        {"", "/contract/x", "/contract/x"}, {"/", "/contract/x", "/contract/x"},
        {"", "contract/x", "/contract/x"}, {"//", "//contract/x", "/contract/x"},
        {"/api/", "/v2/x", "/api/v2/x"}};
    // clang-format on
    // A URL that already has a query keeps it; the parameters follow it.
    for (const char* url : {"/contract/x?z=9", "/contract/x?z=9&", "/contract/x?"}) {
        Request q;
        q.path = url;
        points.push_back(wire(
            std::string("transport.url: GET to \"") + url +
                "\" appends the parameters to its query",
            {kUrl, kUrlResolvers}, q, [](Sent s) { return s.query; },
            url[12] == 'z' ? "z=9&a=1&b=x%20y" : "a=1&b=x%20y"));
    }
    for (const auto& join : joins) {
        Request q;
        q.base = join[0];
        q.path = join[1];
        points.push_back(wire(std::string("transport.base+path: exactly one \"/\" between base URL "
                                          "\"http://host:port") +
                                  join[0] + "\" and path \"" + join[1] + "\"",
                              {kBasePath, kFields}, q, path, join[2]));
    }
    return points;
}

std::vector<Point> faults() {
    return {
        {"transport: an answer over 16 MiB, its length stated or not, is refused: false, no "
         "body, ERROR_HTTP_TOO_LARGE (607)",
         [](Port& port, Verdict& v) {
             port.require(Need::LargeAnswers);
             for (const bool chunked : {false, true}) {
                 Serve serve;
                 serve.bytes = (16 << 20) + 1;
                 serve.chunked = chunked;
                 Request q;
                 q.timeoutMs = 60000;
                 const Reply r = send(port, kBasePath, port.serve(serve), q);  // any status
                 v.equal(std::string(chunked ? "chunked: " : "") + kReturned, r.line,
                         "false " + std::to_string(r.status) + " \"\" 607 a-text");
             }
         }},
        {"transport: a line break in a header line or the cookie, or a method that is no HTTP "
         "token, is refused unsent: false, ERROR_HTTP_INIT (600)",
         [](Port& port, Verdict& v) {
             const std::string base = port.serve({});
             for (int o = 0; o < 4; ++o) {
                 v.equal(std::string(kOverloads[o]) + " with a header line: " + kReturned,
                         send(port, o, base, Request("GET", {"X-A: 1\r\nX-Evil: 1"})).line,
                         "false 0 \"\" 600 a-text");
             }
             v.equal(std::string("with a cookie: ") + kReturned,
                     send(port, kUrl, base, Request("GET", {}, "a=1\nX-Evil: 1")).line,
                     "false 0 \"\" 600 a-text");
             for (const char* method : {"GET /evil", "", "G\tET"})
                 v.equal(Verdict::show(method) + " as the method: " + kReturned,
                         send(port, kUrl, base, Request(method)).line, "false 0 \"\" 600 a-text");
             if (!port.lacks(Need::Wire)) v.equal("requests received", port.sent().size(), 0u);
         }},
        {"transport: calls from several threads at once each get their own answer",
         [](Port& port, Verdict& v) {
             port.require(Need::Wire);
             Serve echo;
             echo.echo = true;
             const std::string base = port.serve(echo);
             for (const std::string& wrong : onThreads([&port, &base](int t) {
                      for (int i = 0; i < 12; ++i) {
                          Request q(i % 2 ? "GET" : "POST");
                          q.params = "t=" + std::to_string(t) + "&i=" + std::to_string(i);
                          const std::string want =
                              i % 2 ? "GET " + q.params + " " : "POST  " + q.params;
                          const std::string got = send(port, i % 3, base, q).body;
                          if (got != want) return got + " for " + want;
                      }
                      return std::string();
                  }))
                 v.expect(wrong.empty(), "its own answer (got " + wrong + ")");
         }},
        {"encodeHTTPParams: k=v pairs joined by \"&\" in map order, all but A-Z a-z 0-9 - . _ ~ "
         "percent-encoded in upper-case hex; buildCookieHeader: \"Cookie: k1=v1; k2=v2\" in map "
         "order, values as they are",
         [](Port&, Verdict& v) {
             v.equal("encoded",
                     HTTPRequest::encodeHTTPParams(
                         {{"b", "a b&c=d"}, {"a", "-._~"}, {"u", "\xc3\xa9+/*"}, {"k y", ""}}),
                     "a=-._~&b=a%20b%26c%3Dd&k%20y=&u=%C3%A9%2B%2F%2A");
             v.equal("no parameters", HTTPRequest::encodeHTTPParams({}), "");
             v.equal("cookie header", HTTPRequest::buildCookieHeader({{"z", "1"}, {"a", "x y/=%"}}),
                     "Cookie: a=x y/=%; z=1");
         }},
    };
}

INSTANTIATE_TEST_SUITE_P(Transport, Contract,
                         ::testing::ValuesIn(joined({outcomes(), wireForm(), faults()})), testName);

}  // namespace
}  // namespace velmar::port
