#include <cstdio>
#include <string>
#include <string_view>

#include "snapshot/printable.h"
#include "snapshot_tool/command.h"
#include "snapshot_tool/device.h"
#include "snapshot_tool/exposition.h"
#include "snapshot_tool/replace_file.h"

namespace snapshot_tool {
namespace {

char* out = nullptr;

const GOptionEntry options[] = {
    {"output", 'o', 0, G_OPTION_ARG_FILENAME, static_cast<void*>(&out),
     "Write into OUT, not to standard output", "OUT"},
};

int run(std::span<const char* const> arguments) {
    if (out != nullptr) {
        require_may_open(out);
    }
    const device figures = figures_of(take_snapshot(only_file(arguments)));
    if (!figures.reached) {
        // The run succeeds: the text says that the service was not reached, this line says why.
        std::fprintf(stderr, "oru-snapshot: %s\n",
                     snapshot::printable(figures.reached.error()).c_str());
    }
    const std::string text = exposition(figures);
    if (out != nullptr && std::string_view(out) != "-") {
        replace_file(out, text, 0644);  // another user reads it
        return 0;
    }
    std::fputs(text.c_str(), stdout);
    return finish(0);
}

}  // namespace

const command metrics{
    .name = "oru-snapshot metrics",
    .arguments = "[FILE]",
    .most_arguments = 1,
    .summary = "Prints figures for Prometheus. Without FILE, queries the video service.",
    .example = "oru-snapshot metrics -o /var/lib/prometheus/node-exporter/oru.prom",
    .manual = "oru-snapshot(1)",
    .options = options,
    .run = run,
};

}  // namespace snapshot_tool
