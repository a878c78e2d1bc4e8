// The statistics report the messaging agent uploads, made from a stat log.
#include "Command.h"
#include "velmar/quil/StatPointsUtils.h"

namespace quilctl {

namespace {

int runStatPoints(const Args& args, Output& out) {
    const bool pretty = args.has("--pretty");
    // Shown as the library wrote it, so --pretty shows its indentation.
    out.addRawJson("report",
                   velmar::quil::StatPointsUtils::collectStatPoints(args.positional[0], pretty));
    return 0;
}

}  // namespace

std::vector<Command> statCommands() {
    return {
        {"stat-points", "FILE [--pretty]",
         "the JSON report of a stat log (read up to 256 KiB of line text)", 1, 1, runStatPoints},
    };
}

}  // namespace quilctl
