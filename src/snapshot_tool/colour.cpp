#include "snapshot_tool/colour.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

#include "command_line/command_line.h"

namespace snapshot_tool {
namespace {

std::string_view variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

}  // namespace

bool has_colours() {
    const std::string_view choice = colour != nullptr ? colour : "auto";
    if (choice == "always" || choice == "never") {
        return choice == "always";
    }
    if (choice != "auto") {
        throw command_line::wrong_usage("--color must be always, auto or never");
    }
    const std::string_view terminal = variable("TERM");
    return variable("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb" &&
           isatty(STDOUT_FILENO) == 1;
}

}  // namespace snapshot_tool
