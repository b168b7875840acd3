#include <bit>
#include <cmath>
#include <format>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <qwire.h>

#include "snapshot/load.h"
#include "support/snapshot_file.h"

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using snapshot::answer;
using snapshot::failure;
using snapshot::map_entries;

snapshot::loaded load(std::string_view text) {
    return snapshot::load(snapshot_file(text).path());
}

// Returns the complaint about the text, without the path, or "".
std::string complaint(std::string_view text) {
    const snapshot_file file(text);
    const auto loaded = snapshot::load(file.path());
    if (loaded) {
        return "";
    }
    EXPECT_TRUE(loaded.error().starts_with(file.path() + ":")) << loaded.error();
    return loaded.error().substr(file.path().size() + 1);
}

// Returns the complaint about `value` as a value in a map. Its column is counted from the first
// byte of the value.
std::string value_complaint(std::string_view value) {
    constexpr auto before = R"({"system":{"caps":{"k":)"sv;
    const std::string whole = complaint(std::format("{}{}}}}}}}", before, value));
    if (whole.empty()) {
        return "";
    }
    EXPECT_TRUE(whole.starts_with("1:")) << whole;
    const auto colon = whole.find(':', 2);
    return std::format("{}{}", std::stoul(whole.substr(2)) - before.size(), whole.substr(colon));
}

// Returns the only value of a map, or nothing if it was rejected.
struct loaded_value {
    snapshot::loaded snapshot;
    const snapshot::value* value = nullptr;

    template <class T>
    std::optional<T> as() const {
        return value ? value->get_if<T>() : std::nullopt;
    }
};

loaded_value load_value(std::string_view written) {
    loaded_value value{load(std::format(R"({{"system":{{"caps":{{"k":{}}}}}}})", written))};
    EXPECT_TRUE(value.snapshot) << value.snapshot.error();
    if (value.snapshot) {
        const auto& system = std::get<snapshot::system_record>((*value.snapshot)->system);
        value.value = &std::get<map_entries>(system.caps)[0].value;
    }
    return value;
}

template <class T>
bool is_value(std::string_view written, T expected) {
    const auto value = load_value(written);
    return value.as<T>() == expected;
}

bool is_double(std::string_view written, double expected) {
    const auto value = load_value(written);
    const auto held = value.as<double>();
    return held && std::bit_cast<std::uint64_t>(*held) == std::bit_cast<std::uint64_t>(expected);
}

// --- The document -------------------------------------------------------------------------------

TEST(document, reads_every_member_and_requires_none) {
    for (
        const auto text : {
            R"({})"sv,
            R"({"system":{},"mode":{},"stream":{},"channel":{},"input":{},"output":{},"formats":{}})"sv,
            R"({"stream":{"all":[]},"channel":{"all":[]},"input":{"all":[]},"output":{"all":[]}})"sv,
            R"({"stream":{"all":[{}]},"channel":{"all":[{}]},"input":{"all":[{"id":1}]},"output":{"all":[{"id":0}]}})"sv,
            R"({"version":1,"about":"unit 12, \u00e9","recorded":"2026-11-22T07:14:32Z","system":{"caps":{}},"mode":{"info":{}},"stream":{"debug":{},"quota":{},"limit":{},
                 "all":[{"id":1,"info":{},"settings":{},"debug":{}}]},
                 "channel":{"info":{},"all":[{"id":0,"properties":{"key":"input"},"info":{},
                 "crop":[0,0,1920,1080],"crop_max":[1920,1080],
                 "resolutions":{"available":[[1920,1080],[1280,720]],"none":[]}}],
                 "filtered":[{"id":0,"properties":{},"info":{},"crop":[0,0,1,1],"crop_max":[1,1],
                 "resolutions":{}},{"id":1}]},
                 "input":{"all":[{"id":1,"info":{},"crop":[0,1,2,4294967295],
                 "resolution_unrotated":{"capture":[1920,1080]}}]},
                 "output":{"all":[{"id":0,"info":{},"settings":{}}]},
                 "formats":{"h264":0,"h265":1,"same":1,"":4294967295}})"sv,
            " \t\r\n{ \"mode\" : { } } \n"sv,
        }) {
        EXPECT_EQ(complaint(text), "") << text;
    }
}

TEST(version, is_one_or_left_out) {
    for (const char* newer : {"2", "10", "4294967297", "18446744073709551616"}) {
        EXPECT_EQ(complaint(std::format("{{\n \"version\": {}, \"new\": 1}}", newer)),
                  std::format("2:13: version {} of the format is newer than version 1, the newest "
                              "that this program reads",
                              newer));
    }
    EXPECT_TRUE(complaint("{\"version\":" + std::string(1000, '9') + "}")
                    .starts_with("1:12: version 99999999999999999999... of the format is newer"));
    for (const char* wrong : {"0", "-1", "-2", "1.0", "2.0", "1e0", "10e-1"}) {
        EXPECT_EQ(complaint(std::format("{{\"version\":{}}}", wrong)),
                  "1:12: expected the version of the format, 1")
            << wrong;
    }
    EXPECT_EQ(complaint(R"({"version":"1"})"),
              "1:12: expected the version of the format, found '\"'");
    EXPECT_EQ(complaint(R"({"version":01})"), "1:12: this is not a JSON number");
    EXPECT_EQ(complaint(R"({"version":1,"version":1})"), "1:14: duplicate member 'version'");
}

TEST(time_of_a_recording, exists_and_has_one_form) {
    for (const char* right :
         {"2026-11-22T07:14:32Z", "0001-01-01T00:00:00Z", "9999-12-31T23:59:59Z",
          "2024-02-29T12:00:00Z", "2000-02-29T12:00:00Z", "2026-04-30T00:00:00Z"}) {
        const auto loaded = load(std::format("{{\"recorded\": \"{}\"}}", right));
        ASSERT_TRUE(loaded) << loaded.error();
        EXPECT_EQ((*loaded)->recorded, right);
    }
    for (const char* wrong : {"",
                              "now",
                              "2026-11-22",
                              "2026-11-22T07:14Z",
                              "2026-11-22t07:14:32Z",
                              "2026-11-22T07:14:32z",
                              "2026-11-22 07:14:32Z",
                              "2026-11-22T07:14:32",
                              "2026-11-22T07:14:32.5Z",
                              "2026-11-22T07:14:32+00:00",
                              "2026-11-22T07:14:32Z ",
                              "+026-11-22T07:14:32Z",
                              "2026-11-22T 7:14:32Z",
                              "0000-11-22T07:14:32Z",
                              "2026-00-22T07:14:32Z",
                              "2026-13-22T07:14:32Z",
                              "2026-11-00T07:14:32Z",
                              "2026-11-31T07:14:32Z",
                              "2026-02-29T07:14:32Z",
                              "1900-02-29T07:14:32Z",
                              "2026-11-22T24:00:00Z",
                              "2026-11-22T07:60:32Z",
                              "2026-11-22T07:14:60Z"}) {
        EXPECT_EQ(complaint(std::format("{{\"recorded\":\"{}\"}}", wrong)),
                  "1:13: expected a time such as 2026-11-22T07:14:32Z, in UTC")
            << wrong;
    }
    EXPECT_EQ(complaint(R"({"recorded":1795331672})"), "1:13: expected a time, found '1'");
}

