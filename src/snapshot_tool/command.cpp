#include "snapshot_tool/command.h"

#include <sys/auxv.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
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
    return is_standard_stream(file) ? snapshot::load_standard_input() : snapshot::load(file);
}

snapshot::loaded take_snapshot(const char* file) {
    return file != nullptr ? load_file(file) : query_service(most_inputs_counted);
}

bool may_open(const char* file) {
    if (getauxval(AT_SECURE) != 0 && !is_standard_stream(file)) {
        std::fprintf(stderr,
                     "oru-snapshot: %s: a program with more rights than its caller opens no files: "
                     "use '-'\n",
                     snapshot::printable(file).c_str());
        return false;
    }
    return true;
}

bool is_file_name(const char* file) {
    if (*file == '\0') {
        std::fputs("oru-snapshot: the name of FILE is empty\n", stderr);
        return false;
    }
    return may_open(file);
}

int finish(int status) {
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::fprintf(stderr, "oru-snapshot: cannot write to standard output: %s\n",
                     std::strerror(errno));
        return 1;
    }
    return status;
}

}  // namespace snapshot_tool
