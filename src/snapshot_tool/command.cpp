#include "snapshot_tool/command.h"

#include <sys/auxv.h>

#include <stdexcept>
#include <string_view>

#include "snapshot/printable.h"
#include "snapshot_tool/device.h"
#include "snapshot_tool/query.h"

namespace snapshot_tool {

namespace {

bool is_standard_stream(const char* file) {
    return std::string_view(file) == "-";
}

}  // namespace

std::string name_of(const char* file) {
    return is_standard_stream(file) ? "/dev/stdin" : snapshot::printable(file);
}

snapshot::loaded load_file(const char* file) {
    require_may_open(file);
    return is_standard_stream(file) ? snapshot::load_standard_input() : snapshot::load(file);
}

const char* only_file(std::span<const char* const> arguments) {
    return arguments.empty() ? nullptr : arguments.front();
}

snapshot::loaded take_snapshot(const char* file) {
    return file != nullptr ? load_file(file) : query_service(most_inputs_counted);
}

void require_may_open(const char* file) {
    if (getauxval(AT_SECURE) != 0 && !is_standard_stream(file)) {
        failure_status = 2;
        throw std::runtime_error(std::string(file) +
                                 ": a program with more rights than its caller opens no files: "
                                 "use '-'");
    }
}

int finish(int status) {
    return command_line::finish("oru-snapshot", status, failure_status);
}

}  // namespace snapshot_tool