TEST(document, distinguishes_left_out_answers) {
    const auto loaded = load(R"({"mode":{},"stream":{"all":[{"info":{}}]}})");
    ASSERT_TRUE(loaded) << loaded.error();
    const snapshot::answers& doc = **loaded;
    EXPECT_TRUE(std::holds_alternative<snapshot::left_out>(doc.system));
    EXPECT_TRUE(std::holds_alternative<snapshot::mode_record>(doc.mode));
    EXPECT_TRUE(std::holds_alternative<snapshot::left_out>(doc.channels));
    EXPECT_FALSE(doc.formats);
    const auto& stream = std::get<std::vector<snapshot::stream_record>>(doc.streams)[0];
    EXPECT_TRUE(std::holds_alternative<map_entries>(stream.info));
    EXPECT_TRUE(std::holds_alternative<snapshot::left_out>(stream.settings));
}

TEST(document, rejects_unknown_members) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {R"({"systems":{}})", "1:2: unknown member 'systems'"},
        {R"({"$error":"x"})", "1:2: unknown member '$error'"},
        {R"({"system":{"info":{}}})", "1:12: unknown member 'info'"},
        {R"({"mode":{"caps":{}}})", "1:10: unknown member 'caps'"},
        {R"({"stream":{"info":{}}})", "1:12: unknown member 'info'"},
        {R"({"stream":{"$error":"x"}})", "1:12: unknown member '$error'"},
        {R"({"channel":{"debug":{}}})", "1:13: unknown member 'debug'"},
        {R"({"input":{"info":{}}})", "1:11: unknown member 'info'"},
        {R"({"output":{"settings":{}}})", "1:12: unknown member 'settings'"},
        {"{\"stream\":{\"all\":[{\"id\":1},\n  {\"id\":2,\n   \"infos\":{}}]}}",
         "3:4: unknown member 'infos'"},
        {R"({"stream":{"all":[{"$error":"x"}]}})", "1:20: unknown member '$error'"},
        {R"({"channel":{"all":[{"settings":{}}]}})", "1:21: unknown member 'settings'"},
        {R"({"channel":{"all":[{"$error":"x"}]}})", "1:21: unknown member '$error'"},
        {R"({"input":{"all":[{"crop_max":[1,2]}]}})", "1:19: unknown member 'crop_max'"},
        {R"({"output":{"all":[{"crop":[1,2,3,4]}]}})", "1:20: unknown member 'crop'"},
        {R"({"a\u0001\"b":1})", "1:2: unknown member 'a\\x01\"b'"},
        {"{\"a\u0085\u202e\":1}", "1:2: unknown member 'a\\u0085\\u202e'"},
        {"{\"" + std::string(59, 'a') + "\xC3\xA9zz\":1}",
         "1:2: unknown member '" + std::string(59, 'a') + "...'"},
        {"{\"" + std::string(61, 'a') + "\":1}",
         "1:2: unknown member '" + std::string(60, 'a') + "...'"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(complaint(text), expected) << text;
    }
}

TEST(document, rejects_a_duplicate_member) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {R"({"mode":{},"system":{},"mode":{}})", "1:24: duplicate member 'mode'"},
        {R"({"system":{"caps":{},"caps":{}}})", "1:22: duplicate member 'caps'"},
        {R"({"stream":{"all":[],"all":[]}})", "1:21: duplicate member 'all'"},
        {R"({"stream":{"all":[{"id":1,"id":1}]}})", "1:27: duplicate member 'id'"},
        {R"({"about":"x","about":"x"})", "1:14: duplicate member 'about'"},
        {R"({"channel":{"filtered":{"$error":"x"},"filtered":{"$error":"x"}}})",
         "1:39: duplicate member 'filtered'"},
        {R"({"input":{"all":[{"$error":"x","$error":"x"}]}})", "1:32: duplicate member '$error'"},
        {R"({"formats":{"a":1,"b":2,"a":3}})", "1:25: duplicate member 'a'"},
        // In maps, in any order: the complaint is about the first repetition in the text.
        {R"({"system":{"caps":{"a":1,"a":2}}})", "1:26: duplicate member 'a'"},
        {R"({"system":{"caps":{"b":1,"a":2,"c":3,"b":4,"a":5}}})", "1:38: duplicate member 'b'"},
        {R"({"system":{"caps":{"b":1,"a":2,"a":3,"a":4}}})", "1:32: duplicate member 'a'"},
        {R"({"system":{"caps":{"b":1,"\u0062":2}}})", "1:26: duplicate member 'b'"},
        {R"({"system":{"caps":{"\u0062":1,"b":2}}})", "1:31: duplicate member 'b'"},
        {R"({"channel":{"all":[{"properties":{"key":"a","key":"a"}}]}})",
         "1:45: duplicate member 'key'"},
        {R"({"channel":{"all":[{"resolutions":{"b":[],"a":[],"b":[]}}]}})",
         "1:50: duplicate member 'b'"},
        {R"({"input":{"all":[{"resolution_unrotated":{"a":[1,2],"a":[1,2]}}]}})",
         "1:53: duplicate member 'a'"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(complaint(text), expected) << text;
    }
}

TEST(document, rejects_a_duplicate_id) {
    EXPECT_EQ(complaint(R"({"stream":{"all":[{"id":3},{"id":0},{"id":3}]}})"),
              "1:43: id 3 is recorded twice");
    EXPECT_EQ(complaint(R"({"channel":{"all":[{"id":0},{"id":0}]}})"),
              "1:35: id 0 is recorded twice");
    EXPECT_EQ(complaint(R"({"input":{"all":[{"id":2},{"id":1},{"id":1},{"id":2}]}})"),
              "1:42: id 1 is recorded twice");
    EXPECT_EQ(complaint(R"({"output":{"all":[{"id":7},{"$error":"x","id":7}]}})"),
              "1:47: id 7 is recorded twice");
    EXPECT_EQ(complaint(R"({"channel":{"filtered":[{"id":5},{"id":5}]}})"),
              "1:40: id 5 is recorded twice");
}

TEST(document, accepts_several_streams_without_an_id_or_with_0) {
    EXPECT_EQ(complaint(R"({"stream":{"all":[{"id":0},{},{"id":0},{"id":1},{}]}})"), "");
}

TEST(document, gives_a_channel_without_an_id_the_id_zero) {
    EXPECT_EQ(complaint(R"({"channel":{"all":[{"id":1},{"info":{}},{"id":2}]}})"), "");
    EXPECT_EQ(complaint(R"({"channel":{"all":[{}],"filtered":[{}]}})"), "");
    constexpr auto twice = "id 0 is recorded twice: a channel without an id has the id 0";
    EXPECT_EQ(complaint(R"({"channel":{"all":[{},{}]}})"), "1:23: "s + twice);
    EXPECT_EQ(complaint(R"({"channel":{"all":[{"id":0},{"info":{}}]}})"), "1:29: "s + twice);
    EXPECT_EQ(complaint(R"({"channel":{"all":[{},{"id":1},{"id":0}]}})"),
              "1:38: id 0 is recorded twice");
    EXPECT_EQ(complaint(R"({"channel":{"filtered":[{"id":7},{},{}]}})"), "1:37: "s + twice);
}

