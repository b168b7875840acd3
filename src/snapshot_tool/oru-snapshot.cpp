// The program oru-snapshot: runs the command that its first argument names.

#include <csignal>
#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <string_view>

#include "snapshot/printable.h"
#include "snapshot_tool/command.h"

namespace {

using namespace snapshot_tool;

struct command {
    std::string_view name;
    std::string_view arguments;
    command_function* run;
};

constexpr command commands[] = {
    {"check", "FILE...", check},
    {"record", "[-o FILE] [--about TEXT] [--redact]", record},
    {"show", "[FILE]", show},
    {"graph", "[FILE]", graph},
    {"metrics", "[-o FILE] [FILE]", metrics},
};

std::string usage() {
    std::string text;
    for (const auto& [name, arguments, run] : commands) {
        text += text.empty() ? "Usage: " : "       ";
        text.append("oru-snapshot ").append(name);
        if (!arguments.empty()) {
            text.append(" ").append(arguments);
        }
        text += '\n';
    }
    return text + "       oru-snapshot --help | --version\n";
}

// Returns the exit status, or nothing if the arguments are wrong.
std::optional<int> run(std::span<char*> arguments) {
    const std::string_view name = arguments.size() > 1 ? arguments[1] : "";
    for (const command& command : commands) {
        if (name == command.name) {
            return command.run(static_cast<int>(arguments.size()) - 1, arguments.data() + 1);
        }
    }
    if (name == "--help" && arguments.size() == 2) {
        std::fputs(usage().c_str(), stdout);
        return finish(0);
    }
    if (name == "--version" && arguments.size() == 2) {
        std::puts("oru-snapshot " ORU_VERSION);
        return finish(0);
    }
    return std::nullopt;
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGXFSZ, SIG_IGN);  // a write beyond the limit on file sizes fails instead
    try {
        const auto status = run({argv, static_cast<std::size_t>(argc)});
        if (!status) {
            std::fputs(usage().c_str(), stderr);
        }
        return status.value_or(2);
    } catch (const std::exception& exception) {
        // Messages contain texts of the service and names of files.
        std::fprintf(stderr, "oru-snapshot: %s\n", snapshot::printable(exception.what()).c_str());
        return 1;
    }
}
