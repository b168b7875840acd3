#include "snapshot_tool/command.h"

#include <string_view>

#include "snapshot_tool/device.h"
#include "snapshot_tool/query.h"

namespace snapshot_tool {

const char* path_of(const char* file) {
    return std::string_view(file) == "-" ? "/dev/stdin" : file;
}

const char* only_file(std::span<const char* const> arguments) {
    return arguments.empty() ? nullptr : arguments.front();
}

snapshot::loaded take_snapshot(const char* file) {
    if (file != nullptr) {
        return snapshot::load(path_of(file));
    }
    return query_service(most_inputs_counted);
}

int finish(int status) {
    return command_line::finish("oru-snapshot", status, failure_status);
}

}  // namespace snapshot_tool