TEST(document, requires_the_id_of_an_input_and_an_output) {
    EXPECT_EQ(complaint(R"({"input":{"all":[{"id":1}, {}]}})"),
              "1:28: expected an input (an object) with an id");
    EXPECT_EQ(complaint(R"({"input":{"all":[{"info":{}}]}})"),
              "1:18: expected an input (an object) with an id");
    EXPECT_EQ(complaint(R"({"input":{"all":[{"$error":"x"}]}})"),
              "1:18: expected an input (an object) with an id");
    EXPECT_EQ(complaint("{\"output\":{\"all\":[\n {\"settings\":{}}]}}"),
              "2:2: expected an output (an object) with an id");
}

TEST(document, rejects_values_of_a_wrong_kind) {
    constexpr auto id = "expected a whole number from 0 to 4294967295";
    const std::vector<std::pair<std::string, std::string>> cases{
        {R"([])", "1:1: expected a snapshot (an object), found '['"},
        {R"("text")", "1:1: expected a snapshot (an object), found '\"'"},
        {R"(null)", "1:1: expected a snapshot (an object), found 'n'"},
        {R"({"system":null})", "1:11: expected the system (an object), found 'n'"},
        {R"({"system":{"caps":[]}})", "1:19: expected a map (an object), found '['"},
        {R"({"mode":{"info":"x"}})", "1:17: expected a map (an object), found '\"'"},
        {R"({"stream":[]})", "1:11: expected the streams (an object), found '['"},
        {R"({"stream":{"all":[1]}})", "1:19: expected a stream (an object), found '1'"},
        {R"({"stream":{"all":1}})", "1:18: expected an array of streams, found '1'"},
        {R"({"stream":{"all":{}}})", "1:18: expected an array of streams, found an empty object"},
        {R"({"channel":{"all":{"id":1}}})", "1:20: unknown member 'id'"},
        {R"({"about":{}})", "1:10: expected a text, found '{'"},
        {R"({"about":null})", "1:10: expected a text, found 'n'"},
        {R"({"channel":{"filtered":5}})", "1:24: expected an array of channels, found '5'"},
        {R"({"channel":{"filtered":{}}})",
         "1:24: expected an array of channels, found an empty object"},
        {R"({"channel":{"filtered":{"id":1}}})", "1:25: unknown member 'id'"},
        {R"({"channel":{"filtered":["x"]}})", "1:25: expected a channel (an object), found '\"'"},
        {R"({"channel":{"filtered":{"$error":5}}})",
         "1:34: expected the text of a failure, found '5'"},
        {R"({"channel":{"all":[{"properties":[]}]}})",
         "1:34: expected a map (an object), found '['"},
        {R"({"channel":{"all":[{"crop":[1,2,3]}]}})", "1:34: expected ',', found ']'"},
        {R"({"channel":{"all":[{"crop":[1,2,3,4,5]}]}})", "1:36: expected ']', found ','"},
        {R"({"channel":{"all":[{"crop":5}]}})", "1:28: expected [x, y, width, height], found '5'"},
        {R"({"channel":{"all":[{"crop_max":5}]}})", "1:32: expected [width, height], found '5'"},
        {R"({"channel":{"all":[{"crop_max":[1,-2]}]}})", "1:35: "s + id},
        {R"({"channel":{"all":[{"crop_max":["1",2]}]}})", "1:33: "s + id + ", found '\"'"},
        {R"({"channel":{"all":[{"resolutions":[]}]}})",
         "1:35: expected the resolutions (an object), found '['"},
        {R"({"channel":{"all":[{"resolutions":{"available":[1920,1080]}}]}})",
         "1:49: expected [width, height], found '1'"},
        {R"({"channel":{"all":[{"resolutions":{"available":null}}]}})",
         "1:48: expected an array of resolutions, found 'n'"},
        {R"({"channel":5})", "1:12: expected the channels (an object), found '5'"},
        {R"({"channel":{"all":5}})", "1:19: expected an array of channels, found '5'"},
        {R"({"input":5})", "1:10: expected the inputs (an object), found '5'"},
        {R"({"input":{"all":5}})", "1:17: expected an array of inputs, found '5'"},
        {R"({"input":{"all":[5]}})", "1:18: expected an input (an object), found '5'"},
        {R"({"output":5})", "1:11: expected the outputs (an object), found '5'"},
        {R"({"output":{"all":5}})", "1:18: expected an array of outputs, found '5'"},
        {R"({"output":{"all":[5]}})", "1:19: expected an output (an object), found '5'"},
        {R"({"mode":5})", "1:9: expected the mode (an object), found '5'"},
        {R"({"formats":5})", "1:12: expected the formats (an object), found '5'"},
        {R"({"input":{"all":[{"resolution_unrotated":{"capture":[[1,2]]}}]}})",
         "1:54: "s + id + ", found '['"},
        {R"({"stream":{"all":[{"id":"1"}]}})", "1:25: "s + id + ", found '\"'"},
        {R"({"stream":{"all":[{"id":4294967296}]}})", "1:25: "s + id},
        {R"({"stream":{"all":[{"id":-1}]}})", "1:25: "s + id},
        {R"({"stream":{"all":[{"id":1.0}]}})", "1:25: "s + id},
        {R"({"stream":{"all":[{"id":1e1}]}})", "1:25: "s + id},
        {R"({"stream":{"all":[{"id":99999999999999999999}]}})", "1:25: "s + id},
        {R"({"formats":{"h264":"0"}})", "1:20: "s + id + ", found '\"'"},
        {R"({"formats":{"$error":"x"}})", "1:22: "s + id + ", found '\"'"},
        {R"({"formats":{"a\u0000b":1}})", "1:15: a text cannot contain a NUL"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(complaint(text), expected) << text;
    }
}

// --- Failures -----------------------------------------------------------------------------------

template <class T>
std::string failure_of(const answer<T>& is) {
    const auto* fails = std::get_if<failure>(&is);
    return fails ? fails->message : "(no failure)";
}

TEST(failure, can_replace_any_answer) {
    const auto loaded = load(R"({
        "system": {"$error": "system"}, "mode": {"$error": "mode"},
        "stream": {"debug": {"$error": "debug"}, "quota": {"$error": "quota"},
                   "limit": {"$error": "limit"}, "all": {"$error": "streams"}},
        "channel": {"info": {"$error": "channel info"}, "filtered": {"$error": "filtered"},
                    "all": [{"info": {"$error": "info"}, "crop": {"$error": "crop"},
                             "crop_max": {"$error": "crop_max"},
                             "resolutions": {"$error": "resolutions"}},
                            {"id": 1, "resolutions": {"available": {"$error": "available"},
                                                      "b": []}}]},
        "input": {"all": [{"id": 1, "$error": "input 1"},
                          {"$error": "input 2", "id": 2},
                          {"id": 3, "resolution_unrotated": {"$error": "unrotated"}},
                          {"id": 4, "resolution_unrotated": {"capture": {"$error": "capture"}}}]},
        "output": {"all": [{"id": 0, "$error": "output 0"}]}})");
    ASSERT_TRUE(loaded) << loaded.error();
    const snapshot::answers& doc = **loaded;
    EXPECT_EQ(failure_of(doc.system), "system");
    EXPECT_EQ(failure_of(doc.mode), "mode");
    EXPECT_EQ(failure_of(doc.stream_debug), "debug");
    EXPECT_EQ(failure_of(doc.stream_quota), "quota");
    EXPECT_EQ(failure_of(doc.stream_limit), "limit");
    EXPECT_EQ(failure_of(doc.streams), "streams");
    EXPECT_EQ(failure_of(doc.channel_info), "channel info");
    EXPECT_EQ(failure_of(doc.channels_filtered), "filtered");
    const auto& channels = std::get<std::vector<snapshot::channel_record>>(doc.channels);
    EXPECT_EQ(failure_of(channels[0].info), "info");
    EXPECT_EQ(failure_of(channels[0].crop), "crop");
    EXPECT_EQ(failure_of(channels[0].crop_max), "crop_max");
    EXPECT_EQ(failure_of(channels[0].resolutions), "resolutions");
    const auto lists =
        std::get<std::span<const snapshot::resolution_list>>(channels[1].resolutions);
    EXPECT_EQ(failure_of(lists[0].value), "available");
    EXPECT_EQ(failure_of(lists[1].value), "(no failure)");
    const auto& inputs = std::get<std::vector<snapshot::input_record>>(doc.inputs);
    EXPECT_STREQ(inputs[0].fails->message, "input 1");
    EXPECT_STREQ(inputs[1].fails->message, "input 2");
    EXPECT_FALSE(inputs[2].fails);
    EXPECT_EQ(failure_of(inputs[2].resolution_unrotated), "unrotated");
    EXPECT_EQ(failure_of(std::get<std::span<const snapshot::mode_resolution>>(
                             inputs[3].resolution_unrotated)[0]
                             .value),
              "capture");
    EXPECT_STREQ(std::get<std::vector<snapshot::output_record>>(doc.outputs)[0].fails->message,
                 "output 0");
}

