// The voice assistant's service level and the experience-plan switch, kept by
// the device's own tools.
#include "Command.h"
#include "Common.h"
#include "velmar/quil/QuilConfigUtils.h"

namespace quilctl {

namespace {

using velmar::quil::QuilConfigUtils;

// "get", or "set" with its value; false for any other form.
bool isGet(const Args& args) {
    return args.positional.size() == 1 && args.positional[0] == "get";
}
bool isSet(const Args& args) {
    return args.positional.size() == 2 && args.positional[0] == "set";
}

int runLevel(const Args& args, Output& out) {
    if (isGet(args)) {
        std::string level;
        const bool ok = QuilConfigUtils::getVEBrainLevel(level);
        out.add("level", level);
        return reportOk(out, ok);
    }
    if (!isSet(args)) return reportStatus(out, velmar::utils::ERROR_INVALID_ARGUMENT);
    // Any word goes to the library, which refuses all but its three.
    return reportOk(out, QuilConfigUtils::setVEBrainLevel(args.positional[1]));
}

int runExperiencePlan(const Args& args, Output& out) {
    if (isGet(args)) {
        bool enabled = false;
        const bool ok = QuilConfigUtils::getExperiencePlan(enabled);
        if (ok) out.add("enabled", enabled);
        return reportOk(out, ok);
    }
    if (!isSet(args) || (args.positional[1] != "true" && args.positional[1] != "false")) {
        return reportStatus(out, velmar::utils::ERROR_INVALID_ARGUMENT);
    }
    return reportOk(out, QuilConfigUtils::setExperiencePlan(args.positional[1] == "true"));
}

}  // namespace

std::vector<Command> assistantCommands() {
    return {
        {"level", "get|set WORD", "the voice assistant's service level (preview, product, ...)", 1,
         2, runLevel},
        {"experience-plan", "get|set true|false", "the user-experience-plan switch", 1, 2,
         runExperiencePlan},
    };
}

}  // namespace quilctl
