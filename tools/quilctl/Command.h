// quilctl's command table: every family of subcommands lives in its own file
// and contributes its entries through one function declared here.
#pragma once

#include <string>
#include <vector>

#include "Output.h"

namespace quilctl {

struct Args {
    std::vector<std::string> positional;
    std::vector<std::string> flags;  // "--master", "--pretty", ...

    bool has(const std::string& flag) const;
};

struct Command {
    std::string name;
    std::string usage;  // arguments after the name, e.g. "LEVEL"
    std::string help;   // one line
    size_t minArgs = 0;
    size_t maxArgs = 0;
    // Fills `out` with the status and out-values; returns the process exit code.
    int (*run)(const Args& args, Output& out);
};

// Every family's commands (the table is generated from the *Commands.cpp files).
std::vector<Command> allCommands();

}  // namespace quilctl