TEST(failure, in_a_map_has_exactly_that_form) {
    const auto caps = [](std::string_view map) -> std::string {
        const auto loaded = load(std::format(R"({{"system":{{"caps":{}}}}})", map));
        if (!loaded) {
            return loaded.error();
        }
        const auto& caps = std::get<snapshot::system_record>((*loaded)->system).caps;
        if (const auto* entries = std::get_if<map_entries>(&caps)) {
            std::string json;
            EXPECT_TRUE(qw::map(entries->data(), entries->size(), *loaded).to_json(json));
            return json;
        }
        return "failure: " + failure_of(caps);
    };
    EXPECT_EQ(caps(R"({"$error":"no"})"), "failure: no");
    EXPECT_EQ(caps(R"({"$error":""})"), "failure: ");
    EXPECT_EQ(caps(R"({"\u0024error":"n\u00f6"})"), "failure: n\xC3\xB6");
    EXPECT_EQ(caps(R"({"$error":5})"), R"({"$error":5})");
    EXPECT_EQ(caps(R"({"$error":5,"a":"b"})"), R"({"$error":5,"a":"b"})");
    EXPECT_EQ(caps(R"({"$error":{"bytes":"6e6f"}})"), R"({"$error":"no"})");
    EXPECT_EQ(caps(R"({"$error":{"other":"no"},"a":1})"), R"({"$error":"no","a":1})");
    EXPECT_EQ(caps(R"({"$errors":"no"})"), R"({"$errors":"no"})");
}

TEST(failure, is_an_ordinary_entry_in_properties) {
    const auto loaded = load(R"({"channel":{"all":[{"properties":{"$error":"x"}}]}})");
    ASSERT_TRUE(loaded) << loaded.error();
    const auto& channel = std::get<std::vector<snapshot::channel_record>>((*loaded)->channels)[0];
    ASSERT_EQ(channel.properties.size(), 1U);
    EXPECT_EQ(channel.properties[0].key, "$error");
}

TEST(failure, has_no_other_member_in_any_order) {
    constexpr auto alone = "a failure has no other member";
    const std::vector<std::pair<std::string, std::string>> maps{
        {R"({"$error":"x","a":1})", "15: "s + alone},
        {R"({"a":1,"$error":"x"})", "8: "s + alone},
        {R"({"a":1,"b":2,"$error":"x","c":3})", "14: "s + alone},
        {R"({"$error":"","$error":""})", "14: "s + alone},
        {R"({"$error":"x","$error":5})", "15: "s + alone},
        {R"({"$error":5,"$error":"x"})", "13: "s + alone},
        {R"({"\u0024error":"x","a":1})", "20: "s + alone},
    };
    for (const char* place : {
             R"({"system":{"caps":)",
             R"({"mode":{"info":)",
             R"({"stream":{"debug":)",
             R"({"stream":{"quota":)",
             R"({"stream":{"limit":)",
             R"({"stream":{"all":[{"info":)",
             R"({"stream":{"all":[{"settings":)",
             R"({"stream":{"all":[{"debug":)",
             R"({"channel":{"info":)",
             R"({"channel":{"all":[{"info":)",
             R"({"channel":{"filtered":[{"info":)",
             R"({"input":{"all":[{"id":1,"info":)",
             R"({"output":{"all":[{"id":0,"info":)",
             R"({"output":{"all":[{"id":0,"settings":)",
         }) {
        for (const auto& [map, expected] : maps) {
            const std::size_t column = std::string_view(place).size() + std::stoul(expected);
            EXPECT_EQ(complaint(place + map), std::format("1:{}: {}", column, alone)) << place;
        }
    }
}

TEST(failure, of_an_input_or_output_has_no_other_member_but_the_id) {
    constexpr auto alone = "a failure has no other member than the id";
    EXPECT_EQ(complaint(R"({"input":{"all":[{"id":1,"$error":"x","info":{}}]}})"),
              "1:39: "s + alone);
    EXPECT_EQ(complaint(R"({"input":{"all":[{"info":{},"$error":"x","id":1}]}})"),
              "1:29: "s + alone);
    EXPECT_EQ(complaint(R"({"input":{"all":[{"$error":"x","crop":[1,2,3,4],"id":1}]}})"),
              "1:32: "s + alone);
    EXPECT_EQ(complaint(R"({"input":{"all":[{"resolution_unrotated":{},"id":1,"$error":"x"}]}})"),
              "1:52: "s + alone);
    EXPECT_EQ(complaint(R"({"output":{"all":[{"id":1,"$error":"x","info":{}}]}})"),
              "1:40: "s + alone);
    EXPECT_EQ(complaint(R"({"output":{"all":[{"settings":{},"id":1,"$error":"x"}]}})"),
              "1:41: "s + alone);
}

TEST(failure, has_no_other_member_elsewhere) {
    EXPECT_EQ(complaint(R"({"system":{"$error":"x","caps":{}}})"),
              "1:25: a failure has no other member");
    EXPECT_EQ(complaint(R"({"mode":{"info":{},"$error":"x"}})"),
              "1:20: a failure has no other member");
    EXPECT_EQ(complaint(R"({"channel":{"all":[{"resolutions":{"$error":"x","a":[]}}]}})"),
              "1:49: a failure has no other member");
    EXPECT_EQ(complaint(R"({"input":{"all":[{"resolution_unrotated":{"a":[1,2],"$error":"x"}}]}})"),
              "1:53: a failure has no other member");
    EXPECT_EQ(complaint(R"({"channel":{"all":[{"resolutions":{"a":[],"$error":"x"}}]}})"),
              "1:43: a failure has no other member");
    EXPECT_EQ(complaint(R"({"channel":{"all":[{"resolutions":{"a":{"$error":"x","b":1}}}]}})"),
              "1:54: unknown member 'b'");
    EXPECT_EQ(complaint(R"({"channel":{"all":[{"crop":{"a":1,"$error":"x"}}]}})"),
              "1:29: unknown member 'a'");
    EXPECT_EQ(complaint(R"({"channel":{"filtered":{"$error":"x","id":0}}})"),
              "1:38: unknown member 'id'");
    EXPECT_EQ(complaint(R"({"stream":{"all":{"$error":"x","$error":"y"}}})"),
              "1:32: duplicate member '$error'");
    EXPECT_EQ(complaint(R"({"system":{"$error":null}})"),
              "1:21: expected the text of a failure, found 'n'");
}

