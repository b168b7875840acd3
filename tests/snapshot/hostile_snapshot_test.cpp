// Hostile snapshots: whatever a file contains, it is rejected with the place and a reason, or it is
// reported correctly.
#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <format>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "snapshot/load.h"
#include "support/snapshot_file.h"
#include "support/tools.h"

namespace {

using namespace std::string_literals;

// One line, with every possible member and a value of every kind.
const std::string full =
    R"({"version":1,"about":"a","recorded":"2026-11-22T07:14:32Z","system":{"caps":{"output":true}},"mode":{"info":{"a":1,"b":-2,"c":1.5,)"
    R"("d":"x","e":[1,2],"f":{"uint16":3},"g":{"double":"nan"},"h":{"bytes":"6fff"}}},"stream":{"debug":{"$error":"none"},"quota":{"k":0},)"
    R"("limit":{},"all":[{"id":1,"info":{"x":1},"settings":{"y":2},"debug":{"$error":"gone"}}]},)"
    R"("channel":{"info":{"n":1},"filtered":[{"id":7,"crop_max":[1,1]}],"all":[{"id":0,"properties":{"key":"in"},)"
    R"("info":{"i":1},"crop":[1,2,3,4],"crop_max":[5,6],"resolutions":{"available":[[7,8],[9,10]],)"
    R"("other":{"$error":"none"}}}]},"input":{"all":[{"id":1,"info":{},"crop":{"$error":"none"},)"
    R"("resolution_unrotated":{"capture":[1,2]}},{"id":2,"$error":"broken"}]},)"
    R"("output":{"all":[{"id":0,"info":{},"settings":{}}]},"formats":{"h264":0,"raw":3}})";

std::size_t end_of_string(std::string_view text, std::size_t at) {
    do {
        at += text[at] == '\\' ? 2 : 1;
    } while (text[at] != '"');
    return at + 1;
}

std::size_t end_of_value(std::string_view text, std::size_t at) {
    if (text[at] == '"') {
        return end_of_string(text, at);
    }
    int depth = 0;
    do {
        if (text[at] == '"') {
            at = end_of_string(text, at) - 1;
        } else if (text[at] == '{' || text[at] == '[') {
            ++depth;
        } else if (text[at] == '}' || text[at] == ']') {
            --depth;
        }
        ++at;
    } while (depth > 0 || !std::string_view(",}]").contains(text[at]));
    return at;
}

struct range {
    std::size_t begin;
    std::size_t end;
};

// Returns the place of each value in the text, except that of the whole text.
std::vector<range> values_of(std::string_view text) {
    std::vector<range> values;
    std::string open;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '"') {
            at = end_of_string(text, at) - 1;
            continue;
        }
        if (c == '{' || c == '[') {
            open += c;
        } else if (c == '}' || c == ']') {
            open.pop_back();
        }
        const bool starts = c == ':' || c == '[' || (c == ',' && open.back() == '[');
        if (starts && text[at + 1] != ']') {
            values.push_back({at + 1, end_of_value(text, at + 1)});
        }
    }
    return values;
}

std::string repeated(std::string_view text, std::size_t count) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

