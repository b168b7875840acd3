#include <algorithm>
#include <cstdio>
#include <limits>

#include "snapshot/lookup.h"
#include "snapshot/printable.h"
#include "snapshot_tool/command.h"

namespace snapshot_tool {
namespace {

int run(std::span<const char* const> files) {
    std::ranges::for_each(files, require_may_open);
    int status = 0;
    for (const char* file : files) {
        if (const auto loaded = load_file(file)) {
            std::printf("%s: ok%s\n", name_of(file).c_str(),
                        snapshot::is_answered(**loaded) ? "" : ", but it answers no query");
        } else {
            std::fprintf(stderr, "%s\n", snapshot::printable(loaded.error()).c_str());
            status = 1;
        }
    }
    return finish(status);
}

}  // namespace

const command check{
    .name = "oru-snapshot check",
    .arguments = "FILE...",
    .fewest_arguments = 1,
    .most_arguments = std::numeric_limits<std::size_t>::max(),
    .summary = "Checks whether each FILE is a snapshot.",
    .example = "oru-snapshot check gate4.json",
    .manual = "oru-snapshot(1)",
    .run = run,
};

}  // namespace snapshot_tool
