// Makes each answer of a full snapshot fail in turn, first recorded as an error, then left out, and
// runs both tools with every switch. A small model of each section in this file computes the
// expected text: the section's text, and how the failure changes it.
#include <algorithm>
#include <filesystem>
#include <functional>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include <glaze/glaze.hpp>
#include <gtest/gtest.h>

#include "support/tools.h"

namespace {

using json = glz::generic_json<>;

const std::string full_snapshot = R"({
    "system": {"caps": {"output": true}},
    "mode": {"info": {"view": "full", "sensor.fps": 25}},
    "stream": {
        "debug": {"global.capacity.peak": 90, "global.encoded.peers.peak": 8,
                  "global.raw.peers.peak": 7, "identity.alpha": 10},
        "quota": {"global.hard.limit": 120, "global.soft.limit": 100,
                  "global.buffering.limit": 6},
        "limit": {"global.max.streams.limit.encoded": 20},
        "all": [
            {"id": 17, "info": {"width": 640, "height": 360, "warp": 4},
             "settings": {"format": 3},
             "debug": {"global.capacity": 51}},
            {"id": 18, "info": {"statistics.duration": {"int64": 59000000}},
             "settings": {"format": 0, "width": 1920, "height": 1080, "sqz.strength": 3},
             "debug": {"global.capacity": 52, "tlm[0].duration": {"int64": 1000000}}},
            {"id": 19, "info": {"statistics.frame_count": 1500},
             "settings": {"format": 2, "identity": "alpha"},
             "debug": {"global.capacity": 53}}
        ]
    },
    "channel": {
        "info": {"input.count": 2},
        "all": [
            {"id": 0, "properties": {"key": "input"},
             "info": {"type.id": 1, "crop.possible": true},
             "crop": [1, 2, 3, 4], "crop_max": [5, 6],
             "resolutions": {"available": [[1920, 1080], [1280, 720]]}},
            {"id": 1, "properties": {"key": "input"},
             "info": {"type.id": 2, "crop.possible": true},
             "crop": [11, 12, 13, 14], "crop_max": [15, 16],
             "resolutions": {"available": [[640, 360]]}},
            {"id": 2, "properties": {"key": "view"}, "info": {},
             "resolutions": {"available": []}}
        ]
    },
    "input": {"all": [
        {"id": 1, "info": {"crop.possible": true, "crop.max": [21, 22]}, "crop": [23, 24, 25, 26],
         "resolution_unrotated": {"capture": [1920, 1080]}},
        {"id": 2, "info": {"crop.possible": true, "crop.max": [31, 32]}, "crop": [33, 34, 35, 36],
         "resolution_unrotated": {"capture": [1280, 720]}}
    ]},
    "output": {"all": [{"id": 0, "info": {"running": false}, "settings": {"enabled": true}}]}
})";

// --- Answers and their paths ---------------------------------------------------------------------

// A member's name or an index in a list.
using step = std::variant<std::string, std::size_t>;

// An answer of a snapshot. Its kind is its path without the indexes: "stream.all[].info".
struct answer {
    std::vector<step> path;
    std::string kind;
    std::size_t index = 0;  // in the only list on the path
};

// Contain answers, but are not answers themselves.
const std::set<std::string> containers = {
    "",        "stream",        "stream.all[]",
    "channel", "channel.all[]", "channel.all[].resolutions",
    "input",   "input.all",     "input.all[].resolution_unrotated",
    "output",  "output.all"};
// Contain answers, and are answers themselves: for an object, that it can be opened.
const std::set<std::string> answers_and_containers = {"system",      "mode",        "stream.all",
                                                      "channel.all", "input.all[]", "output.all[]"};
// Neither.
const std::set<std::string> not_answers = {
    "version",          "about",          "recorded",        "stream.all[].id",
    "channel.all[].id", "input.all[].id", "output.all[].id", "channel.all[].properties",
    "formats"};
