#include "snapshot/writer.h"

#include <cmath>
#include <limits>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace snapshot;
using namespace std::string_view_literals;

// The message of a refusal; empty if the text was written.
std::string refusal_of(const answers& answers, std::size_t longest) {
    try {
        write(answers, longest);
        return "";
    } catch (const not_recordable& error) {
        return error.what();
    }
}

TEST(writer, rejects_a_text_that_is_longer_than_allowed) {
    answers all;
    EXPECT_EQ(refusal_of(all, 21), "");
    EXPECT_EQ(refusal_of(all, 20),
              "the recording is longer than 20 bytes, the limit of a snapshot");
    // It fails before the next answer is written.
    all.system = failure{"\xe9"};
    EXPECT_EQ(refusal_of(all, 17),
              "the recording is longer than 17 bytes, the limit of a snapshot");
}

TEST(writer, writes_one_member_a_line_and_omits_left_out_answers) {
    EXPECT_EQ(write(answers{}), "{\n    \"version\": 1\n}\n");

    answers all;
    all.about = "gate \"north\"";
    all.recorded = "2026-11-22T07:14:32Z";
    all.system = failure{"busy"};
    all.mode = mode_record{};
    const entry entries[] = {{"a", std::uint32_t{1}}, {"b\"", pair32u(1, 2)}};
    all.stream_limit = map_entries(entries);
    all.stream_debug = map_entries();
    all.streams = std::vector{stream_record{}, stream_record{.id = 7, .info = failure{""}}};
    const resolution sizes[] = {{1920, 1080}, {1, 0}};
    const resolution_list lists[] = {{"available", std::span<const resolution>(sizes)},
                                     {"busy", failure{"yes"}},
                                     {"none", std::span<const resolution>()}};
    const entry property[] = {{"key", "input"sv}};
    all.channels =
        std::vector{channel_record{.id = 0,
                                   .properties = property,
                                   .crop = rectangle{1, 2, 3, 4294967295},
                                   .crop_max = resolution{5, 6},
                                   .resolutions = std::span<const resolution_list>(lists)}};
    all.channels_filtered = std::vector<channel_record>();
    all.inputs = std::vector{input_record{.id = 2, .fails = failure{"no"}}};
    all.outputs = failure{"none"};
    all.formats = {{"b", 3}, {"a", 3}, {"c", 1}};
    EXPECT_EQ(write(all), R"({
    "version": 1,
    "about": "gate \"north\"",
    "recorded": "2026-11-22T07:14:32Z",
    "system": { "$error": "busy" },
    "mode": {},
    "stream": {
        "debug": {},
        "limit": {
            "a": 1,
            "b\"": [1, 2]
        },
        "all": [
            {
                "id": 0
            },
            {
                "id": 7,
                "info": { "$error": "" }
            }
        ]
    },
    "channel": {
        "all": [
            {
                "id": 0,
                "properties": {
                    "key": "input"
                },
                "crop": [1, 2, 3, 4294967295],
                "crop_max": [5, 6],
                "resolutions": {
                    "available": [[1920, 1080], [1, 0]],
                    "busy": { "$error": "yes" },
                    "none": []
                }
            }
        ],
        "filtered": []
    },
    "input": {
        "all": [
            {
                "id": 2,
                "$error": "no"
            }
        ]
    },
    "output": {
        "all": { "$error": "none" }
    },
    "formats": {
        "c": 1,
        "b": 3,
        "a": 3
    }
}
)");
}

// Returns the form of a value.
std::string form(const value& held) {
    const entry entries[] = {{"key", held}};
    answers all;
    all.stream_debug = map_entries(entries);
    const std::string text = write(all);
    const auto begin = text.find("\"key\": ") + 7;
    return text.substr(begin, text.rfind("\n        }\n") - begin);
}

TEST(form_of_a_value, is_the_shortest_that_preserves_the_kind) {
    EXPECT_EQ(form(true), "true");
    EXPECT_EQ(form(false), "false");
    EXPECT_EQ(form(std::uint32_t{0}), "0");
    EXPECT_EQ(form(std::uint32_t{4294967295}), "4294967295");
    EXPECT_EQ(form(std::uint16_t{0}), R"({ "uint16": 0 })");
    EXPECT_EQ(form(std::uint16_t{65535}), R"({ "uint16": 65535 })");
    EXPECT_EQ(form(std::int64_t{-1}), "-1");
    EXPECT_EQ(form(std::int64_t{0}), R"({ "int64": 0 })");
    EXPECT_EQ(form(std::int64_t{4294967295}), R"({ "int64": 4294967295 })");
    EXPECT_EQ(form(std::int64_t{4294967296}), "4294967296");
    EXPECT_EQ(form(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(form(std::numeric_limits<std::int64_t>::max()), "9223372036854775807");
    EXPECT_EQ(form(pair32u(4294967295, 0)), "[4294967295, 0]");
    EXPECT_EQ(form(other{"[1,2]"}), R"({ "other": [1,2] })");
}

TEST(form_of_a_value, distinguishes_a_double) {
    EXPECT_EQ(form(60.0), "60.0");
    EXPECT_EQ(form(0.0), "0.0");
    EXPECT_EQ(form(-0.0), "-0.0");
    EXPECT_EQ(form(29.97), "29.97");
    EXPECT_EQ(form(0.1 + 0.2), "0.30000000000000004");
    EXPECT_EQ(form(123456.0), "123456.0");
    EXPECT_EQ(form(1e5), "1e+05");
    EXPECT_EQ(form(1e22), "1e+22");
    EXPECT_EQ(form(5e-324), "5e-324");
    EXPECT_EQ(form(-1.7976931348623157e308), "-1.7976931348623157e+308");
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(form(std::copysign(nan, 1.0)), R"({ "double": "nan" })");
    EXPECT_EQ(form(std::copysign(nan, -1.0)), R"({ "double": "-nan" })");
    EXPECT_EQ(form(inf), R"({ "double": "inf" })");
    EXPECT_EQ(form(-inf), R"({ "double": "-inf" })");
}

TEST(form_of_a_value, escapes_characters_that_json_requires_it_of) {
    EXPECT_EQ(form(""sv), R"("")");
    EXPECT_EQ(form("plain /text"sv), R"("plain /text")");
    EXPECT_EQ(form("\"\\\b\f\n\r\t"sv), R"("\"\\\b\f\n\r\t")");
    EXPECT_EQ(form("\x01\x0b\x1f\x7f"sv), "\"\\u0001\\u000b\\u001f\x7f\"");
    EXPECT_EQ(form("café 🎥 \u0080"sv), "\"café 🎥 \u0080\"");
}

TEST(form_of_a_value, is_bytes_for_a_text_that_is_not_utf8) {
    EXPECT_EQ(form("o\xff"sv), R"({ "bytes": "6fff" })");
    EXPECT_EQ(form("\x01\xed\xa0\x80"sv), R"({ "bytes": "01eda080" })");
    EXPECT_EQ(form("\xc0\xaf"sv), R"({ "bytes": "c0af" })");
}

// Which answers are rejected is tested where a service can give them: in recording_test.cpp.

}  // namespace
