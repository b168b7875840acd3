#include "snapshot_tool/description.h"

#include <cstdio>
#include <stdexcept>

#include "snapshot_tool/command.h"

namespace snapshot_tool {

std::optional<int> print_description(int argc, char** argv,
                                     std::string (*describe)(const device&)) {
    const char* file = argc > 1 ? argv[1] : nullptr;
    if (argc > 2 || (argc == 2 && file[0] == '-' && file[1] != '\0')) {
        return std::nullopt;
    }
    if (file != nullptr && !is_file_name(file)) {
        return 2;
    }
    const device figures = figures_of(take_snapshot(file));
    if (!figures.reached) {
        throw std::runtime_error(figures.reached.error());
    }
    std::fputs(describe(figures).c_str(), stdout);
    return finish(0);
}

}  // namespace snapshot_tool