// --- Values -------------------------------------------------------------------------------------

TEST(value, has_the_kind_of_its_form) {
    EXPECT_TRUE(is_value("true", true));
    EXPECT_TRUE(is_value("false", false));
    EXPECT_TRUE(is_value(R"("")", ""sv));
    EXPECT_TRUE(is_value(R"("text")", "text"sv));
    EXPECT_TRUE(is_value("0", std::uint32_t{0}));
    EXPECT_TRUE(is_value("-0", std::uint32_t{0}));
    EXPECT_TRUE(is_value("4294967295", std::uint32_t{4294967295}));
    EXPECT_TRUE(is_value("4294967296", std::int64_t{4294967296}));
    EXPECT_TRUE(is_value("-1", std::int64_t{-1}));
    EXPECT_TRUE(is_value("9223372036854775807", std::numeric_limits<std::int64_t>::max()));
    EXPECT_TRUE(is_value("-9223372036854775808", std::numeric_limits<std::int64_t>::min()));
    EXPECT_TRUE(is_value("999999999999999999", std::int64_t{999999999999999999}));
    EXPECT_TRUE(is_value("-999999999999999999", std::int64_t{-999999999999999999}));
    EXPECT_TRUE(is_value("1000000000000000000", std::int64_t{1000000000000000000}));
    EXPECT_TRUE(is_value("[1920,1080]", snapshot::pair32u(1920, 1080)));
    EXPECT_TRUE(is_value(" [ 0 , 4294967295 ] ", snapshot::pair32u(0, 4294967295)));
    EXPECT_TRUE(is_value(R"({"uint16":0})", std::uint16_t{0}));
    EXPECT_TRUE(is_value(R"({"uint16":-0})", std::uint16_t{0}));
    EXPECT_TRUE(is_value(R"({ "uint16" : 65535 })", std::uint16_t{65535}));
    EXPECT_TRUE(is_value(R"({"uint32":4294967295})", std::uint32_t{4294967295}));
    EXPECT_TRUE(is_value(R"({"int64":0})", std::int64_t{0}));
    EXPECT_TRUE(is_value(R"({"int64":-0})", std::int64_t{0}));
    EXPECT_TRUE(
        is_value(R"({"int64":-9223372036854775808})", std::numeric_limits<std::int64_t>::min()));
}