// The other answers: maps and numbers.
const std::set<std::string> plain_answers = {"system.caps",
                                             "mode.info",
                                             "stream.debug",
                                             "stream.quota",
                                             "stream.limit",
                                             "stream.all[].info",
                                             "stream.all[].settings",
                                             "stream.all[].debug",
                                             "channel.info",
                                             "channel.filtered",
                                             "channel.all[].info",
                                             "channel.all[].crop",
                                             "channel.all[].crop_max",
                                             "channel.all[].resolutions.available",
                                             "input.all[].info",
                                             "input.all[].crop",
                                             "input.all[].resolution_unrotated.capture",
                                             "output.all[].info",
                                             "output.all[].settings"};

void walk(const json& node, const answer& here, std::vector<answer>& found) {
    const bool is_answer = answers_and_containers.contains(here.kind);
    if (not_answers.contains(here.kind)) {
        return;
    }
    if (is_answer || !containers.contains(here.kind)) {
        found.push_back(here);
    }
    if (!is_answer && !containers.contains(here.kind)) {
        return;  // a map or numbers: contains no further answers
    }
    if (const auto* members = node.get_if<json::object_t>()) {
        for (const auto& [name, member] : *members) {
            if (name == "$error") {
                continue;  // an answer recorded as a failure
            }
            answer below = here;
            below.path.emplace_back(std::string(name));
            below.kind += (here.kind.empty() ? "" : ".") + std::string(name);
            walk(member, below, found);
        }
    } else if (const auto* elements = node.get_if<json::array_t>()) {
        for (std::size_t i = 0; i < elements->size(); ++i) {
            answer below = here;
            below.path.emplace_back(i);
            below.kind += "[]";
            below.index = i;
            walk((*elements)[i], below, found);
        }
    }
}

json parse(const std::string& text) {
    json document;
    if (const auto error = glz::read<glz::opts{.comments = true}>(document, text)) {
        throw std::runtime_error(glz::format_error(error, text));
    }
    return document;
}

std::vector<answer> answers_of(const json& document) {
    std::vector<answer> found;
    walk(document, {}, found);
    return found;
}

// --- Failures ------------------------------------------------------------------------------------

enum class failure_form { error_in_its_place, left_out };

const std::string error_text = "this {} fails: 100%s";
// Placeholder for a message with the client library's own wording: not empty, on one line.
const std::string any_message = "\x1a";

struct failure {
    answer what;
    failure_form form;

    bool hits(std::string_view kind) const { return what.kind == kind; }
    bool hits(std::string_view kind, std::size_t index) const {
        return what.kind == kind && what.index == index;
    }
    const std::string& message() const {
        return form == failure_form::error_in_its_place ? error_text : any_message;
    }
};

std::string name_of(const failure& which) {
    std::string name;
    for (const step& each : which.what.path) {
        name += std::holds_alternative<std::string>(each)
                    ? std::get<std::string>(each)
                    : std::to_string(std::get<std::size_t>(each));
        name += "_";
    }
    return name + (which.form == failure_form::left_out ? "left_out" : "error");
}

void PrintTo(const failure& which, std::ostream* stream) {
    *stream << name_of(which);
}

const failure no_failure{{{}, "nothing", 0}, failure_form::left_out};

std::vector<failure> all_failures() {
    std::vector<failure> all;
    for (const answer& each : answers_of(parse(full_snapshot))) {
        all.push_back({each, failure_form::error_in_its_place});
        all.push_back({each, failure_form::left_out});
    }
    // A full snapshot does not record this answer: the filtered list follows from `properties`.
    all.push_back(
        {{{"channel", "filtered"}, "channel.filtered", 0}, failure_form::error_in_its_place});
    return all;
}

