#include "snapshot_tool/differences.h"

#include <format>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "snapshot/load.h"
#include "support/snapshot_file.h"

namespace {

using namespace std::string_literals;

std::shared_ptr<const snapshot::answers> answers_of(std::string_view text) {
    auto loaded = snapshot::load(snapshot_file(text).path());
    EXPECT_TRUE(loaded) << loaded.error() << '\n' << text;
    return loaded ? *loaded : std::make_shared<const snapshot::answers>();
}

// Returns the lines of a comparison.
std::string differences(std::string_view older, std::string_view newer, bool is_complete = false) {
    std::string lines;
    const bool is_different = snapshot_tool::find_differences(
        *answers_of(older), *answers_of(newer), is_complete,
        [&](std::string_view line, bool) { lines.append(line).append("\n"); });
    EXPECT_EQ(is_different, !lines.empty());
    return lines;
}

// Returns the snapshot of a stream with this info, settings and so on.
std::string stream(std::string_view members) {
    return std::format(R"({{"stream": {{"all": [{{"id": 1, {}}}]}}}})", members);
}

// Returns the differences between two values of a key, which are NULL if there is no key.
std::string change(std::string_view key, const char* older, const char* newer,
                   bool is_complete = false) {
    const auto snapshot = [&](const char* value) {
        return std::format(R"({{"mode": {{"info": {{{}}}}}}})",
                           value != nullptr ? std::format(R"("{}": {})", key, value) : "");
    };
    const std::string lines = differences(snapshot(older), snapshot(newer), is_complete);
    const std::string before = std::format("service\n    mode info  {}  ", key);
    EXPECT_TRUE(lines.empty() || lines.starts_with(before)) << lines;
    return lines.empty() ? "" : lines.substr(before.size(), lines.size() - before.size() - 1);
}

TEST(differences, are_named_object_by_object) {
    EXPECT_EQ(differences(
                  R"({"system": {"caps": {"output": true}}, "mode": {"info": {"view": "dual"}},
      "stream": {"quota": {"global.hard.limit": 5}, "all": [
        {"id": 2, "info": {"peers": 1}, "settings": {"identity": "recorder", "framerate": 25}},
        {"id": 9, "settings": {"identity": "wall", "format": 2, "channel": 1}}]},
      "channel": {"info": {"input.count": 2}, "all": [
        {"properties": {"key": "input"}, "crop": [0, 0, 1920, 1080], "crop_max": [1920, 1080],
         "resolutions": {"available": [[1920, 1080], [1280, 720]]}}, {"id": 3}]},
      "input": {"all": [{"id": 1, "resolution_unrotated": {"capture": [1920, 1080]}}]},
      "output": {"all": [{"id": 0, "settings": {"VIC": 16}}]}, "formats": {"h264": 0, "uptime": 1}})",
                  R"({"system": {"caps": {"output": false}}, "mode": {"info": {"view": "single"}},
      "stream": {"quota": {"global.hard.limit": 6}, "all": [
        {"id": 2, "info": {"peers": 2}, "settings": {"identity": "recorder", "framerate": 5}}]},
      "channel": {"info": {"input.count": 1}, "all": [
        {"properties": {"key": "view"}, "crop": [0, 0, 1280, 1080], "crop_max": [1280, 720],
         "resolutions": {"available": [[1280, 720], [1920, 1080]]}}]},
      "input": {"all": [{"id": 1, "resolution_unrotated": {"capture": [0, 0]}}, {"id": 2}]},
      "output": {"all": [{"id": 0, "settings": {"VIC": 31}}]}, "formats": {"h264": 0, "uptime": 2, "av1": 10}})"),
              R"(stream 2 (recorder)
    info  peers  1 -> 2
    settings  framerate  25 -> 5
stream 9 (wall)  only in OLD: format 2, channel 1
channel 0
    properties  key  "input" -> "view"
    crop  1920x1080 at 0,0 -> 1280x1080 at 0,0
    crop_max  1920x1080 -> 1280x720
    resolutions  available  1920x1080 1280x720 -> 1280x720 1920x1080
channel 3  only in OLD
input 1
    resolution_unrotated  capture  1920x1080 -> 0x0
input 2  only in NEW
output 0
    settings  VIC  16 -> 31
