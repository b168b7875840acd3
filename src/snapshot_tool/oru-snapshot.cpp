// The program oru-snapshot: runs the command that its first argument names.

#include <array>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include "snapshot/printable.h"
#include "snapshot_tool/command.h"
#include "snapshot_tool/nearest.h"

namespace {

using namespace snapshot_tool;

constexpr const command* commands[] = {&check, &record, &diff, &show, &graph, &metrics};

constexpr std::string_view program = "oru-snapshot";

// Returns the name without that of the program.
std::string_view short_name(const command& command) {
    return std::string_view(command.name).substr(program.size() + 1);
}

gboolean is_version_wanted = FALSE;

const GOptionEntry options[] = {
    {"version", 0, 0, G_OPTION_ARG_NONE, &is_version_wanted, "Show the version", nullptr},
};

std::string names_of_commands() {
    std::string text;
    for (const command* command : commands) {
        text.append(text.empty() ? "" : ", ").append(short_name(*command));
    }
    return text;
}

// Runs the program without a command.
int run(std::span<const char* const> /*arguments*/) {
    if (is_version_wanted != FALSE) {
        std::puts("oru-snapshot " ORU_VERSION);
        return finish(0);
    }
    throw command_line::wrong_usage("no command: expected one of " + names_of_commands());
}

// Returns the summaries of all commands.
std::string summary() {
    std::string text =
        "Shows, records and checks what the video service of a device answers.\n\nCommands:";
    for (const command* command : commands) {
        text.append("\n  ").append(short_name(*command));
        if (command->arguments != nullptr) {
            text.append(" ").append(command->arguments);
        }
        text.append("\n    ").append(command->summary);
    }
    return text;
}

int reject(std::string_view name) {
    std::array<std::string_view, std::size(commands) + 2> names{"--help", "--version"};
    std::ranges::transform(commands, names.begin() + 2,
                           [](const command* command) { return short_name(*command); });
    const std::string_view meant = nearest(name, names);
    std::fprintf(stderr, "oru-snapshot: unknown command '%s': ", snapshot::printable(name).c_str());
    if (meant.empty()) {
        std::fprintf(stderr, "expected one of %s\n", names_of_commands().c_str());
    } else {
        std::fprintf(stderr, "did you mean '%s'?\n", std::string(meant).c_str());
    }
    return 2;
}

int run(int argc, char** argv) {
    const std::string_view name = argc > 1 ? argv[1] : "--";
    for (const command* command : commands) {
        if (name == short_name(*command)) {
            return command_line::run(*command, argc - 1, argv + 1);
        }
    }
    if (!name.starts_with('-')) {
        return reject(name);
    }
    return command_line::run({.name = program.data(),
                              .arguments = "COMMAND",
                              .summary = summary().c_str(),
                              .example = "oru-snapshot show --help",
                              .manual = "oru-snapshot(1)",
                              .options = options,
                              .run = run},
                             argc, argv);
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGXFSZ, SIG_IGN);  // a write beyond the limit on file sizes fails instead
    try {
        return run(argc, argv);
    } catch (const std::exception& exception) {
        // Messages contain texts of the service and names of files.
        std::fprintf(stderr, "oru-snapshot: %s\n", snapshot::printable(exception.what()).c_str());
        return failure_status;
    }
}