// Rejected in the place of any value.
const std::vector<std::string> never_values = {
    "null",
    "tru",
    "True",
    "NaN",
    "Infinity",
    "-",
    "+1",
    "01",
    "1.",
    ".5",
    "1e",
    "0x1",
    "1+1",
    "1-1",
    "1.5.5",
    "1A",
    "1a",
    "00",
    "1e999",
    "-1e999",
    std::string(400, '9'),
    "1." + std::string(100000, '0') + "e999999999999",
    "'x'",
    "x",
    "\xc3\xa9",
    "\"",
    "\"a\nb\"",
    "\"\\u0000\"",
    "\"\\ud800\"",
    "\"\\udc00\\ud800\"",
    "\"\\x\"",
    "\"\xff\"",
    "\"\xc0\x80\"",
    "\"\xed\xa0\x80\"",
    "\"\xf4\x90\x80\x80\"",
    "\"\xe2\x82\"",
    "\"a\0b\""s,
    "\0"s,
    "\xef\xbb\xbf"
    "1",
    "{",
    "}",
    "[",
    "]",
    ",",
    ":",
    "1 2",
    "/",
    "/*",
    "//",
    "[1,2,3,4,5]",
    "[1,2,]",
    "[,1]",
    "[4294967296,0]",
    "[-1,0]",
    "[1.5,2]",
    "[[[1,2]]]",
    "{\"a\"}",
    "{\"a\":}",
    "{\"a\":1,}",
    "{a:1}",
    "{1:1}",
    "{\"a\":1,\"a\":1}",
    "{\"a\":1,\"\\u0061\":1}",
    "{\"$error\":\"x\",\"$error\":\"x\"}",
    repeated("[", 100000),
    repeated("[", 100000) + repeated("]", 100000),
    repeated("{\"a\":", 100000),
    repeated("{\"a\":", 100000) + "1" + repeated("}", 100000),
    repeated("[{\"a\":", 50000),
    "[" + repeated("[1,2],", 100000),
    "[" + repeated("1,", 100000) + "1]",
    "\"" + std::string(1000000, 'x'),
};

// Loads the text, which must be rejected in its first line, at the byte `from` or after it.
void expect_refused(const snapshot_file& file, const std::string& text, std::size_t from) {
    file.write(text);
    const auto loaded = snapshot::load(file.path());
    ASSERT_FALSE(loaded) << "taken: " << text.substr(0, 2000);
    std::string_view complaint = loaded.error();
    ASSERT_TRUE(complaint.starts_with(file.path() + ":1:")) << complaint;
    complaint.remove_prefix(file.path().size() + 3);
    const std::size_t column = std::stoul(std::string(complaint.substr(0, 20)));
    EXPECT_GT(column, from) << complaint;
    EXPECT_LE(column, text.size() + 1) << complaint;
    const std::string_view reason = complaint.substr(complaint.find(": ") + 2);
    EXPECT_GE(reason.size(), 10) << complaint;
    EXPECT_LE(reason.size(), 200) << complaint;
    EXPECT_TRUE(std::ranges::all_of(reason, [](char c) {
        return static_cast<unsigned char>(c) >= ' ' && c != 0x7f;
    })) << complaint;
}

TEST(hostile_snapshot, is_accepted_without_an_insertion) {
    const snapshot_file file(full);
    const auto loaded = snapshot::load(file.path());
    EXPECT_TRUE(loaded) << loaded.error();
    EXPECT_GT(values_of(full).size(), 60);
}

TEST(hostile_snapshot, invalid_values_are_rejected_everywhere) {
    const snapshot_file file;
    for (const range& value : values_of(full)) {
        for (const std::string& hostile : never_values) {
            SCOPED_TRACE(full.substr(0, value.begin) + " <- " + hostile.substr(0, 60));
            std::string text = full;
            text.replace(value.begin, value.end - value.begin, hostile);
            // Errors in bytes are reported before errors in values.
            expect_refused(file, text, value.begin);
            if (testing::Test::HasFatalFailure()) {
                return;
            }
        }
    }
}

// Only there a value of any form is accepted, as long as it is JSON.
TEST(hostile_snapshot, invalid_json_is_rejected_in_a_value_of_another_kind) {
    const snapshot_file file;
    const std::string before = R"({"mode":{"info":{"k":{"other":)";
    std::size_t taken = 0;
    for (const std::string& hostile : never_values) {
        file.write(before + hostile + "}}}}");
        if (snapshot::load(file.path())) {
            ++taken;
            continue;
        }
        for (const char* around : {"%", "[%]", R"({"a":%})", R"([1,{"b":[%]}])"}) {
            std::string text = before + around + "}}}}";
            const std::size_t place = text.find('%');
            text.replace(place, 1, hostile);
            SCOPED_TRACE(text.substr(0, 100));
            expect_refused(file, text, place);
        }
    }
    // A null, 4 numbers too large or too long, 3 strings that are no text, 6 arrays of another
    // form, and 3 objects with a name given twice.
    EXPECT_EQ(taken, 17) << "of " << never_values.size();
}

