// Every section of both tools, on any snapshot: its output has the frame that readers of the report
// expect, it releases every object, and it ends early only by a fatal exit or the one documented
// exception.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <oru.h>

#include "fuzz/json_text.h"
#include "fuzz/require.h"
#include "fuzz/snapshot_input.h"
#include "serverreport/sections.h"
#include "support/live_objects.h"
#include "tlm/sections.h"
#include "video/owned.h"

namespace {

constexpr std::uint32_t most_inputs = 2000;  // opening 4 billion inputs takes too long

// The reports do not escape all control bytes in strings.
bool is_json(std::string_view text) {
    return parse_json(text, {.control_bytes = true}).has_value();
}

// Requires `rest` to begin with `start`, and removes it.
void expect(std::string_view& rest, std::string_view start) {
    require(rest.starts_with(start), start.data(), rest);
    rest.remove_prefix(start.size());
}

void check_max_stats(std::string_view rest) {
    for (const char* figure : {"MaxBufferBytes=", "MaxEncodeStreams=", "MaxRawStreams="}) {
        expect(rest, figure);
        const std::size_t end = rest.find('\n');
        require(end != rest.npos, "a line", rest);
        const std::string_view value = rest.substr(0, end);
        require(value == "-1" || (!value.empty() && value.size() <= 10 &&
                                  value.find_first_not_of("0123456789") == value.npos),
                "a figure", value);
        rest.remove_prefix(end + 1);
    }
    require(rest == "Version=1\n", "the version", rest);
}

void check_identities(std::string_view out) {
    if (out.empty()) {
        return;
    }
    require(
        out.starts_with("{\n    \"identities\": {\n        \"") && out.ends_with("\n    }\n}\n"),
        "the frame of the identities", out);
    require(is_json(out), "JSON", out);
}

// Checks the lines of the array "streams". Returns their labels.
std::vector<std::string> check_stream_lines(std::string_view array) {
    std::vector<std::string> labels;
    while (!array.empty()) {
        const std::size_t end = array.find('\n');
        require(end != array.npos, "a line", array);
        std::string_view line = array.substr(0, end);
        array.remove_prefix(end + 1);
        require(line.starts_with("        { \"id/0x") && line.find("\" : {") != line.npos,
                "the start of a stream's line", line);
        labels.emplace_back(line.substr(11, line.find('"', 11) - 11));
        const bool has_comma = line.ends_with(",");
        require(has_comma == !array.empty(), "a comma after all lines but the last", line);
        line.remove_suffix(has_comma ? 1 : 0);
        require(is_json(line), "JSON", line);
    }
    return labels;
}

std::size_t check_streams(std::string_view out) {
    expect(out, "----- Snapshot of all running streams -----\n\n{\n    \"streams\" : [\n");
    constexpr std::string_view info = "    ],\n\n    \"streaminfo\" : [\n";
    constexpr std::string_view statistics = "    ],\n\n    \"streamstatistics\" : [\n";
    constexpr std::string_view end = "    ]\n}\n\n";
    const std::size_t info_at = out.find(info);
    require(info_at != out.npos, "the array streaminfo", out);
    const auto streams = check_stream_lines(out.substr(0, info_at));

    out.remove_prefix(info_at + info.size());
    const std::size_t statistics_at = out.find(statistics);
    require(statistics_at != out.npos, "the array streamstatistics", out);
    const std::string elements = "[" + std::string(out.substr(0, statistics_at)) + "]";
    const auto array = parse_json(elements, {.control_bytes = true});
    require(array && array->elements.size() == streams.size(),
            "one element of streaminfo for each stream", elements);

    out.remove_prefix(statistics_at + statistics.size());
    require(out.ends_with(end), "the end of the document", out);
    out.remove_suffix(end.size());
    for (std::size_t i = 0; i < streams.size(); ++i) {
        require(array->elements[i].names == std::vector{streams[i]},
                "the same streams in the same order", elements);
        // A line may contain any text, line breaks too, because a histogram is copied unchecked.
        expect(out, "        { \"" + streams[i] + "\" : {\"actual-framerate\":");
        const bool is_last = i + 1 == streams.size();
        const std::string line_end =
            is_last ? "} }\n"
                    : "} },\n        { \"" + streams[i + 1] + "\" : {\"actual-framerate\":";
        const std::size_t at = is_last ? out.size() - line_end.size() : out.find(line_end);
        require(at < out.size() && out.substr(at).starts_with(line_end), "the end of a line", out);
        out.remove_prefix(at + (is_last ? line_end.size() : std::string_view("} },\n").size()));
    }
    require(out.empty(), "nothing after the last stream", out);
    return streams.size();
}

void check_quotas(std::string_view out) {
    expect(out, "----- Stream Quotas and Limits -----\n\n");
    require(out.starts_with("{\n    \"streammaximumquota\" : [\n        {") &&
                out.ends_with("}\n    ]\n}\n\n"),
            "the frame of the quotas", out);
    const auto document = parse_json(out);
    require(document && (document->names.size() == 2 || document->names.size() == 4),
            "two arrays or four", out);
}

void check_output(std::string_view out) {
    if (out.empty()) {
        return;
    }
    expect(out, "----- HDMI output -----\n\n    {");
    require(out.ends_with("\"}\n\n"), "the end of the section", out);
    require(is_json("{" + std::string(out)), "JSON", out);
}

// Checks a section that lists channels: it closes its document or ends with one of the `reasons`.
void check_channel_list(std::string_view out, std::string_view none, std::string_view no_list,
                        std::string_view header, std::vector<std::string_view> reasons) {
    if (out == none || (out.starts_with(no_list) && out.ends_with("\n"))) {
        return;
    }
    expect(out, header);
    require(out.starts_with("{\n    \""), "the start of the document", out);
    if (!out.ends_with("    ]\n}\n") || !is_json(out)) {
        // A skipped input at the end leaves the comma before it.
        std::string closed(out);
        if (const std::size_t comma = closed.rfind(",\n    ]\n}\n"); comma != closed.npos) {
            closed.erase(comma, 1);
        }
        require(is_json(closed) ||
                    std::ranges::any_of(reasons, [&](auto reason) { return out.contains(reason); }),
                "a document or a reason", out);
    }
}

void check_channels(std::string_view out) {
    check_channel_list(out, "No channels.\n", "Failed to get all channels: ",
                       "----- Snapshot of channel settings -----\n\n",
                       {"\nFailed to get channel info: "});
}

void check_resolutions(std::string_view out) {
    check_channel_list(out, "No channels.\n",
                       "Failed to get all channels: ", "----- Available resolutions -----\n\n",
                       {"\nFailed to get resolutions: "});
}

void check_inputs(std::string_view out) {
    check_channel_list(out, "No inputs.\n",
                       "Failed to get inputs: ", "----- Snapshot of input settings -----\n\n",
                       {"\nFailed to get channel info: ", "\nFailed to get input "});
}

// Runs a section and checks its output. A section that ends early must print nothing.
void run(void (*section)(), void (*check)(std::string_view), std::string_view fatal = "not fatal") {
    const outcome result = run_section(section);
    require(!result.exception, "no exception", result.exception.value_or(""));
    if (result.fatal) {
        require(result.fatal->starts_with(fatal) && result.out.empty(), "a documented failure",
                *result.fatal);
    } else {
        check(result.out);
    }
    require(live_objects(nullptr) == 0, "every object is released", result.out);
}

void run_streams() {
    const outcome result = run_section(list_streams);
    require(!result.exception, "no exception", result.exception.value_or(""));
    if (result.fatal) {
        require(result.fatal->starts_with("Failed to get all streams: ") && result.out.empty(),
                "a documented failure", *result.fatal);
        require(live_objects("OruMap") == 0, "no map is kept", result.out);
        // The fatal exit ends the process without releasing the list and its streams.
        return;
    }
    const std::size_t streams = check_streams(result.out);
    require(live_objects("OruMap") == 3 * streams, "three maps are kept of each stream",
            result.out);
    require(live_objects(nullptr) == 3 * streams, "nothing else is kept", result.out);
    release_live_objects();
    require(live_objects(nullptr) == 0, "a kept map has one owner", result.out);
}

void run_system_info() {
    const owned_object<OruMap> channels{oru_channel_get_info(nullptr, nullptr)};
    if (channels && oru_map_get_uint32(channels.get(), "input.count", 1) > most_inputs) {
        return;
    }
    const outcome result = run_section(print_system_info);
    require(!result.fatal, "the section is never fatal");
    require(!result.exception || (result.out.empty() && result.exception->contains("not finite")),
            "the documented exception", result.exception.value_or(""));
    require(result.exception || (result.out.starts_with("{\n    \"inputs\": ") &&
                                 (result.out.ends_with("\n}\n") || mode_breaks_off())),
            "the frame of the document", result.out);
    require(live_objects(nullptr) == (channels ? 1 : 0), "every object is released", result.out);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    answer_from({reinterpret_cast<const char*>(data), size});
    run(print_stream_max_stats, check_max_stats);
    run_system_info();
    run(print_identity_info, check_identities);
    run_streams();
    run(print_stream_quotas, check_quotas, "Failed to get ");
    run(list_output, check_output, "Failed to get output");
    run(list_channels, check_channels);
    run(list_available_resolutions, check_resolutions);
    run(list_inputs, check_inputs);
    return 0;
}
