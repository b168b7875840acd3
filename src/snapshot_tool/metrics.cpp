#include <cstdio>

#include "snapshot/printable.h"
#include "snapshot_tool/command.h"
#include "snapshot_tool/device.h"
#include "snapshot_tool/exposition.h"
#include "snapshot_tool/output.h"

namespace snapshot_tool {
namespace {

const GOptionEntry metrics_options[] = {
    output_option,
};

int print_metrics(std::span<const char* const> arguments) {
    require_may_write();
    const device figures = figures_of(take_snapshot(only_file(arguments)));
    if (!figures.reached) {
        // The run succeeds: the text says that the service was not reached, this line says why.
        std::fprintf(stderr, "oru-snapshot: %s\n",
                     snapshot::printable(figures.reached.error()).c_str());
    }
    return write_output(exposition(figures), 0644);  // another user reads it
}

}  // namespace

const command metrics{
    .name = "oru-snapshot metrics",
    .arguments = "[FILE]",
    .most_arguments = 1,
    .summary = "Prints figures for Prometheus. Without FILE, queries the video service.",
    .example = "oru-snapshot metrics -o /var/lib/prometheus/node-exporter/oru.prom",
    .manual = "oru-snapshot(1)",
    .options = metrics_options,
    .run = print_metrics,
};

}  // namespace snapshot_tool