TEST(value, reads_doubles_correctly_rounded) {
    EXPECT_TRUE(is_double("1.0", 1.0));
    EXPECT_TRUE(is_double("1e0", 1.0));
    EXPECT_TRUE(is_double("1E+2", 100.0));
    EXPECT_TRUE(is_double("-0.0", -0.0));
    EXPECT_TRUE(is_double("-0e5", -0.0));
    EXPECT_TRUE(is_double("29.97", 29.97));
    EXPECT_TRUE(is_double("123456789012345678.5", 123456789012345678.5));
    EXPECT_TRUE(is_double("-0.5", -0.5));
    EXPECT_TRUE(is_double("0.1", 0.1));
    EXPECT_TRUE(is_double("1.7976931348623157e308", std::numeric_limits<double>::max()));
    EXPECT_TRUE(is_double("5e-324", 5e-324));
    EXPECT_TRUE(is_double("2e-324", 0.0));
    EXPECT_TRUE(is_double("3e-324", 5e-324));
    EXPECT_TRUE(is_double("-1e-99999999999999999999", -0.0));
    EXPECT_TRUE(is_double("0e99999999999999999999", 0.0));
    EXPECT_TRUE(is_double("2.2250738585072011e-308", 2.2250738585072011e-308));
    // Halfway between two doubles, and next to it: the even one, then the nearer one.
    EXPECT_TRUE(is_double("9007199254740993.0", 9007199254740992.0));
    EXPECT_TRUE(is_double("9007199254740993.00000000000000000000000000000001", 9007199254740994.0));
    EXPECT_TRUE(is_double("0." + std::string(400, '0') + "1e401", 1.0));
    EXPECT_TRUE(is_double(R"({"double":"inf"})", std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(is_double(R"({"double":"-inf"})", -std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(is_double(R"({"double":7})", 7.0));
    EXPECT_TRUE(is_double(R"({"double":-0})", -0.0));
    EXPECT_TRUE(is_double(R"({"double":123456789012345678901234567890})",
                          123456789012345678901234567890.0));
    EXPECT_TRUE(is_double(R"({"double":1.5e300})", 1.5e300));
    for (const auto& [written, negative] :
         {std::pair(R"({"double":"nan"})", false), std::pair(R"({"double":"-nan"})", true)}) {
        const auto nan = load_value(written);
        ASSERT_TRUE(nan.as<double>());
        EXPECT_TRUE(std::isnan(*nan.as<double>()));
        EXPECT_EQ(std::signbit(*nan.as<double>()), negative);
    }
}

TEST(value, keeps_the_bytes_of_a_string) {
    EXPECT_TRUE(is_value(R"({"bytes":""})", ""sv));
    EXPECT_TRUE(is_value(R"({"bytes":"6fff"})", "o\xFF"sv));
    EXPECT_TRUE(is_value(R"({"bytes":"01090a7f80c3e9fe"})", "\x01\t\n\x7f\x80\xC3\xE9\xFE"sv));
    EXPECT_TRUE(is_value(R"({ "bytes" : "\u0036f10" })", "o\x10"sv));
    EXPECT_TRUE(is_value(R"({"bytes":"c3a9"})", "\xC3\xA9"sv));
}

// Returns the JSON text of a value of another kind.
std::string other(std::string_view written) {
    const auto value = load_value(std::format(R"({{"other":{}}})", written));
    const auto json = value.as<snapshot::other>();
    if (!json) {
        return "(none)";
    }
    EXPECT_EQ(json->json.data()[json->json.size()], '\0');
    return std::string(json->json);
}

TEST(value, keeps_the_tokens_of_another_kind) {
    for (const char* written : {"null",
                                "true",
                                "false",
                                "0",
                                "-0",
                                "-0.0",
                                "1.50",
                                "1E+2",
                                "1e999",
                                "123456789012345678901234567890",
                                R"("")",
                                R"("a b")",
                                R"(" \/\"\\ // /* x */ ")",
                                R"("\u0000\uD800\udc00\ud800")",
                                "\"\xC3\xA9\x7f\"",
                                "[]",
                                "{}",
                                "[[],{}]",
                                "[1,2,3]",
                                R"({"":[null,true,false],"a":{"b":{}},"a":1})",
                                R"({"$error":"x"})",
                                R"({"other":{"bytes":"zz"}})"}) {
        EXPECT_EQ(other(written), written);
    }
}

TEST(value, drops_blanks_and_comments_of_another_kind) {
    EXPECT_EQ(other("\t[ 1 ,\n\r 2 , [ ] , { } ] "), "[1,2,[],{}]");
    EXPECT_EQ(other("{ \"a b\" : { \"c\" : \" d \" } , \"e\":-1.0 }"),
              R"({"a b":{"c":" d "},"e":-1.0})");
    EXPECT_EQ(other("/* x */[// y\n 1/**/,\"// no\" /* z */ ]//"
                    "\n"),
              R"([1,"// no"])");
}

TEST(value, limits_the_depth_of_another_kind) {
    const auto nested = [](std::size_t levels) {
        std::string text;
        for (std::size_t i = 0; i < levels; ++i) {
            text += i % 2 == 0 ? "[" : "{\"a\":";
        }
        text += "1";
        for (std::size_t i = levels; i-- > 0;) {
            text += i % 2 == 0 ? "]" : "}";
        }
        return text;
    };
    EXPECT_EQ(other(nested(256)), nested(256));
    EXPECT_EQ(value_complaint(R"({"other":)" + nested(257) + "}"),
              std::format("{}: more than 256 levels of nesting", 10 + 128 * 6));
    EXPECT_EQ(value_complaint(R"({"other":)" + std::string(1'000'000, '[')),
              "266: more than 256 levels of nesting");
}

TEST(value, rejects_another_kind_that_is_not_json) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "10: expected a JSON value, found '}'"},
        {"nul", "10: expected a JSON value, found 'n'"},
        {"True", "10: expected a JSON value, found 'T'"},
        {"nullx", "14: expected ',' or '}', found 'x'"},
        {"01", "10: this is not a JSON number"},
        {"1.", "10: this is not a JSON number"},
        {"1+1", "10: this is not a JSON number"},
        {"1-1", "10: this is not a JSON number"},
        {"+1", "10: expected a JSON value, found '+'"},
        {"[1,]", "13: expected a JSON value, found ']'"},
        {"[,1]", "11: expected a JSON value, found ','"},
        {"[1 2]", "13: expected ',' or ']', found '2'"},
        {"[1}", "12: expected ',' or ']', found '}'"},
        {R"({"a":1]})", "16: expected ',' or '}', found ']'"},
        {R"({"a":1,})", "17: expected a member name, found '}'"},
        {R"({"a"})", "14: expected ':', found '}'"},
        {R"({"a" 1})", "15: expected ':', found '1'"},
        {R"({"a":})", "15: expected a JSON value, found '}'"},
        {R"({a:1})", "11: expected a member name, found 'a'"},
        {R"({1:1})", "11: expected a member name, found '1'"},
        {R"("\x")", "11: JSON has no such escape"},
        {R"(["ab\u12g4"])", "14: \\u needs four hexadecimal digits"},
        {"[\"a\tb\"]", "13: a string must escape this control character"},
        {"[\"\xff\"]", "12: this is not valid UTF-8"},
        {"1,2", "12: expected a member name, found '2'"},
    };
    for (const auto& [written, expected] : cases) {
        EXPECT_EQ(value_complaint(R"({"other":)" + written + "}"), expected) << written;
    }
    EXPECT_EQ(complaint(R"({"mode":{"info":{"k":{"other":["a)"), "1:32: this string is not closed");
    EXPECT_EQ(complaint(R"({"mode":{"info":{"k":{"other":["a\)"),
              "1:32: this string is not closed");
    EXPECT_EQ(complaint(R"({"mode":{"info":{"k":{"other":[)"),
              "1:32: expected a JSON value, found the end of the file");
}

TEST(value, reads_doubles_of_every_exponent_as_the_library_does) {
    std::mt19937_64 random(1);
    std::vector<double> expected;
    std::string map;
    for (int i = 0; i < 100'000; ++i) {
        const std::string written = std::format("{:.{}e}", std::bit_cast<double>(random()), i % 25);
        const double read = std::strtod(written.c_str(), nullptr);
        if (std::isfinite(read)) {
            map += std::format("{}\"{:06}\":{}", expected.empty() ? "" : ",", i, written);
            expected.push_back(read);
        }
    }
    const auto loaded = load(R"({"mode":{"info":{)" + map + "}}}");
    ASSERT_TRUE(loaded) << loaded.error();
    const auto entries =
        std::get<map_entries>(std::get<snapshot::mode_record>((*loaded)->mode).info);
    ASSERT_EQ(entries.size(), expected.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        ASSERT_EQ(std::bit_cast<std::uint64_t>(*entries[i].value.get_if<double>()),
                  std::bit_cast<std::uint64_t>(expected[i]))
            << expected[i];
    }
}

TEST(value, rejects_every_other_form) {
    constexpr auto number = "1: this is not a JSON number";
    constexpr auto value = "1: expected a map value";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"null", value + ", found 'n'"s},
        {"nan", value + ", found 'n'"s},
        {"", value + ", found '}'"s},
        {"'a'", value + ", found '''"s},
        {"+1", value + ", found '+'"s},
        {".5", value + ", found '.'"s},
        {"Infinity", value + ", found 'I'"s},
        {"tru", "1: expected true or false, found 't'"},
        {"falsE", "1: expected true or false, found 'f'"},
        {"truex", "5: expected ',' or '}', found 'x'"},
        {"01", number},
        {"0000000000000000001", number},
        {"00000000000000000000000000000", number},
        {"999999999999999999x", number},
        {"99999999999999999999-", number},
        {"-01", number},
        {"-", number},
        {"--1", number},
        {"1.", number},
        {"1.e5", number},
        {"1e", number},
        {"1e+", number},
        {"1.5.5", number},
        {"1x", number},
        {"1A", number},
        {"1a", number},
        {"0x10", number},
        {"1 2", "3: expected ',' or '}', found '2'"},
        {"1e400", "1: this number is too large for a double"},
        {"-1.0e309", "1: this number is too large for a double"},
        {"9223372036854775808", "1: this whole number is outside the signed 64-bit range"},
        {"-9223372036854775809", "1: this whole number is outside the signed 64-bit range"},
        {"[]", "2: expected a whole number from 0 to 4294967295, found ']'"},
        {"[1]", "3: expected ',', found ']'"},
        {"[1,2,3]", "5: expected ']', found ','"},
        {"[1,2,]", "5: expected ']', found ','"},
        {"[1,]", "4: expected a whole number from 0 to 4294967295, found ']'"},
        {"[1.0,2]", "2: expected a whole number from 0 to 4294967295"},
        {"[1,4294967296]", "4: expected a whole number from 0 to 4294967295"},
        {"[-1,1]", "2: expected a whole number from 0 to 4294967295"},
        {"[[1,2],3]", "2: expected a whole number from 0 to 4294967295, found '['"},
        {"[true,1]", "2: expected a whole number from 0 to 4294967295, found 't'"},
        {"{}", "1: expected a typed value, found an empty object"},
        {R"({"uint8":1})", "2: unknown kind of value 'uint8'"},
        {R"({"a":{"b":1}})", "2: unknown kind of value 'a'"},
        {R"({"$error":"x"})", "2: unknown kind of value '$error'"},
        {R"({"bytes":6})", "10: expected hexadecimal digits, found '6'"},
        {R"({"bytes":"6"})", "10: expected pairs of lower-case hexadecimal digits"},
        {R"({"bytes":"6f6"})", "10: expected pairs of lower-case hexadecimal digits"},
        {R"({"bytes":"6F"})", "10: expected pairs of lower-case hexadecimal digits"},
        {R"({"bytes":"0x"})", "10: expected pairs of lower-case hexadecimal digits"},
        {R"({"bytes":"6f 70"})", "10: expected pairs of lower-case hexadecimal digits"},
        {R"({"bytes":"6f00"})", "10: a text cannot contain a NUL"},
        {R"({"bytes":"","other":1})", "13: a typed value has one member"},
        {R"({"other":1,"other":1})", "12: a typed value has one member"},
        {R"({"uint16":65536})", "11: expected a whole number from 0 to 65535"},
        {R"({"uint16":-1})", "11: expected a whole number from 0 to 65535"},
        {R"({"uint16":1.0})", "11: expected a whole number from 0 to 65535"},
        {R"({"uint16":"1"})", "11: expected a whole number from 0 to 65535, found '\"'"},
        {R"({"uint32":4294967296})", "11: expected a whole number from 0 to 4294967295"},
        {R"({"int64":9223372036854775808})",
         "10: this whole number is outside the signed 64-bit range"},
        {R"({"int64":1.0})", "10: expected a whole number"},
        {R"({"int64":"1"})", "10: expected a whole number, found '\"'"},
        {R"({"double":1e999})", "11: this number is too large for a double"},
        {R"({"double":1)" + std::string(400, '0') + "}",
         "11: this number is too large for a double"},
        {R"({"double":"NaN"})", R"(11: expected a number, "nan", "-nan", "inf" or "-inf")"},
        {R"({"double":"+inf"})", R"(11: expected a number, "nan", "-nan", "inf" or "-inf")"},
        {R"({"double":true})",
         R"(11: expected a number, "nan", "-nan", "inf" or "-inf", found 't')"},
        {R"({"uint16":1,"uint16":2})", "13: a typed value has one member"},
        {R"({"uint16":1,})", "13: expected a member name, found '}'"},
    };
    for (const auto& [written, expected] : cases) {
        EXPECT_EQ(value_complaint(written), expected) << written;
    }
}

