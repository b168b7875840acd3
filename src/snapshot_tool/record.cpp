#include <cstdio>
#include <string>
#include <string_view>

#include <getopt.h>

#include "snapshot_tool/command.h"
#include "snapshot_tool/recording.h"
#include "snapshot_tool/replace_file.h"

namespace snapshot_tool {

std::optional<int> record(int argc, char** argv) {
    static constexpr option long_options[] = {
        {"about", required_argument, nullptr, 'a'},
        {"redact", no_argument, nullptr, 'r'},
        {},
    };
    const char* file = nullptr;
    recording_options options;
    opterr = 0;
    for (int letter = 0; (letter = getopt_long(argc, argv, "o:", long_options, nullptr)) != -1;) {
        switch (letter) {
            case 'o':
                file = optarg;
                break;
            case 'a':
                options.about = optarg;
                break;
            case 'r':
                options.is_redacted = true;
                break;
            default:
                return std::nullopt;
        }
    }
    if (optind < argc) {
        return std::nullopt;
    }
    if (file != nullptr && !may_open(file)) {
        return 2;
    }

    const std::string text = record_service(options);
    if (file != nullptr && std::string_view(file) != "-") {
        replace_file(file, text, 0640);
        return 0;
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    return finish(0);
}

}  // namespace snapshot_tool