// Returns the text of the full snapshot with that failure.
std::string snapshot_with(const failure& which) {
    json document = parse(full_snapshot);
    json* parent = nullptr;
    json* place = &document;
    for (const step& each : which.what.path) {
        parent = place;
        place = std::holds_alternative<std::string>(each)
                    ? &parent->get<json::object_t>()[std::get<std::string>(each)]
                    : &parent->get<json::array_t>()[std::get<std::size_t>(each)];
    }
    if (which.form == failure_form::error_in_its_place) {
        json error;
        if (which.hits("input.all[]") || which.hits("output.all[]")) {
            error["id"] = place->get<json::object_t>().at("id").get<double>();
        }
        error["$error"] = error_text;
        *place = error;
    } else if (parent->get_if<json::array_t>() != nullptr) {
        auto& elements = parent->get<json::array_t>();
        elements.erase(elements.begin() +
                       static_cast<std::ptrdiff_t>(std::get<std::size_t>(which.what.path.back())));
    } else {
        parent->get<json::object_t>().erase(std::get<std::string>(which.what.path.back()));
    }
    return glz::write_json(document).value();
}

// --- The model: what each section prints ---------------------------------------------------------

// A section's output. A section with a line for standard error ends the run.
struct printed {
    std::string out;
    std::string err;
};

std::string joined(const std::vector<std::string>& lines, const std::string& separator) {
    std::string text;
    for (const std::string& line : lines) {
        text += (text.empty() ? "" : separator) + line;
    }
    return text;
}

printed stream_max_stats(const failure& failing) {
    if (failing.hits("stream.debug")) {
        return {"MaxBufferBytes=-1\nMaxEncodeStreams=-1\nMaxRawStreams=-1\nVersion=1\n", ""};
    }
    return {"MaxBufferBytes=90\nMaxEncodeStreams=8\nMaxRawStreams=7\nVersion=1\n", ""};
}

printed system_info(const failure& failing) {
    std::string inputs = "2";
    std::string capture_modes;
    std::vector<std::string> members;
    for (std::size_t i = 0; i < 2; ++i) {
        if (!failing.hits("input.all[]", i) &&
            !failing.hits("input.all[].resolution_unrotated.capture", i)) {
            members.emplace_back(i == 0 ? "        \"input1\": \"1920x1080\""
                                        : "        \"input2\": \"1280x720\"");
        }
    }
    capture_modes = "{\n" + joined(members, ",\n") + "\n    }";
    if (failing.hits("channel.info")) {
        inputs = "0";
        capture_modes = "";
    }
    std::string view_mode = "{\n        \"sensor_fps\": 25\n    }";
    if (failing.hits("mode") || failing.hits("mode.info")) {
        view_mode = "";
    }
    return {"{\n    \"inputs\": " + inputs + ",\n    \"capturemodes\": " + capture_modes +
                ",\n    \"viewmode\": " + view_mode + "\n}\n",
            ""};
}

printed identity_info(const failure& failing) {
    if (failing.hits("stream.debug")) {
        return {};
    }
    return {"{\n    \"identities\": {\n        \"alpha\": 1e+1\n    }\n}\n", ""};
}