TEST(value, can_be_a_property) {
    EXPECT_EQ(complaint(R"({"channel":{"all":[{"properties":{"a":null}}]}})"),
              "1:39: expected a map value, found 'n'");
}

// --- Strings ------------------------------------------------------------------------------------

TEST(string, decodes_every_escape) {
    EXPECT_TRUE(is_value(R"("a\"b\\c\/d\be\ff\ng\rh\ti")", "a\"b\\c/d\be\ff\ng\rh\ti"sv));
    EXPECT_TRUE(is_value(R"("\u0041\u00e9\u20AC\uD83D\uDE00\uffff")",
                         "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xEF\xBF\xBF"sv));
    EXPECT_TRUE(is_value("\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\x7f\"",
                         "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\x7f"sv));
    EXPECT_TRUE(is_value(R"("// no comment /* either */")", "// no comment /* either */"sv));
}

// With any bytes around it, at any offset in a machine word.
TEST(string, ends_at_its_quote_at_any_alignment) {
    for (std::size_t size = 0; size < 40; ++size) {
        for (const char c : {'a', '!', '\x7f', '#', ']', '['}) {
            const std::string text(size, c);
            EXPECT_TRUE(is_value('"' + text + '"', std::string_view(text)));
        }
        for (std::size_t at = 0; at + 2 <= size; ++at) {
            std::string text(size, 'x');
            std::string expected = text;
            text.replace(at, 2, "\\n");
            expected.replace(at, 2, "\n");
            EXPECT_TRUE(is_value('"' + text + '"', std::string_view(expected))) << text;
            text.replace(at, 2, "\xC3\xA9");
            EXPECT_TRUE(is_value('"' + text + '"', std::string_view(text))) << text;
            text.replace(at, 2, "\x1f\x80");
            EXPECT_EQ(value_complaint('"' + text + '"'),
                      std::format("{}: this is not valid UTF-8", at + 3));
            text.replace(at, 2, "\x1f!");
            EXPECT_EQ(value_complaint('"' + text + '"'),
                      std::format("{}: a string must escape this control character", at + 2));
        }
    }
}

TEST(string, is_followed_by_a_nul) {
    for (const auto written : {R"("plain")"sv, R"("esc\u0061ped")"sv, R"("")"sv}) {
        const auto value = load_value(written);
        const auto text = value.as<std::string_view>();
        ASSERT_TRUE(text);
        EXPECT_EQ(text->data()[text->size()], '\0');
        EXPECT_EQ(text->find('\0'), text->npos);
    }
}

TEST(string, rejects_invalid_json_strings) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"\"a\tb\"", "3: a string must escape this control character"},
        {"\"a\x1f\"", "3: a string must escape this control character"},
        {"\"a\\n\tb\"", "5: a string must escape this control character"},
        {R"("a\xb")", "3: JSON has no such escape"},
        {R"("a\'b")", "3: JSON has no such escape"},
        {R"("\U0041")", "2: JSON has no such escape"},
        {R"("a\u12")", "3: \\u needs four hexadecimal digits"},
        {R"("a\u12g4")", "3: \\u needs four hexadecimal digits"},
        {R"("\u+123")", "2: \\u needs four hexadecimal digits"},
        {R"("a\ud800")", "3: this surrogate has no partner"},
        {R"("a\ud800\n")", "3: this surrogate has no partner"},
        {R"("a\ud800\u0041")", "3: this surrogate has no partner"},
        {R"("a\ud800\ud800")", "3: this surrogate has no partner"},
        {R"("\udc00\ud800")", "2: this surrogate has no partner"},
        {R"("\udc00")", "2: this surrogate has no partner"},
        {R"("a\u0000b")", "3: a text cannot contain a NUL"},
        {R"("abc)", "1: this string is not closed"},
        {R"("abc\")", "1: this string is not closed"},
    };
    for (const auto& [written, expected] : cases) {
        EXPECT_EQ(value_complaint(written), expected) << written;
    }
    EXPECT_EQ(complaint(R"({"system":{"caps":{"a\u0000":1}}})"),
              "1:22: a text cannot contain a NUL");
    EXPECT_EQ(complaint(R"({"system":{"$error":"\u0000"}})"), "1:22: a text cannot contain a NUL");
    EXPECT_EQ(complaint("{\"mo\nde\":{}}"), "1:5: a string must escape this control character");
    EXPECT_EQ(complaint("{\"abc"), "1:2: this string is not closed");
    EXPECT_EQ(complaint("{\"abc\\"), "1:2: this string is not closed");
    EXPECT_EQ(complaint("{\"abc\\u00"), "1:6: \\u needs four hexadecimal digits");
}

// --- Text ---------------------------------------------------------------------------------------

TEST(text, rejects_invalid_syntax) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"{", "1:2: expected a member name, found the end of the file"},
        {" \n ", "2:2: expected a snapshot (an object), found the end of the file"},
        {"{,}", "1:2: expected a member name, found ','"},
        {R"({"mode":{},})", "1:12: expected a member name, found '}'"},
        {R"({"mode" {}})", "1:9: expected ':', found '{'"},
        {R"({"mode":})", "1:9: expected the mode (an object), found '}'"},
        {R"({"mode":{})", "1:11: expected ',' or '}', found the end of the file"},
        {R"({"mode":{} "system":{}})", "1:12: expected ',' or '}', found '\"'"},
        {R"({mode:{}})", "1:2: expected a member name, found 'm'"},
        {R"({"stream":{"all":[{},]}})", "1:22: expected a stream (an object), found ']'"},
        {R"({"stream":{"all":[{} {}]}})", "1:22: expected ',' or ']', found '{'"},
        {R"({"stream":{"all":[}})", "1:19: expected a stream (an object), found '}'"},
        {"{} {}", "1:4: expected nothing more, found '{'"},
        {"{}\n}", "2:1: expected nothing more, found '}'"},
        {"{}\xC3\xA9", "1:3: expected nothing more"},
        {"{\v}", "1:2: expected a member name"},
        {"{\x7f}", "1:2: expected a member name"},
        {"{\xC2\xA0}", "1:2: expected a member name"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(complaint(text), expected) << text;
    }
}

