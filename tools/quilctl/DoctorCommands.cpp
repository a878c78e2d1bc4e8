// Why the device cannot reach the cloud: every cause checked in turn.
#include <iostream>

#include "Command.h"
#include "doctor/Doctor.h"

namespace quilctl {

namespace {

int runDoctor(const Args& args, Output& out) {
    const std::vector<doctor::Finding> findings = doctor::run();
    const int code = doctor::exitCode(findings);
    if (!args.has("--json")) {
        std::cout << doctor::toTable(findings);
        out.omit();
        return code;
    }
    out.add("verdict", doctor::verdictName(static_cast<doctor::Verdict>(code)));
    out.add("exitStatus", code);
    out.addRawJson("checks", doctor::toJson(findings));
    return code;
}

}  // namespace

std::vector<Command> doctorCommands() {
    return {
        {"doctor", "[--json]",
         "check configuration, device store, clock, service hosts, credentials and log", 0, 0,
         runDoctor},
    };
}

}  // namespace quilctl