printed list_streams(const failure& failing) {
    const std::vector<std::string> summaries = {
        R"(        { "id/0x0011" : {"bitrate":0,"channel":0,"duration":"00:00:00","failcount":0,"format":"NV12","framecount":0,"framerate":0,"identity":"N/A","peers":0,"resolution":"640x360"} })",
        R"(        { "id/0x0012" : {"bitrate":0,"channel":0,"duration":"00:00:59","failcount":0,"format":"h264","framecount":0,"framerate":0,"identity":"N/A","peers":0,"resolution":"1920x1080"} })",
        R"(        { "id/0x0013" : {"bitrate":0,"channel":0,"duration":"00:00:00","failcount":0,"format":"jpeg","framecount":1500,"framerate":0,"identity":"alpha","peers":0,"resolution":"0x0"} })"};
    const std::vector<std::string> settings = {
        R"(        {
            "id/0x0011" : {
                "basic": {"channel":0,"format":"NV12","framerate":0,"resolution":"640x360","rotation":0,"warp":4}
            }
        })",
        R"(        {
            "id/0x0012" : {
                "basic": {"channel":0,"compression":0,"format":"h264","framerate":0,"mirror":0,"monochrome":0,"resolution":"1920x1080","rotation":0,"signed":0},
                "h26x": {"bitrate":0,"goplength":0,"profile":"baseline","rcmode":"cbr","rcprio":"fps"},
                "leanflow": {"fps":0,"fpsmode":"fixed","goplength":0,"gopmode":"fixed","skipmode":"drop","strength":25}
            }
        })",
        R"(        {
            "id/0x0013" : {
                "basic": {"channel":0,"compression":0,"format":"jpeg","framerate":0,"mirror":0,"monochrome":0,"resolution":"0x0","rotation":0}
            }
        })"};
    const std::vector<std::string> statistics = {
        R"(        { "id/0x0011" : {"actual-framerate":0,"bitrate":0,"failcount":0,"framecount":0,"reclaimcount":0} })",
        R"(        { "id/0x0012" : {"actual-framerate":0,"bitrate":0,"failcount":0,"framecount":0,"reclaimcount":0,"tlm[0].duration":"00:00:01"} })",
        R"(        { "id/0x0013" : {"actual-framerate":0,"bitrate":0,"failcount":0,"framecount":1.5e+3,"reclaimcount":0} })"};
    if (failing.hits("stream.all")) {
        return {"",
                "oru-serverreport-tool: Failed to get all streams: " + failing.message() + "\n"};
    }
    const auto remaining = [&](const std::vector<std::string>& lines) {
        std::vector<std::string> reported;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (!failing.hits("stream.all[].info", i) &&
                !failing.hits("stream.all[].settings", i) &&
                !failing.hits("stream.all[].debug", i)) {
                reported.push_back(lines[i]);
            }
        }
        return joined(reported, ",\n") + "\n";
    };
    return {"----- Snapshot of all running streams -----\n\n{\n    \"streams\" : [\n" +
                remaining(summaries) + "    ],\n\n    \"streaminfo\" : [\n" + remaining(settings) +
                "    ],\n\n    \"streamstatistics\" : [\n" + remaining(statistics) + "    ]\n}\n\n",
            ""};
}

printed stream_quotas(const failure& failing) {
    if (failing.hits("stream.quota")) {
        return {"", "oru-serverreport-tool: Failed to get quota: " + failing.message() + "\n"};
    }
    if (failing.hits("stream.limit")) {
        return {"", "oru-serverreport-tool: Failed to get limit: " + failing.message() + "\n"};
    }
    // The section asks the first encoded stream: the second one, or without its settings the third.
    // If the chosen stream does not answer, it asks the first stream.
    std::string capacity = failing.hits("stream.all[].settings", 1) ? "53" : "52";
    if (failing.hits("stream.all[].debug", 1)) {
        capacity = "51";
    }
    const bool has_current = !failing.hits("stream.all");
    std::string out =
        "----- Stream Quotas and Limits -----\n\n{\n    \"streammaximumquota\" : [\n"
        "        {\"buffering\":\"6\",\"hard\":\"120\",\"soft\":\"100\"}\n    ],\n\n";
    if (has_current) {
        out += "    \"streamcurrentquota\" : [\n        {\"hard\":\"" + capacity +
               "\",\"soft\":\"" + capacity + "\"}\n    ],\n\n";
    }
    out += "    \"streammaximumlimits\" : [\n        {\"encode\":\"20\",\"other\":\"20\"}\n";
    if (has_current) {
        out +=
            "    ],\n\n    \"streamcurrentlimits\" : [\n"
            "        {\"jpeg\":\"0\",\"motion encoded\":\"0\",\"other\":\"0\"}\n";
    }
    return {out + "    ]\n}\n\n", ""};
}

printed list_output(const failure& failing) {
    const std::string prefix = "oru-serverreport-tool: Failed to get output";
    if (failing.hits("system") || failing.hits("system.caps")) {
        return {};
    }
    if (failing.hits("output.all[]")) {
        return {"", prefix + ": " + failing.message() + "\n"};
    }
    if (failing.hits("output.all[].settings")) {
        return {"", prefix + " settings: " + failing.message() + "\n"};
    }
    if (failing.hits("output.all[].info")) {
        return {"", prefix + " info: " + failing.message() + "\n"};
    }
    return {"----- HDMI output -----\n\n    {\"enabled\":\"Yes\",\"running\":\"No\"}\n\n", ""};
}

