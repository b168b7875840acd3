#include <cstdio>
#include <string>
#include <string_view>

#include <getopt.h>

#include "snapshot/printable.h"
#include "snapshot_tool/command.h"
#include "snapshot_tool/device.h"
#include "snapshot_tool/exposition.h"
#include "snapshot_tool/replace_file.h"

namespace snapshot_tool {

std::optional<int> metrics(int argc, char** argv) {
    const char* out = "-";
    opterr = 0;
    for (int option = 0; (option = getopt(argc, argv, "o:")) != -1;) {
        if (option != 'o') {
            return std::nullopt;
        }
        out = optarg;
    }
    if (argc - optind > 1) {
        return std::nullopt;
    }
    const char* file = optind < argc ? argv[optind] : nullptr;
    if (!may_open(out) || (file != nullptr && !is_file_name(file))) {
        return 2;
    }
    const device figures = figures_of(take_snapshot(file));
    if (!figures.reached) {
        // The run succeeds: the text says that the service was not reached, this line says why.
        std::fprintf(stderr, "oru-snapshot: %s\n",
                     snapshot::printable(figures.reached.error()).c_str());
    }
    const std::string text = exposition(figures);
    if (std::string_view(out) != "-") {
        replace_file(out, text, 0644);  // another user reads it
        return 0;
    }
    std::fputs(text.c_str(), stdout);
    return finish(0);
}

}  // namespace snapshot_tool
