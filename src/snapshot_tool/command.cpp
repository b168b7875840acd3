#include "snapshot_tool/command.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

int finish(int status) {
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::fprintf(stderr, "oru-snapshot: cannot write to standard output: %s\n",
                     std::strerror(errno));
        return 1;
    }
    return status;
}