TEST(text, counts_lines_and_bytes) {
    EXPECT_EQ(complaint("{\n\n  \"\xC3\xA9\": 1}"), "3:3: unknown member '\xC3\xA9'");
    EXPECT_EQ(complaint("{\"mode\":{\"info\":{\"\xC3\xA9\":1,\"x\":null}}}"),
              "1:29: expected a map value, found 'n'");
    EXPECT_EQ(complaint("{\r\n\t\"x\":1}"), "2:2: unknown member 'x'");
    // Decoded line breaks and closed strings change no place.
    EXPECT_EQ(complaint("{\"mode\":{\"info\":{\"a\\n\\n\":\"\\n\",\"b\":\"c\",\n\"x\":null}}}"),
              "2:5: expected a map value, found 'n'");
    EXPECT_EQ(complaint("// one\n/* two\nthree */ {\"x\":1}"), "3:11: unknown member 'x'");
}

TEST(text, can_have_comments) {
    for (const auto text :
         {"//\n{}"sv, "/**/{}"sv, "/***/{}"sv, "/* **/{}"sv, "{}//"sv, "{}// end"sv, "{/*}*/}"sv,
          "{\"mode\"/*a*/:/*b*/{/*c*/}/*d*/,//e\n\"system\":{}}"sv, "// \xC3\xA9 \"\n{}"sv,
          "// one\r{}"sv, "/* // */{}"sv, "// /*\n{}"sv, "/*/ */{}"sv, "/* \" */{}/* \" */"sv,
          R"({"mode":{"info":{"a":"\"//","b":"\\"/* " */,"c":"/*"}}})"sv}) {
        EXPECT_EQ(complaint(text), "") << text;
    }
}

TEST(text, rejects_invalid_comments) {
    EXPECT_EQ(complaint("{}/*"), "1:3: this comment is not closed");
    EXPECT_EQ(complaint("{}/*/"), "1:3: this comment is not closed");
    EXPECT_EQ(complaint("{\n /* a\n b"), "2:2: this comment is not closed");
    EXPECT_EQ(complaint("{/}"), "1:2: expected a member name, found '/'");
    EXPECT_EQ(complaint("{}/"), "1:3: expected nothing more, found '/'");
    EXPECT_EQ(complaint("{\"mode\"/ * */:{}}"), "1:8: expected ':', found '/'");
    EXPECT_EQ(complaint("#\n{}"), "1:1: expected a snapshot (an object), found '#'");
    EXPECT_EQ(complaint("{\"mo/*de\n\": {}}"), "1:9: a string must escape this control character");
}

TEST(text, rejects_a_compressed_file) {
    for (const auto& [text, format] : {std::pair("\x1f\x8b\x08\0x"s, "gzip"),
                                       {"\xfd\x37zXZ\0\0x"s, "xz"},
                                       {"\x28\xb5\x2f\xfd\0x"s, "zstd"}}) {
        EXPECT_EQ(complaint(text),
                  " is compressed with "s + format + "; a snapshot must be decompressed first");
    }
    EXPECT_EQ(complaint("\xfd\x37zX"), "1:1: this is not valid UTF-8");
}

TEST(text, rejects_a_byte_order_mark) {
    EXPECT_EQ(complaint("\xEF\xBB\xBF{}"), "1:1: the text begins with a byte order mark");
}

TEST(text, rejects_nul_bytes) {
    EXPECT_EQ(complaint("{}\0"sv), "1:3: this is a NUL byte");
    EXPECT_EQ(complaint("\0"sv), "1:1: this is a NUL byte");
    EXPECT_EQ(complaint("{\"mode\":{\"info\":{\"a\0b\":1}}}"sv), "1:20: this is a NUL byte");
    EXPECT_EQ(complaint("// \0\n{}"sv), "1:4: this is a NUL byte");
}

TEST(text, rejects_invalid_utf8) {
    const std::vector<std::string> bad{
        "\x80",
        "\xBF",
        "\xC0\x80",
        "\xC1\xBF",
        "\xC3",
        "\xC3(",
        "\xE0\x80\x80",
        "\xE2\x82",
        "\xE2(\xA1",
        "\xED\xA0\x80",
        "\xF0\x80\x80\x80",
        "\xF0\x9F\x98",
        "\xF4\x90\x80\x80",
        "\xF5\x80\x80\x80",
        "\xFE",
        "\xFF",
    };
    for (const auto& bytes : bad) {
        EXPECT_EQ(value_complaint("\"ab" + bytes + "\""), "4: this is not valid UTF-8");
        EXPECT_EQ(complaint("{}\n// \xC3\xA9\xF0\x9F\x98\x80" + bytes),
                  "2:10: this is not valid UTF-8");
    }
    EXPECT_EQ(complaint("{}" + std::string(1000, ' ') + "\xFF"), "1:1003: this is not valid UTF-8");
    EXPECT_EQ(complaint("\xFF\xFE{\0}\0"sv.substr(0, 3)), "1:1: this is not valid UTF-8");
}

TEST(text, rejects_deep_nesting_at_its_second_level) {
    EXPECT_EQ(complaint(std::string(1'000'000, '[')),
              "1:1: expected a snapshot (an object), found '['");
    EXPECT_EQ(value_complaint(std::string(1'000'000, '[')),
              "2: expected a whole number from 0 to 4294967295, found '['");
    std::string nested;
    for (int i = 0; i < 100'000; ++i) {
        nested += R"({"a":)";
    }
    EXPECT_EQ(value_complaint(nested), "2: unknown kind of value 'a'");
}

// --- Many ---------------------------------------------------------------------------------------

TEST(many, inputs_are_found_by_their_ids) {
    std::string all;
    for (unsigned i = 0; i < 20'000; ++i) {
        all += std::format(R"({}{{"id":{}}})", i ? "," : "", (i * 7919U) % 20'000);
    }
    const auto loaded = load(R"({"input":{"all":[)" + all + "]}}");
    ASSERT_TRUE(loaded) << loaded.error();
    const auto& inputs = std::get<std::vector<snapshot::input_record>>((*loaded)->inputs);
    ASSERT_EQ(inputs.size(), 20'000U);
    for (std::uint32_t id = 0; id < 20'000; ++id) {
        ASSERT_EQ(inputs[id].id, id);
    }
}

TEST(many, keys_of_one_map_may_come_in_any_order) {
    std::string map;
    for (unsigned i = 0; i < 20'000; ++i) {
        map += std::format(R"({}"key{:05}":{})", i ? "," : "", (i * 7919U) % 20'000, i);
    }
    const auto loaded = load(R"({"mode":{"info":{)" + map + "}}}");
    ASSERT_TRUE(loaded) << loaded.error();
    const auto entries =
        std::get<map_entries>(std::get<snapshot::mode_record>((*loaded)->mode).info);
    ASSERT_EQ(entries.size(), 20'000U);
    for (unsigned i = 0; i < entries.size(); ++i) {
        ASSERT_EQ(entries[i].key, std::format("key{:05}", i));
        ASSERT_EQ(*entries[i].value.get_if<std::uint32_t>() * 7919U % 20'000, i);
    }
}

}  // namespace
