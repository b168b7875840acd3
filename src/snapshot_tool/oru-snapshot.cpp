// The program oru-snapshot: picks the command by its name.

#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <string_view>

#include "snapshot_tool/check.h"
#include "snapshot_tool/command.h"
#include "snapshot_tool/graph.h"
#include "snapshot_tool/metrics.h"
#include "snapshot_tool/record.h"
#include "snapshot_tool/show.h"

namespace {

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
    for (const command& known : commands) {
        text += text.empty() ? "Usage: " : "       ";
        text.append("oru-snapshot ").append(known.name);
        if (!known.arguments.empty()) {
            text.append(" ").append(known.arguments);
        }
        text += '\n';
    }
    return text + "       oru-snapshot --help | --version\n";
}

// Returns nothing when the arguments are not understood.
std::optional<int> run(std::span<char*> arguments) {
    const std::string_view name = arguments.size() > 1 ? arguments[1] : "";
    for (const command& known : commands) {
        if (name == known.name) {
            return known.run(static_cast<int>(arguments.size()) - 1, arguments.data() + 1);
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
    try {
        const auto status = run({argv, static_cast<std::size_t>(argc)});
        if (!status) {
            std::fputs(usage().c_str(), stderr);
        }
        return status.value_or(2);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "oru-snapshot: %s\n", exception.what());
        return 1;
    }
}