printed list_channels(const failure& failing) {
    if (failing.hits("channel.all")) {
        return {"Failed to get all channels: " + failing.message() + "\n", ""};
    }
    std::string out = "----- Snapshot of channel settings -----\n\n{\n    \"channels\" : [\n";
    const std::vector<std::string> lines = {
        R"(        {"id/0":{"crop":"Yes","height":4,"maxheight":6,"maxwidth":5,"width":3,"x":1,"y":2}})",
        R"(        {"id/1":{"crop":"Yes","height":14,"maxheight":16,"maxwidth":15,"width":13,"x":11,"y":12}})",
        R"(        {"id/2":{"crop":"No"}})"};
    for (std::size_t i = 0; i < lines.size(); ++i) {
        out += i == 0 ? "" : ",\n";
        if (failing.hits("channel.all[].info", i)) {
            return {out + "Failed to get channel info: " + failing.message() + "\n", ""};
        }
        const bool is_zero =
            failing.hits("channel.all[].crop", i) || failing.hits("channel.all[].crop_max", i);
        out += is_zero ? "        {\"id/" + std::to_string(i) +
                             R"(":{"crop":"Yes","height":0,"maxheight":0,"maxwidth":0,"width":0,)" +
                             R"("x":0,"y":0}})"
                       : lines[i];
    }
    return {out + "\n    ]\n}\n", ""};
}

printed available_resolutions(const failure& failing) {
    if (failing.hits("channel.all")) {
        return {"Failed to get all channels: " + failing.message() + "\n", ""};
    }
    std::string out = "----- Available resolutions -----\n\n{\n    \"available_resolutions\" : [\n";
    const std::vector<std::string> lists = {"1920x1080,1280x720", "640x360,", ""};
    for (std::size_t i = 0; i < lists.size(); ++i) {
        out += "        {\"channel\":\"" + std::to_string(i) + "\",";
        if (failing.hits("channel.all[].resolutions.available", i)) {
            return {out + "\nFailed to get resolutions: " + failing.message() + "\n", ""};
        }
        out += "\"resolutions\":\"" + lists[i] + (i + 1 < lists.size() ? "\"},\n" : "\"}\n");
    }
    return {out + "    ]\n}\n", ""};
}

printed list_inputs(const failure& failing) {
    if (failing.hits("channel.all") || failing.hits("channel.filtered")) {
        return {"Failed to get inputs: " + failing.message() + "\n", ""};
    }
    std::string out = "----- Snapshot of input settings -----\n\n{\n    \"inputs\" : [\n";
    const std::vector<std::string> lines = {
        R"(        {"id/1":{"crop":"Yes","height":26,"maxheight":22,"maxwidth":21,"width":25,"x":23,"y":24}},)",
        R"(        {"id/2":{"crop":"Yes","height":36,"maxheight":32,"maxwidth":31,"width":35,"x":33,"y":34}})"};
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (failing.hits("channel.all[].info", i)) {
            return {out + "Failed to get channel info: " + failing.message() + "\n", ""};
        }
        if (failing.hits("input.all[]", i)) {
            return {out + "Failed to get input " + std::to_string(i + 1) + ": " +
                        failing.message() + "\n",
                    ""};
        }
        if (failing.hits("input.all[].info", i)) {
            return {out + "Failed to get input info: " + failing.message() + "\n", ""};
        }
        if (!failing.hits("input.all[].crop", i)) {
            out += lines[i] + "\n";
        }
    }
    return {out + "    ]\n}\n", ""};
}

// --- The runs ------------------------------------------------------------------------------------

using section = std::function<printed(const failure&)>;

struct tool_run {
    decltype(&tlm) tool;
    std::vector<std::string> arguments;
    std::vector<section> sections;  // in the order of the report
};

// These query nothing.
const std::vector<tool_run> runs_without_queries = {
    {tlm, {}, {}},
    {report, {}, {}},
    {report, {"--list-resolutions"}, {}},
};

