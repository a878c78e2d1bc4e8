// quilctl: every exported call of the library as a subcommand. Each prints one
// JSON object (status and out-values) on standard output; --verbose mirrors
// the library's log lines to standard error.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>

#include "Command.h"
#include "Output.h"
#include "velmar/PortVersion.h"
#include "velmar/quil/Version.h"

namespace quilctl {

bool Args::has(const std::string& flag) const {
    for (const auto& f : flags) {
        if (f == flag) return true;
    }
    return false;
}

namespace {

void printUsage(const std::vector<Command>& commands) {
    std::cout << "usage: quilctl [--verbose] COMMAND [ARGS...]\n"
                 "       quilctl --version\n"
                 "       quilctl COMMAND --help\n\n"
                 "Calls the cloud as the device does and prints one JSON object.\n"
                 "The device is read from $VELMAR_ROOT (the real paths when unset).\n\n"
                 "commands:\n";
    for (const auto& c : commands) {
        std::string left = c.name + (c.usage.empty() ? "" : " " + c.usage);
        std::printf("  %-34s %s\n", left.c_str(), c.help.c_str());
    }
}

}  // namespace

}  // namespace quilctl

int main(int argc, char** argv) {
    using namespace quilctl;
    std::vector<Command> commands = allCommands();
    int i = 1;
    for (; i < argc && argv[i][0] == '-'; ++i) {
        if (std::strcmp(argv[i], "--verbose") == 0) {
            setenv("VELMAR_LOG_STDERR", "1", 1);
        } else if (std::strcmp(argv[i], "--version") == 0) {
            // The libraries this run loaded, not the ones quilctl was built with.
            Output out;
            out.add("library", velmar::quil::version());
            out.add("port", velmar_port_version != nullptr ? velmar_port_version() : "unknown");
            std::cout << out.finish() << "\n";
            return 0;
        } else if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            printUsage(commands);
            return 0;
        } else {
            std::cerr << "quilctl: unknown option " << argv[i] << "\n";
            return 2;
        }
    }
    if (i >= argc) {
        printUsage(commands);
        return 2;
    }
    std::string name = argv[i++];
    for (const auto& c : commands) {
        if (c.name != name) continue;
        Args args;
        for (; i < argc; ++i) {
            std::string a = argv[i];
            if (a == "--help" || a == "-h") {
                std::cout << "usage: quilctl " << c.name << (c.usage.empty() ? "" : " " + c.usage)
                          << "\n\n"
                          << c.help << "\n";
                return 0;
            }
            if (a == "--verbose") {
                setenv("VELMAR_LOG_STDERR", "1", 1);
            } else if (a.size() > 2 && a.compare(0, 2, "--") == 0) {
                args.flags.push_back(a);
            } else {
                args.positional.push_back(a);
            }
        }
        if (args.positional.size() < c.minArgs || args.positional.size() > c.maxArgs) {
            std::cerr << "usage: quilctl " << c.name << " " << c.usage << "\n";
            return 2;
        }
        Output out;
        out.add("command", c.name);
        int rc = 1;
        try {
            rc = c.run(args, out);
        } catch (const std::exception& e) {
            // A stored administrator id that does not parse throws out of
            // every signed call (with a port whose validity test lets one
            // through): reported, not a crash.
            out.add("error", std::string(e.what()));
        }
        if (!out.omitted()) std::cout << out.finish() << std::endl;
        return rc;
    }
    std::cerr << "quilctl: unknown command " << name << " (try --help)\n";
    return 2;
}