TEST(hostile_snapshot, repeated_and_misplaced_members_are_rejected_in_every_object) {
    const snapshot_file file;
    for (std::size_t at = 0; at < full.size(); ++at) {
        if (full[at] != '{' || full[at + 1] == '}') {
            continue;
        }
        for (const char* members :
             {R"("k":1,"k":1,)", R"("":1,"":2,)", "\"\x7f\":1,\"\x7f\":1,", R"("k":{},"k":{},)",
              R"("k" 1,)", R"(1:1,)", R"(,)", R"("k":1;)"}) {
            std::string text = full;
            text.insert(at + 1, members);
            expect_refused(file, text, at);
            if (testing::Test::HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST(hostile_snapshot, every_truncation_is_rejected) {
    const snapshot_file file;
    for (std::size_t size = 1; size < full.size(); ++size) {
        expect_refused(file, full.substr(0, size), 0);
    }
}

TEST(hostile_snapshot, invalid_bytes_are_rejected_at_their_place) {
    const snapshot_file file;
    for (std::size_t at = 0; at < full.size(); ++at) {
        for (const char byte : {'\0', '\xff', '\x80', '\xc3', '\x01', '\x1f'}) {
            std::string text = full;
            text[at] = byte;
            // A control character is reported as part of its token, another byte on its own.
            expect_refused(file, text, byte > 0 ? 0 : at);
        }
    }
}

// The size of these files is wrong, or they cannot be read.
TEST(hostile_snapshot, special_files_are_rejected) {
    EXPECT_EQ(snapshot::load("/proc/self/status").error(),
              "/proc/self/status: changed while it was read");
    EXPECT_EQ(snapshot::load("/proc/self/mem").error(), "/proc/self/mem: Input/output error");
}

// --- Many of everything -------------------------------------------------------------------------

std::string list_of(std::size_t count, const std::function<std::string(std::size_t)>& element) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i) {
        all += (i == 0 ? "" : ",") + element(i);
    }
    return all;
}

std::string many_streams(std::size_t count) {
    return R"({"stream":{"quota":{},"limit":{},"all":[)" +
           list_of(count,
                   [](std::size_t i) {
                       return std::format(
                           R"({{"id":{},"info":{{}},"settings":{{"format":2}},"debug":{{}}}})",
                           i + 1);
                   }) +
           "]}}";
}

// A leak checker looks up all callers of every map, which takes minutes.
const std::size_t many = std::getenv("ORU_TEST_SANITIZED") != nullptr ? 5000 : 100000;

TEST(hostile_snapshot, all_of_very_many_streams_are_reported) {
    const std::size_t count = many;
    std::string summaries;
    std::string settings;
    std::string statistics;
    for (std::size_t id = 1; id <= count; ++id) {
        const char* end = id == count ? "\n" : ",\n";
        summaries += std::format(
            R"(        {{ "id/0x{:04x}" : {{"bitrate":0,"channel":0,"duration":"00:00:00",)"
            R"("failcount":0,"format":"jpeg","framecount":0,"framerate":0,"identity":"N/A",)"
            R"("peers":0,"resolution":"0x0"}} }}{})",
            id, end);
        settings += std::format(
            "        {{\n            \"id/0x{:04x}\" : {{\n                \"basic\": "
            R"({{"channel":0,"compression":0,"format":"jpeg","framerate":0,"mirror":0,)"
            R"("monochrome":0,"resolution":"0x0","rotation":0}})"
            "\n            }}\n        }}{}",
            id, end);
        statistics += std::format(
            R"(        {{ "id/0x{:04x}" : {{"actual-framerate":0,"bitrate":0,"failcount":0,)"
            R"("framecount":0,"reclaimcount":0}} }}{})",
            id, end);
    }
    const result got = report(many_streams(count), {"-l"});
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.err, "");
    EXPECT_TRUE(got.out ==
                "----- Snapshot of all running streams -----\n\n{\n    \"streams\" : [\n" +
                    summaries + "    ],\n\n    \"streaminfo\" : [\n" + settings +
                    "    ],\n\n    \"streamstatistics\" : [\n" + statistics + "    ]\n}\n\n")
        << got.out.substr(0, 1000);
}

}  // namespace
