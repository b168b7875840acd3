#include "snapshot_tool/description.h"

#include <cstdio>
#include <stdexcept>

#include "snapshot_tool/command.h"

namespace snapshot_tool {

int print_description(std::span<const char* const> arguments,
                      std::string (*describe)(const device&)) {
    const device figures = figures_of(take_snapshot(only_file(arguments)));
    if (!figures.reached) {
        throw std::runtime_error(figures.reached.error());
    }
    std::fputs(describe(figures).c_str(), stdout);
    return finish(0);
}

}  // namespace snapshot_tool
