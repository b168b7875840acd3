#include <algorithm>
#include <cstdio>
#include <format>
#include <string>
#include <string_view>

#include "snapshot/printable.h"
#include "snapshot_tool/colour.h"
#include "snapshot_tool/command.h"
#include "snapshot_tool/differences.h"
#include "snapshot_tool/page.h"
#include "snapshot_tool/value_text.h"

namespace snapshot_tool {
namespace {

gboolean is_complete = FALSE;

const GOptionEntry diff_options[] = {
    {"all", 0, 0, G_OPTION_ARG_NONE, &is_complete, "Show every key that differs, and cut no text",
     nullptr},
    colour_option,
};

// Adds a line about which snapshot this is.
void add_heading(snapshot_tool::page& page, const char* side, const char* file,
                 const snapshot::answers& answers) {
    std::string line = std::format("{}  {}", side, name_of(file));
    if (answers.recorded) {
        line.append("  ").append(*answers.recorded);
    }
    if (answers.about) {
        constexpr std::size_t longest_about = 60;
        const std::string about = unambiguous(*answers.about);
        line += "  ";
        line +=
            is_complete != FALSE ? about : cut_where_they_differ(longest_about, about, "").first;
    }
    page.append(line);
    page.end_line();
}

int print_differences(std::span<const char* const> files) {
    failure_status = 2;  // 1 says that there is a difference
    const char* older_file = files[0];
    const char* newer_file = files[1];
    if (std::string_view(older_file) == "-" && std::string_view(newer_file) == "-") {
        throw command_line::wrong_usage("only one of OLD and NEW can be standard input");
    }
    std::ranges::for_each(files, require_may_open);
    snapshot_tool::page page({.is_wide = true, .has_colours = has_colours()}, stdout);
    const auto older = load_file(older_file);
    const auto newer = load_file(newer_file);
    for (const auto* loaded : {&older, &newer}) {
        if (!loaded->has_value()) {
            std::fprintf(stderr, "oru-snapshot: %s\n",
                         snapshot::printable(loaded->error()).c_str());
        }
    }
    if (!older || !newer) {
        return failure_status;
    }
    const auto add_line = [&](std::string_view line, bool is_alarming) {
        page.append(line, is_alarming);
        page.end_line();
    };
    add_heading(page, "OLD", older_file, **older);
    add_heading(page, "NEW", newer_file, **newer);
    const bool is_different = find_differences(**older, **newer, is_complete != FALSE, add_line);
    if (!is_different) {
        add_line("no difference", false);
    }
    page.flush();
    return finish(is_different ? 1 : 0);
}

}  // namespace

const command diff{
    .name = "oru-snapshot diff",
    .arguments = "OLD NEW",
    .fewest_arguments = 2,
    .most_arguments = 2,
    .summary = "Shows what differs between OLD and NEW, except what changes on a healthy device.",
    .example = "oru-snapshot diff yesterday.json today.json",
    .manual = "oru-snapshot(1)",
    .options = diff_options,
    .run = print_differences,
};

}  // namespace snapshot_tool