const std::vector<tool_run> runs_with_queries = {
    {tlm, {"--stream-max-stats"}, {stream_max_stats}},
    {tlm, {"--system-info"}, {system_info}},
    {tlm, {"--identity-info"}, {identity_info}},
    {tlm, {"-qsi"}, {stream_max_stats, system_info, identity_info}},
    {report, {"--list-streams"}, {list_streams}},
    {report, {"--stream-quotas"}, {stream_quotas}},
    {report, {"--list-output"}, {list_output}},
    {report, {"--list-channels"}, {list_channels}},
    {report, {"--list-available-resolutions"}, {available_resolutions}},
    {report, {"--list-inputs"}, {list_inputs}},
    {report,
     {"-lqocrai"},
     {list_streams, stream_quotas, list_output, list_channels, available_resolutions, list_inputs}},
    {report, {"-ocai"}, {list_output, list_channels, available_resolutions, list_inputs}},
    {report, {"-cai"}, {list_channels, available_resolutions, list_inputs}},
};

// Returns the output of the sections, up to the first that ends the run.
result expected_of(const std::vector<section>& sections, const failure& failing) {
    result expected = ended(0, "");
    for (const section& each : sections) {
        const printed part = each(failing);
        expected.out += part.out;
        if (!part.err.empty()) {
            expected.err = part.err;
            expected.status = 1;
            break;
        }
    }
    return expected;
}

// Returns whether the text is the expected one, in which `any_message` matches any message.
bool matches(std::string_view text, std::string_view expected) {
    const std::size_t message = expected.find(any_message);
    if (message == std::string_view::npos) {
        return text == expected;
    }
    const std::string_view before = expected.substr(0, message);
    if (!text.starts_with(before)) {
        return false;
    }
    const std::size_t end = text.find('\n', message);
    return end != std::string_view::npos && end > message &&
           matches(text.substr(end), expected.substr(message + any_message.size()));
}

void check(const std::vector<tool_run>& runs, const failure& failing, const std::string& snapshot) {
    for (const tool_run& each : runs) {
        const result expected = expected_of(each.sections, failing);
        const result got = each.tool(snapshot, each.arguments, {});
        EXPECT_TRUE(matches(got.out, expected.out) && matches(got.err, expected.err) &&
                    got.status == expected.status && got.signal == 0)
            << (each.tool == tlm ? "oru-tlm-tool " : "oru-serverreport-tool ")
            << (each.arguments.empty() ? "" : each.arguments.front()) << "\nexpected " << expected
            << "\ngot " << got;
    }
}

TEST(failure_matrix, without_a_failure) {
    check(runs_without_queries, no_failure, full_snapshot);
    check(runs_with_queries, no_failure, full_snapshot);
}

TEST(failure_matrix, contains_every_kind_of_answer) {
    std::set<std::string> known = plain_answers;
    known.insert(answers_and_containers.begin(), answers_and_containers.end());
    std::set<std::string> tested;
    for (const failure& each : all_failures()) {
        tested.insert(each.what.kind);
    }
    EXPECT_EQ(tested, known);
}

TEST(failure_matrix, the_examples_contain_no_other_kind_of_answer) {
    std::size_t examples = 0;
    for (const auto& file : std::filesystem::directory_iterator(ORU_EXAMPLES_DIR)) {
        if (file.path().extension() != ".json") {
            continue;
        }
        ++examples;
        std::string text;
        ASSERT_FALSE(bool(glz::file_to_buffer(text, file.path().string())));
        for (const answer& each : answers_of(parse(text))) {
            EXPECT_TRUE(plain_answers.contains(each.kind) ||
                        answers_and_containers.contains(each.kind))
                << file.path() << ": " << each.kind;
        }
    }
    EXPECT_GT(examples, 0U);
}

class failure_matrix_of : public testing::TestWithParam<failure> {};

TEST_P(failure_matrix_of, each_section_prints_what_the_model_prints) {
    check(runs_with_queries, GetParam(), snapshot_with(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(each_answer, failure_matrix_of, testing::ValuesIn(all_failures()),
                         [](const auto& parameter) { return name_of(parameter.param); });

}  // namespace
