#include <cstdio>
#include <string>
#include <string_view>

#include "snapshot_tool/command.h"
#include "snapshot_tool/recording.h"
#include "snapshot_tool/replace_file.h"

namespace snapshot_tool {

namespace {

char* out = nullptr;
char* about = nullptr;
gboolean is_redacted = FALSE;

const GOptionEntry options[] = {
    {"output", 'o', 0, G_OPTION_ARG_FILENAME, &out, "Write into OUT, not to standard output",
     "OUT"},
    {"about", 0, 0, G_OPTION_ARG_FILENAME, &about, "Begin the recording with a text for people",
     "TEXT"},
    {"redact", 0, 0, G_OPTION_ARG_NONE, &is_redacted, "Replace identities and messages", nullptr},
};

int run(std::span<const char* const> /*arguments*/) {
    if (out != nullptr) {
        require_may_open(out);
    }
    const std::string text = record_service({.about = about, .is_redacted = is_redacted != FALSE});
    if (out != nullptr && std::string_view(out) != "-") {
        replace_file(out, text, 0640);
        return 0;
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    return finish(0);
}

}  // namespace

const command record{
    .name = "oru-snapshot record",
    .arguments = nullptr,
    .summary = "Queries the video service and prints its answers as a snapshot.",
    .example = "oru-snapshot record --about 'gate 4 freezes' -o gate4.json",
    .manual = "oru-snapshot(1)",
    .options = options,
    .run = run,
};

}  // namespace snapshot_tool
