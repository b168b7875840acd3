#include "snapshot_tool/command.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "snapshot_tool/device.h"
#include "snapshot_tool/query.h"

namespace snapshot_tool {

const char* path_of(const char* file) {
    return std::string_view(file) == "-" ? "/dev/stdin" : file;
}

snapshot::loaded take_snapshot(const char* file) {
    if (file != nullptr) {
        return snapshot::load(path_of(file));
    }
    return query_service(most_inputs_counted);
}

bool is_file_name(const char* file) {
    if (*file == '\0') {
        std::fputs("oru-snapshot: the name of FILE is empty\n", stderr);
        return false;
    }
    return true;
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
