#include <algorithm>
#include <cstdio>
#include <span>

#include "snapshot/printable.h"
#include "snapshot_tool/command.h"

namespace snapshot_tool {

std::optional<int> check(int argc, char** argv) {
    if (argc < 2) {
        return std::nullopt;
    }
    const std::span files(argv + 1, static_cast<std::size_t>(argc) - 1);
    if (!std::ranges::all_of(files, may_open)) {
        return 2;
    }
    int status = 0;
    for (const char* file : files) {
        if (const auto loaded = load_file(file)) {
            std::printf("%s: ok\n", name_of(file).c_str());
        } else {
            std::fprintf(stderr, "%s\n", snapshot::printable(loaded.error()).c_str());
            status = 1;
        }
    }
    return finish(status);
}

}  // namespace snapshot_tool
