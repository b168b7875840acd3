#include "snapshot_tool/description.h"

#include <stdexcept>

#include "snapshot_tool/command.h"

namespace snapshot_tool {

description take_description(std::span<const char* const> arguments) {
    const char* file = only_file(arguments);
    const snapshot::loaded loaded = take_snapshot(file);
    device device = figures_of(loaded);
    if (!device.reached) {
        throw std::runtime_error(device.reached.error());
    }
    return {.device = std::move(device), .heading = heading_of(file, **loaded)};
}

}  // namespace snapshot_tool
