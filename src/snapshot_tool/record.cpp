#include <string>
#include <string_view>

#include "snapshot_tool/command.h"
#include "snapshot_tool/output.h"
#include "snapshot_tool/recording.h"
#include "snapshot_tool/redaction_key.h"

namespace snapshot_tool {
namespace {

char* about = nullptr;
gboolean is_redacted = FALSE;
char* key_file = nullptr;

const GOptionEntry record_options[] = {
    output_option,
    {"about", 0, 0, G_OPTION_ARG_FILENAME, static_cast<void*>(&about),
     "Add TEXT as a description of the recording", "TEXT"},
    {"redact", 0, 0, G_OPTION_ARG_NONE, &is_redacted, "Replace identities and messages", nullptr},
    {"redact-key", 0, 0, G_OPTION_ARG_FILENAME, static_cast<void*>(&key_file),
     "Like --redact, with names that depend on the key in KEYFILE", "KEYFILE"},
};

int print_recording(std::span<const char* const> arguments) {
    require_may_write();
    recording_options recording{.about = about,
                                .is_redacted = is_redacted != FALSE || key_file != nullptr};
    if (key_file != nullptr) {
        if (std::string_view(key_file) == "-") {
            throw command_line::wrong_usage("KEYFILE cannot be standard input");
        }
        require_may_open(key_file);
        recording.redaction_key = read_redaction_key(key_file);
    }
    const char* file = only_file(arguments);
    const std::string text =
        file != nullptr ? record_file(file, recording) : record_service(recording);
    return write_output(text, 0640);
}

}  // namespace

const command record{
    .name = "oru-snapshot record",
    .arguments = "[FILE]",
    .most_arguments = 1,
    .summary = "Prints the answers of the video service, or those in FILE, as a snapshot.",
    .example = "oru-snapshot record --about 'gate 4 freezes' -o gate4.json",
    .manual = "oru-snapshot(1)",
    .options = record_options,
    .run = print_recording,
};

}  // namespace snapshot_tool
