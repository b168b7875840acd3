#include "snapshot_tool/metrics.h"

#include <cstdio>
#include <string>
#include <string_view>

#include <getopt.h>

#include "snapshot/printable.h"
#include "snapshot_tool/device.h"
#include "snapshot_tool/exposition.h"
#include "snapshot_tool/files.h"
#include "snapshot_tool/replace_file.h"

std::optional<int> metrics(int argc, char** argv) {
    const char* out = "-";
    opterr = 0;
    for (int given = 0; (given = getopt(argc, argv, "o:")) != -1;) {
        if (given != 'o') {
            return std::nullopt;
        }
        out = optarg;
    }
    if (argc - optind > 1) {
        return std::nullopt;
    }
    if (optind < argc && !answer_from(argv[optind])) {
        return 2;
    }
    const device asked = ask_device();
    if (!asked.reached) {
        // Who runs this blindly looks at the figures; who looks for the reason finds it here.
        std::fprintf(stderr, "oru-snapshot: %s\n", printable(asked.reached.error()).c_str());
    }
    const std::string text = exposition(asked);
    if (std::string_view(out) != "-") {
        replace_file(out, text, 0644);  // its reader is another user
        return 0;
    }
    std::fputs(text.c_str(), stdout);
    return finish(0);
}