service
    system caps  output  true -> false
    mode info  view  "dual" -> "single"
    stream quota  global.hard.limit  5 -> 6
    channel info  input.count  2 -> 1
    formats  av1  none -> 10
    formats  uptime  1 -> 2
)");
}

TEST(differences, do_not_depend_on_order_and_notation) {
    EXPECT_EQ(differences(
                  R"({"version": 1, "about": "one", "recorded": "2026-11-22T07:14:32Z",
      "mode": {"info": {"a": 5, "b": 1.5, "c": "caf\u00e9", "d": {"other": [1, 2]}}},
      "stream": {"all": [{"id": 1, "info": {"x": 1}}, {"info": {"y": 2}}, {"id": 0, "info": {"z": 3}}]},
      "channel": {"all": [{"crop": [0, 0, 1, 1]}, {"id": 7}]},
      "input": {"all": [{"id": 2}, {"id": 1, "$error": "off"}]}})",
                  R"(// other
      {"input": {"all": [{"$error": "off", "id": 1}, {"id": 2}]},
      "channel": {"all": [{"id": 7}, {"id": 0, "crop": [0, 0, 1, 1]}]},
      "stream": {"all": [{"info": {"z": 3}}, {"info": {"x": {"uint32": 1}}, "id": 1}, {"id": 0, "info": {"y": 2}}]},
      "formats": {"av1": 10, "raw": 3, "h265": 1, "jpeg": 2, "h264": 0},
      "mode": {"info": {"d": {"other": [ 1,2 ]}, "c": {"bytes": "636166c3a9"}, "b": {"double": 15e-1}, "a": {"uint32": 5}}}})",
                  true),
              "");
}

TEST(differences, include_the_kind_of_a_value) {
    EXPECT_EQ(change("k", R"({"uint16": 5})", "5"), "5 (uint16) -> 5");
    EXPECT_EQ(change("k", "5", R"({"int64": 5})"), "5 -> 5 (int64)");
    EXPECT_EQ(change("k", "5", "5.0"), "5 -> 5.0");
    EXPECT_EQ(change("k", "-5", "-5e0"), "-5 -> -5.0");
    EXPECT_EQ(change("k", "5", "\"5\""), "5 -> \"5\"");
    EXPECT_EQ(change("k", "true", "\"true\""), "true -> \"true\"");
    EXPECT_EQ(change("k", "[1, 2]", R"({"other": [1, 2]})"), "[1, 2] -> [1,2] (other)");
    EXPECT_EQ(change("k", "0.0", "-0.0"), "0.0 -> -0.0");
    EXPECT_EQ(change("k", R"({"double": "nan"})", R"({"double": "-nan"})"), "nan -> -nan");
    EXPECT_EQ(change("k", R"({"double": "inf"})", "1e300"), "inf -> 1e+300");
    EXPECT_EQ(change("k", nullptr, "\"none\""), "none -> \"none\"");
    EXPECT_EQ(change("k", "[1, 2]", nullptr), "[1, 2] -> none");
}

TEST(differences, are_printable_and_unambiguous) {
    EXPECT_EQ(change("k", R"("a\nb")", R"("a\\nb")"), R"("a\nb" -> "a\\nb")");
    EXPECT_EQ(change("k", R"({"bytes": "ff"})", R"("\u202e\u001b")"), R"("\xff" -> "\u202e\x1b")");
    EXPECT_EQ(
        differences(R"({"mode": {"info": {"\u001b": 1, "": 2}}})", R"({"mode": {"info": {}}})"),
        "service\n    mode info  \"\"  2 -> none\n    mode info  \\x1b  1 -> none\n");
    EXPECT_EQ(differences(stream(R"("settings": {"identity": "a\nb", "k": 1})"),
                          stream(R"("settings": {"identity": "a\nb", "k": {"uint16": 1}})")),
              "stream 1 (a\\nb)\n    settings  k  1 -> 1 (uint16)\n");
}

TEST(differences, show_where_a_long_text_begins_to_differ) {
    const std::string text(500, 'x');
    const std::string one = "\"" + text + "one" + text + "\"";
    const std::string other = "\"" + text + "other\"";
    EXPECT_EQ(change("k", one.c_str(), other.c_str()), "…" + std::string(19, 'x') + "one" +
                                                           std::string(36, 'x') + "… -> …" +
                                                           std::string(19, 'x') + "other\"");
    EXPECT_EQ(change("k", one.c_str(), other.c_str(), true), one + " -> " + other);
    EXPECT_EQ(change("k", "1", one.c_str()), "1 -> \"" + std::string(58, 'x') + "…");
}

