// QuilConfigUtils: the voice assistant's service level and the
// user-experience-plan switch, owned by the platform's command-line tools.
#include <json-c/json.h>

#include <algorithm>
#include <iterator>

#include "velmar/json/JSONUtils.h"
#include "velmar/quil/QuilConfigUtils.h"
#include "velmar/utils/ExecUtils.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {

using json::JSONUtils;
using utils::ExecUtils;

namespace {

// Runs a tool's "get" and parses what it printed; null, logged, when the
// tool failed or printed no JSON. The object belongs to `cleaner`.
json_object* readTool(json::JSONObjectCleaner& cleaner, const std::string& command,
                      std::string& output) {
    if (ExecUtils::exec(output, command) != 0) {
        VLOG(4) << "command failed, output: " << output;
        return nullptr;
    }
    json_object* root = cleaner.add(json_tokener_parse(output.c_str()));
    if (root == nullptr) VLOG(4) << "invalid result: " << output;
    return root;
}

}  // namespace

bool QuilConfigUtils::getVEBrainLevel(std::string& level) {
    json::JSONObjectCleaner cleaner;
    std::string output;
    json_object* root = readTool(cleaner, "/usr/bin/vebrain_level get", output);
    if (root == nullptr) {
        level.clear();
        return false;
    }
    if (!JSONUtils::getString(root, "level", level)) {
        VLOG(4) << "invalid result: " << output;
        return false;
    }
    return true;
}

bool QuilConfigUtils::setVEBrainLevel(const std::string& level) {
    // The level goes to the shell unquoted: only these words may reach it.
    static const char* const kLevels[] = {"preview", "product", "preview4test"};
    if (std::find(std::begin(kLevels), std::end(kLevels), level) == std::end(kLevels)) {
        VLOG(4) << "ve brain level not supported: " << level;
        return false;
    }
    std::string output;
    if (ExecUtils::exec(output, "/usr/bin/vebrain_level " + level) != 0) {
        VLOG(4) << "command failed, output: " << output;
        return false;
    }
    return true;
}

bool QuilConfigUtils::getExperiencePlan(bool& enabled) {
    json::JSONObjectCleaner cleaner;
    std::string output;
    json_object* root = readTool(cleaner, "/usr/bin/experience_plan get", output);
    if (root == nullptr) return false;
    std::string enable;
    JSONUtils::getString(root, "enable", enable);
    // Exact words only: "TRUE" is no answer.
    if (enable != "true" && enable != "false") {
        VLOG(4) << "invalid result: " << output;
        return false;
    }
    enabled = enable == "true";
    return true;
}

bool QuilConfigUtils::setExperiencePlan(bool enabled) {
    std::string output;
    if (ExecUtils::exec(
            output, std::string("/usr/bin/experience_plan ") + (enabled ? "true" : "false")) != 0) {
        VLOG(4) << "command failed";
        return false;
    }
    return true;
}

}  // namespace quil
}  // namespace velmar
