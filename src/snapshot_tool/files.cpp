#include "snapshot_tool/files.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

bool answer_from(const char* file) {
    if (*file == '\0') {
        // The client would take it for no file at all.
        std::fputs("oru-snapshot: the name of FILE is empty\n", stderr);
        return false;
    }
    setenv("ORU_SNAPSHOT", path_of(file), 1);
    return true;
}

const char* path_of(const char* file) {
    return std::string_view(file) == "-" ? "/dev/stdin" : file;
}