TEST(differences, include_answers_that_fail) {
    EXPECT_EQ(differences(stream(R"("info": {"a": 1, "b": 2}, "settings": {"$error": "busy"},
                                    "debug": {"$error": "x"})"),
                          stream(R"("info": {"$error": "no such\nstream"}, "settings": {"a": 1},
                                    "debug": {"$error": ""})")),
              "stream 1\n"
              "    info  2 keys -> fails: no such\\nstream\n"
              "    settings  fails: busy -> 1 key\n"
              "    debug  fails: x -> fails\n");
    EXPECT_EQ(differences(R"({"system": {"$error": "off"}, "stream": {"all": {"$error": "a"}},
        "channel": {"all": [{"crop": [1, 2, 3, 4], "crop_max": {"$error": "b"},
            "resolutions": {"available": {"$error": "c"}, "x": []}},
            {"id": 1, "resolutions": {"$error": "d"}}]},
        "input": {"all": [{"id": 1, "$error": "e"}, {"id": 2}, {"id": 3, "$error": "f"}]}})",
                          R"({"system": {"caps": {}}, "stream": {"all": [{}]},
        "channel": {"all": [{"crop": {"$error": "b"}, "crop_max": [5, 6],
            "resolutions": {"available": [[7, 8]], "x": {"$error": "g"}}},
            {"id": 1, "resolutions": {"available": []}}]},
        "input": {"all": [{"id": 1}, {"id": 2, "$error": ""}, {"id": 3, "$error": "h"},
            {"id": 4, "$error": "i"}]}})"),
              "channel 0\n"
              "    crop  3x4 at 1,2 -> fails: b\n"
              "    crop_max  fails: b -> 5x6\n"
              "    resolutions  available  fails: c -> 7x8\n"
              "    resolutions  x  none -> fails: g\n"
              "channel 1\n"
              "    resolutions  fails: d -> 1 answer\n"
              "input 1\n"
              "    fails: e -> opens\n"
              "input 2\n"
              "    opens -> fails\n"
              "input 3\n"
              "    fails: f -> fails: h\n"
              "input 4  only in NEW: fails: i\n"
              "service\n"
              "    system  fails: off -> opens\n"
              "    streams  fails: a -> 1 stream\n");
}

// An answer that is left out equals the failure that it gives.
TEST(differences, do_not_include_how_an_answer_is_missing) {
    const std::string failures = R"({"system": {"$error": "system not recorded"},
        "mode": {"info": {"$error": "mode info not recorded"}},
        "stream": {"debug": {"$error": "stream debug not recorded"},
                   "all": [{"id": 3, "info": {"$error": "stream 3: info not recorded"}}]},
        "channel": {"all": [{"id": 5, "crop": {"$error": "channel 5: crop not recorded"},
             "resolutions": {"available": {"$error": "channel 5: resolutions not recorded"}}},
             {"id": 6, "resolutions": {"a": {"$error": "channel 6: resolutions 'a' not recorded"}}}]},
        "input": {"all": [{"id": 1, "$error": "input 1 not recorded"}]},
        "output": {"all": [{"id": 0, "$error": "output 0 not recorded"}]}})";
    const std::string missing = R"({"mode": {}, "stream": {"all": [{"id": 3}]},
        "channel": {"all": [{"id": 5}, {"id": 6, "resolutions": {}}]}})";
    EXPECT_EQ(differences(failures, missing, true), "");
    EXPECT_EQ(differences(missing, failures, true), "");
    EXPECT_EQ(differences("{}", R"({"stream": {"all": {"$error": "streams not recorded"}},
        "channel": {"all": {"$error": "channels not recorded"},
                    "filtered": {"$error": "channels not recorded"}}})",
                          true),
              "");
    EXPECT_EQ(differences("{}", R"({"stream": {"all": [], "debug": {}}})"),
              "service\n"
              "    stream debug  fails: stream debug not recorded -> 0 keys\n"
              "    streams  fails: streams not recorded -> 0 streams\n");
}

