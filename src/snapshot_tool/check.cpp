#include <cstdio>

#include "snapshot_tool/command.h"

namespace snapshot_tool {

std::optional<int> check(int argc, char** argv) {
    if (argc < 2) {
        return std::nullopt;
    }
    int status = 0;
    for (int i = 1; i < argc; ++i) {
        const char* path = path_of(argv[i]);
        if (const auto loaded = snapshot::load(path)) {
            std::printf("%s: ok\n", path);
        } else {
            std::fprintf(stderr, "%s\n", loaded.error().c_str());
            status = 1;
        }
    }
    return finish(status);
}

}  // namespace snapshot_tool
