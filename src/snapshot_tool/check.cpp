#include "snapshot_tool/check.h"

#include <cstdio>

#include "replay/check_snapshot.h"
#include "snapshot_tool/files.h"

std::optional<int> check(int argc, char** argv) {
    if (argc < 2) {
        return std::nullopt;
    }
    int status = 0;
    for (int i = 1; i < argc; ++i) {
        const char* path = path_of(argv[i]);
        const std::string wrong = oru::check_snapshot(path);
        if (wrong.empty()) {
            std::printf("%s: ok\n", path);
        } else {
            std::fprintf(stderr, "%s\n", wrong.c_str());
            status = 1;
        }
    }
    return finish(status);
}