TEST(differences, include_the_list_of_channels_of_inputs) {
    EXPECT_EQ(
        differences(
            R"({"channel": {"all": [{"id": 1}], "filtered": [{"id": 1, "crop_max": [1, 2]}]}})",
            R"({"channel": {"all": [{"id": 1}], "filtered": [{"id": 1, "crop_max": [1, 3]}, {"id": 2}]}})"),
        "channel 1 (of inputs)\n"
        "    crop_max  1x2 -> 1x3\n"
        "channel 2 (of inputs)  only in NEW\n");
    EXPECT_EQ(
        differences(R"({"channel": {"all": [], "filtered": [{}]}})", R"({"channel": {"all": []}})"),
        "service\n    channels of inputs  1 channel -> by their properties\n");
    EXPECT_EQ(differences(R"({"channel": {"all": [], "filtered": {"$error": "x"}}})",
                          R"({"channel": {"all": []}})"),
              "service\n    channels of inputs  fails: x -> by their properties\n");
    EXPECT_EQ(differences(R"({"channel": {"all": {"$error": "x"}, "filtered": {"$error": "x"}}})",
                          R"({"channel": {"all": {"$error": "x"}}})"),
              "");
}

TEST(differences, that_say_that_something_broke_are_alarming) {
    std::string alarming;
    snapshot_tool::find_differences(
        *answers_of(R"({"system": {}, "stream": {"all": [
            {"id": 1, "info": {"statistics.duration": 60000000, "k": 1}, "settings": {"$error": "x"}},
            {"id": 2, "info": {"statistics.duration": 60000000, "statistics.failed_frames": 1}}, {"id": 3}]},
            "channel": {"all": []}, "input": {"all": [{"id": 1}, {"id": 2, "$error": "x"}]}})"),
        *answers_of(R"({"system": {"$error": "x"}, "stream": {"all": [
            {"id": 1, "info": {"statistics.duration": 1, "k": 2}, "settings": {}},
            {"id": 2, "info": {"statistics.duration": 60000000, "statistics.failed_frames": 9}}, {"id": 4}]},
            "channel": {"all": {"$error": "x"}}, "input": {"all": [{"id": 1, "$error": "x"}, {"id": 2}]}})"),
        false, [&](std::string_view line, bool is_alarming) {
            alarming.append(is_alarming ? line : "").append(is_alarming ? "\n" : "");
        });
    EXPECT_EQ(alarming,
              "    info  statistics.duration  restarted\n"
              "    info  statistics.failed_frames  1 -> 9 a minute\n"
              "    opens -> fails: x\n"
              "    system  opens -> fails: x\n"
              "    channels  0 channels -> fails: x\n");
}

// --- Pairs --------------------------------------------------------------------------------------

std::string streams(std::string_view all) {
    return std::format(R"({{"stream": {{"all": [{}]}}}})", all);
}

