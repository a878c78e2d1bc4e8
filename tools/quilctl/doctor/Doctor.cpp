#include "Doctor.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "Checks.h"

namespace quilctl {
namespace doctor {

const char* verdictName(Verdict verdict) {
    switch (verdict) {
        case Verdict::Ok:
            return "ok";
        case Verdict::Warn:
            return "warn";
        case Verdict::Fail:
            return "fail";
    }
    return "fail";
}

void Report::ok(const std::string& check, const std::string& value) {
    mFindings.push_back({mArea, check, Verdict::Ok, value, "", ""});
}

void Report::warn(const std::string& check, const std::string& value, const std::string& cause,
                  const std::string& advice) {
    mFindings.push_back({mArea, check, Verdict::Warn, value, cause, advice});
}

void Report::fail(const std::string& check, const std::string& value, const std::string& cause,
                  const std::string& advice) {
    mFindings.push_back({mArea, check, Verdict::Fail, value, cause, advice});
}

void Report::appendTo(std::vector<Finding>& all) const {
    all.insert(all.end(), mFindings.begin(), mFindings.end());
}

bool Report::failed() const {
    for (const auto& f : mFindings) {
        if (f.verdict == Verdict::Fail) return true;
    }
    return false;
}

std::string devicePath(const std::string& path) {
    const char* root = std::getenv("VELMAR_ROOT");
    return root != nullptr && *root != '\0' ? std::string(root) + path : path;
}

std::string escaped(const std::string& text) {
    std::string out;
    for (unsigned char c : text) {
        if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c < 0x20 || c == 0x7f) {
            char buffer[8];
            std::snprintf(buffer, sizeof(buffer), "\\x%02x", static_cast<unsigned>(c));
            out += buffer;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out;
}

std::string maskedCredential(const std::string& value) {
    return escaped(value.substr(0, value.size() < 4 ? 0 : 4)) + "***";
}

std::vector<Finding> run(const Options& options) {
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(options.runTimeoutMs);
    Report config("config"), store("store"), clock("clock"), network("network"),
        credentials("credentials"), log("log");
    ServiceUrls urls;
    checkConfig(config, urls);
    checkStore(store);
    // The time service is asked during the network checks, so that its host
    // is contacted once; its finding still reads under the clock.
    NetworkResult reached;
    checkNetwork(network, urls, options, deadline, reached);
    checkClock(clock, reached.serverMillis, reached.timeWhy);
    checkCredentials(credentials, urls, reached);
    checkLog(log);
    std::vector<Finding> all;
    for (const Report* report : {&config, &store, &clock, &network, &credentials, &log})
        report->appendTo(all);
    return all;
}

int exitCode(const std::vector<Finding>& findings) {
    int worst = 0;
    for (const auto& f : findings)
        worst = std::max(worst, static_cast<int>(f.verdict));
    return worst;
}

std::string toJson(const std::vector<Finding>& findings) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartArray();
    for (const auto& f : findings) {
        writer.StartObject();
        writer.Key("area");
        writer.String(f.area.c_str());
        writer.Key("check");
        writer.String(f.check.c_str());
        writer.Key("verdict");
        writer.String(verdictName(f.verdict));
        writer.Key("value");
        writer.String(f.value.c_str());
        if (f.verdict != Verdict::Ok) {
            writer.Key("cause");
            writer.String(f.cause.c_str());
            writer.Key("advice");
            writer.String(f.advice.c_str());
        }
        writer.EndObject();
    }
    writer.EndArray();
    return buffer.GetString();
}

std::string toTable(const std::vector<Finding>& findings) {
    static const char* const kShown[] = {"ok", "WARN", "FAIL"};
    std::string out;
    char line[512];
    for (const auto& f : findings) {
        std::snprintf(line, sizeof(line), "%-4s  %-11s %-30s ", kShown[static_cast<int>(f.verdict)],
                      f.area.c_str(), f.check.c_str());
        out += line + f.value;
        if (f.verdict != Verdict::Ok) out += "  [" + f.cause + "]\n      -> " + f.advice;
        out += "\n";
    }
    const int code = exitCode(findings);
    out += code == 0 ? "all checks passed\n"
                     : std::string(code == 1 ? "warnings" : "failures") + " found (exit status " +
                           std::to_string(code) + ")\n";
    return out;
}

}  // namespace doctor
}  // namespace quilctl