TEST(streams, are_paired_by_their_ids_whatever_they_are_for) {
    EXPECT_EQ(differences(streams(R"({"id": 1, "settings": {"identity": "a"}},
                                     {"id": 2, "settings": {"identity": "b"}})"),
                          streams(R"({"id": 2, "settings": {"identity": "a"}},
                                     {"id": 1, "settings": {"identity": "b"}})")),
              "stream 1 (a)\n    settings  identity  \"a\" -> \"b\"\n"
              "stream 2 (b)\n    settings  identity  \"b\" -> \"a\"\n");
}

TEST(streams, with_other_ids_are_paired_by_identity_format_and_channel) {
    EXPECT_EQ(differences(streams(R"(
        {"id": 5, "settings": {"identity": "a", "format": 0, "channel": 1, "x": 1}},
        {"id": 0, "settings": {"identity": "a", "format": 0, "channel": 1, "x": 2}},
        {"id": 6, "info": {"channel": 2}, "settings": {"identity": "a", "format": 0}},
        {"id": 8, "settings": {"identity": "b", "format": 0, "channel": 1}},
        {"id": 9})"),
                          streams(R"(
        {"id": 11, "settings": {"identity": "a", "format": 0, "channel": 1, "x": 2}},
        {"id": 12, "settings": {"identity": "a", "format": 0, "channel": 1, "x": 3}},
        {"id": 13, "settings": {"identity": "a", "format": 0, "channel": 3}},
        {"id": 14, "settings": {"identity": "a", "format": 1, "channel": 2}},
        {"id": 16, "info": {"channel": {"uint16": 2}}, "settings": {"identity": "a", "format": 0}},
        {"id": 0})")),
              // An equal stream first, then in list order.
              "stream 5 (a)\n    id 5 -> 12\n    settings  x  1 -> 3\n"
              "stream 0 (a)\n    id 0 -> 11\n"
              "stream 6 (a)\n    id 6 -> 16\n    info  channel  2 -> 2 (uint16)\n"
              "stream 8 (b)  only in OLD: format 0, channel 1\n"
              "stream 9\n    id 9 -> 0\n"
              "stream 13 (a)  only in NEW: format 0, channel 3\n"
              "stream 14 (a)  only in NEW: format 1, channel 2\n");
}

TEST(streams, that_are_equal_are_paired_in_any_order) {
    const std::string one = R"({"info": {"a": 1}, "settings": {"identity": "x"}})";
    const std::string other =
        R"({"info": {"a": 2}, "settings": {"identity": "x"}, "debug": {"$error": "stream 0: debug not recorded"}})";
    EXPECT_EQ(differences(streams(one + "," + other + "," + one),
                          streams(other + "," + one + "," + one), true),
              "");
}

// --- Keys that move by themselves ---------------------------------------------------------------

std::string info(std::string_view run_time, std::string_view key, std::string_view count) {
    std::string members;
    for (const auto& [name, value] :
         {std::pair<std::string_view, std::string_view>("statistics.duration", run_time),
          {key, count}}) {
        if (!value.empty()) {
            members += std::format(R"({}"{}": {})", members.empty() ? "" : ", ", name, value);
        }
    }
    return stream(std::format(R"("info": {{{}}})", members));
}

TEST(failures, count_as_rates_that_rose_by_more_than_a_tenth) {
    constexpr auto minute = 60'000'000LL;
    struct run {
        double minutes;
        const char* count;  // "" if there is none
    };
    const auto shown = [](run older, run newer, bool is_complete = false) {
        const auto snapshot = [](const run& run) {
            return info(std::to_string(static_cast<long long>(run.minutes * minute)),
                        "statistics.failed_frames", run.count);
        };
        const std::string lines = differences(snapshot(older), snapshot(newer), is_complete);
        const auto begin = lines.find("failed_frames  ");
        return begin == std::string::npos ? lines
                                          : lines.substr(begin + 15, lines.size() - begin - 16);
    };
    // The growth between the two.
    EXPECT_EQ(shown({100, "100"}, {110, "110"}), "");
    EXPECT_EQ(shown({100, "100"}, {110, "111"}), "");  // exactly a tenth
    EXPECT_EQ(shown({100, "100"}, {110, "112"}), "1 -> 1.2 a minute");
    EXPECT_EQ(shown({100, "0"}, {110, "9"}), "");
    EXPECT_EQ(shown({100, "0"}, {110, "10"}), "0 -> 1 a minute");
    EXPECT_EQ(shown({100, "300"}, {110, "5300"}), "3 -> 500 a minute");
    // The whole run: the run time or the counter did not rise.
    EXPECT_EQ(shown({100, "100"}, {50, "120"}).substr(0, 17), "1 -> 2.4 a minute");
    EXPECT_EQ(shown({100, "100"}, {10, "100"}).substr(0, 16), "1 -> 10 a minute");
    EXPECT_EQ(shown({100, "100"}, {200, "90"}), "");
    EXPECT_EQ(shown({100, "100"}, {100, "150"}), "1 -> 1.5 a minute");
    // A counter that is not there has counted nothing.
    EXPECT_EQ(shown({100, ""}, {110, "50"}), "0 -> 5 a minute");
    EXPECT_EQ(shown({100, "100"}, {110, ""}), "");
    EXPECT_EQ(shown({0, "0"}, {10, "50"}), "0 -> 5 a minute");
    // All keys that differ, with the rate if it rose.
    EXPECT_EQ(shown({100, "100"}, {100, "150"}, true), "100 -> 150 (1 -> 1.5 a minute)");
    EXPECT_EQ(shown({100, "100"}, {100, "101"}, true), "100 -> 101");
}

TEST(failures, are_not_compared_without_a_run_time) {
    const auto reclaims = [](std::string_view run_time, std::string_view count) {
        return info(run_time, "statistics.reclaim_count", count);
    };
    EXPECT_EQ(differences(reclaims("", "1"), reclaims("", "50000")), "");
    EXPECT_EQ(differences(reclaims("60000000", "1"), reclaims("", "50000")), "");
    EXPECT_EQ(differences(reclaims("", "1"), reclaims("60000000", "50000")), "");
    EXPECT_EQ(differences(reclaims("0", "1"), reclaims("60000000", "50000")), "");
    EXPECT_EQ(differences(reclaims("60000000", "1"), reclaims("60000000", "50000")),
              "stream 1\n    info  statistics.reclaim_count  1 -> 50000 a minute\n");
    // Another kind of a value is no movement.
    EXPECT_EQ(differences(reclaims("", "1"), reclaims("", R"({"uint16": 1})")),
              "stream 1\n    info  statistics.reclaim_count  1 -> 1 (uint16)\n");
    EXPECT_EQ(differences(reclaims("", "1"), reclaims("", "\"1\"")),
              "stream 1\n    info  statistics.reclaim_count  1 -> \"1\"\n");
}

TEST(run_time, counts_if_it_fell) {
    for (const char* key :
         {"statistics.duration", "tlm[0].duration", "tlm[17].duration", "uptime"}) {
        EXPECT_EQ(change(key, "60000000", "59999999"), "restarted");
        EXPECT_EQ(change(key, "60000000", "59999999", true), "60000000 -> 59999999 (restarted)");
        EXPECT_EQ(change(key, "60000000", "60000001"), "");
        EXPECT_EQ(change(key, "60000000", R"({"int64": 60000000})"), "");
        EXPECT_EQ(change(key, "60000000", "4294967296"), "");
        EXPECT_EQ(change(key, "60000000", nullptr), "");
        EXPECT_EQ(change(key, nullptr, "1"), "");
        EXPECT_EQ(change(key, nullptr, "1", true), "none -> 1");
    }
}

TEST(amount, counts_if_it_differs_by_more_than_a_tenth) {
    for (const char* key : {"statistics.framerate", "global.capacity", "global.encoded.peers",
                            "global.encoded.jpeg.peers", "global.raw.peers"}) {
        EXPECT_EQ(change(key, "30", "33"), "");
        EXPECT_EQ(change(key, "30", "34"), "30 -> 34");
        EXPECT_EQ(change(key, "30", "27"), "");
        EXPECT_EQ(change(key, "30", "26"), "30 -> 26");
        EXPECT_EQ(change(key, "30.0", "32.9"), "");
        EXPECT_EQ(change(key, "0", "1"), "0 -> 1");
        EXPECT_EQ(change(key, "30", "31", true), "30 -> 31");
        EXPECT_EQ(change(key, "30", "30.0"), "30 -> 30.0");
        EXPECT_EQ(change(key, "30", nullptr), "30 -> none");
    }
}

TEST(bit_rate, counts_if_it_halved_or_doubled) {
    const std::string key = "statistics.bitrate";
    EXPECT_EQ(change(key, "100", "51"), "");
    EXPECT_EQ(change(key, "100", "50"), "100 -> 50");
    EXPECT_EQ(change(key, "100", "199"), "");
    EXPECT_EQ(change(key, "100", "200"), "100 -> 200");
    EXPECT_EQ(change(key, "0", "1"), "0 -> 1");
    EXPECT_EQ(change(key, "0", "0"), "");
    EXPECT_EQ(change(key, nullptr, "1"), "none -> 1");
}

TEST(free_key, never_counts) {
    for (const char* key :
         {"statistics.frame_count", "identity.recorder", "identity.", "tlm[0].client_us",
          "tlm[3].reclaim_count", "tlm[3].reclaim_histogram", "global.capacity.peak",
          "global.encoded.peers.peak", "global.raw.peers.peak"}) {
        EXPECT_EQ(change(key, "1", "2"), "");
        EXPECT_EQ(change(key, "1", "\"x\""), "");
        EXPECT_EQ(change(key, nullptr, "2"), "");
        EXPECT_EQ(change(key, "1", "2", true), "1 -> 2");
    }
    for (const char* key : {"identity", "identity[0]", "tlm[0]", "tlm.duration", "global.peaks",
                            "peers", "framerate", "bitrate", "xstatistics.frame_count"}) {
        EXPECT_EQ(change(key, "1", "2"), "1 -> 2");
    }
}

}  // namespace
