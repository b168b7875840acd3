// The stream quotas and limits, and their current use.
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/tools.h"

namespace {

// Returns a snapshot with a fixed quota and limit and with `all` as the list of streams.
std::string snapshot_of(const std::string& all) {
    return R"({"stream": {
        "quota": {"global.hard.limit": 120, "global.soft.limit": 100, "global.buffering.limit": 7},
        "limit": {"global.max.streams.limit.encoded": 20},
        "all": )" +
           all + "}}";
}

const std::string without_current = R"(----- Stream Quotas and Limits -----

{
    "streammaximumquota" : [
        {"buffering":"7","hard":"120","soft":"100"}
    ],

    "streammaximumlimits" : [
        {"encode":"20","other":"20"}
    ]
}

)";

std::string with_current(const std::string& capacity, const std::string& jpeg,
                         const std::string& encoded, const std::string& raw) {
    return R"(----- Stream Quotas and Limits -----

{
    "streammaximumquota" : [
        {"buffering":"7","hard":"120","soft":"100"}
    ],

    "streamcurrentquota" : [
        {"hard":")" +
           capacity + R"(","soft":")" + capacity + R"("}
    ],

    "streammaximumlimits" : [
        {"encode":"20","other":"20"}
    ],

    "streamcurrentlimits" : [
        {"jpeg":")" +
           jpeg + R"(","motion encoded":")" + encoded + R"(","other":")" + raw + R"("}
    ]
}

)";
}

TEST(stream_quotas, the_whole_section) {
    EXPECT_EQ(report(R"({"stream": {
        "quota": {"global.hard.limit": 4294967295, "global.soft.limit": 1000,
                  "global.buffering.limit": 10},
        "limit": {"global.max.streams.limit.encoded": 20},
        "all": [{"id": 1, "settings": {"format": 0},
                 "debug": {"global.capacity": 50, "global.encoded.peers": 3,
                           "global.encoded.jpeg.peers": 2, "global.raw.peers": 10}}]}})",
                     {"--stream-quotas"}),
              ended(0, R"(----- Stream Quotas and Limits -----

{
    "streammaximumquota" : [
        {"buffering":"10","hard":"4294967295","soft":"1000"}
    ],

    "streamcurrentquota" : [
        {"hard":"50","soft":"50"}
    ],

    "streammaximumlimits" : [
        {"encode":"20","other":"20"}
    ],

    "streamcurrentlimits" : [
        {"jpeg":"2","motion encoded":"3","other":"10"}
    ]
}

)"));
}

TEST(stream_quotas, figures_and_a_format_that_widen) {
    EXPECT_EQ(report(R"({"stream": {
        "quota": {"global.buffering.limit": {"uint16": 10}},
        "limit": {"global.max.streams.limit.encoded": {"uint16": 20}},
        "all": [{"id": 1, "settings": {"format": 3}, "debug": {"global.capacity": 1}},
                {"id": 2, "settings": {"format": {"uint16": 1}},
                 "debug": {"global.capacity": {"uint16": 50}}}]}})",
                     {"-q"}),
              ended(0, R"(----- Stream Quotas and Limits -----

{
    "streammaximumquota" : [
        {"buffering":"10","hard":"0","soft":"0"}
    ],

    "streamcurrentquota" : [
        {"hard":"50","soft":"50"}
    ],

    "streammaximumlimits" : [
        {"encode":"20","other":"20"}
    ],

    "streamcurrentlimits" : [
        {"jpeg":"0","motion encoded":"0","other":"0"}
    ]
}

)"));
}

TEST(stream_quotas, absent_keys_are_0) {
    EXPECT_EQ(report(R"({"stream": {"quota": {"global.hard.limit": 120, "global.soft.limit": 100},
                                    "limit": {}, "all": [{"id": 1, "debug": {}}]}})",
                     {"-q"}),
              ended(0, R"(----- Stream Quotas and Limits -----

{
    "streammaximumquota" : [
        {"buffering":"0","hard":"120","soft":"100"}
    ],

    "streamcurrentquota" : [
        {"hard":"0","soft":"0"}
    ],

    "streammaximumlimits" : [
        {"encode":"0","other":"0"}
    ],

    "streamcurrentlimits" : [
        {"jpeg":"0","motion encoded":"0","other":"0"}
    ]
}

)"));
}

TEST(stream_quotas, values_of_another_kind_count_as_absent) {
    EXPECT_EQ(report(R"({"stream": {
        "quota": {"global.hard.limit": -1, "global.soft.limit": "100",
                  "global.buffering.limit": 7.0},
        "limit": {"global.max.streams.limit.encoded": true}, "all": []}})",
                     {"-q"}),
              ended(0, R"(----- Stream Quotas and Limits -----

{
    "streammaximumquota" : [
        {"buffering":"0","hard":"0","soft":"0"}
    ],

    "streammaximumlimits" : [
        {"encode":"0","other":"0"}
    ]
}

)"));
}

TEST(stream_quotas, no_stream_leaves_the_current_arrays_out) {
    for (const char* all : {"[]", R"({"$error": "busy"})", R"([{"id": 1}])",
                            R"([{"id": 1, "settings": {"format": 0}}])",
                            R"([{"id": 1, "settings": {"format": 0}, "debug": {"$error": "x"}}])",
                            R"([{"id": 1, "settings": {"format": 3}, "debug": {"$error": "x"}},
                                {"id": 2, "settings": {"format": 3},
                                 "debug": {"global.capacity": 2}}])",
                            R"([{"id": 1, "settings": {"format": 3}},
                                {"id": 2, "settings": {"format": 0}},
                                {"id": 3, "settings": {"format": 0}, "debug": {}}])"}) {
        EXPECT_EQ(report(snapshot_of(all), {"-q"}), ended(0, without_current)) << all;
    }
    EXPECT_EQ(report(R"({"stream": {
        "quota": {"global.hard.limit": 120, "global.soft.limit": 100, "global.buffering.limit": 7},
        "limit": {"global.max.streams.limit.encoded": 20}}})",
                     {"-q"}),
              ended(0, without_current));
}

// Returns a stream whose id is a value in its debug map.
std::string stream_of(const std::string& id, const std::string& settings) {
    return R"({"id": )" + id + settings + R"(, "debug": {"global.capacity": )" + id +
           R"(, "global.encoded.peers": 1, "global.encoded.jpeg.peers": 2,
              "global.raw.peers": 3, "global.capacity.peak": 99}})";
}

std::string with_format(const std::string& id, const std::string& format) {
    return stream_of(id, R"(, "settings": {"format": )" + format + "}");
}

TEST(stream_quotas, the_first_encoded_stream_is_used) {
    for (const char* encoded : {"0", "1", "2", "10", "11"}) {
        EXPECT_EQ(
            report(snapshot_of("[" + with_format("51", "3") + ", " + with_format("52", encoded) +
                               ", " + with_format("53", "0") + "]"),
                   {"-q"}),
            ended(0, with_current("52", "2", "1", "3")))
            << encoded;
    }
}

TEST(stream_quotas, other_formats_are_skipped) {
    for (const char* other : {"3", "4", "5", "6", "7", "8", "9", "12", "13", "4294967295", "\"0\"",
                              R"({"int64": 0})", "0.0"}) {
        EXPECT_EQ(report(snapshot_of("[" + with_format("51", other) + ", " +
                                     with_format("52", "0") + "]"),
                         {"-q"}),
                  ended(0, with_current("52", "2", "1", "3")))
            << other;
        // Without an encoded stream, the first one is used.
        EXPECT_EQ(report(snapshot_of("[" + with_format("51", other) + ", " +
                                     with_format("52", "3") + "]"),
                         {"-q"}),
                  ended(0, with_current("51", "2", "1", "3")))
            << other;
    }
}

TEST(stream_quotas, a_stream_without_settings_is_skipped) {
    for (const char* settings :
         {"", R"(, "settings": {"$error": "gone"})", R"(, "settings": {})"}) {
        EXPECT_EQ(report(snapshot_of("[" + stream_of("51", settings) + ", " +
                                     with_format("52", "1") + "]"),
                         {"-q"}),
                  ended(0, with_current("52", "2", "1", "3")))
            << settings;
        EXPECT_EQ(report(snapshot_of("[" + stream_of("51", settings) + "]"), {"-q"}),
                  ended(0, with_current("51", "2", "1", "3")))
            << settings;
    }
}

TEST(stream_quotas, streams_that_the_stream_report_skips_count_here) {
    EXPECT_EQ(report(snapshot_of("[" + with_format("0", "0") + "]"), {"-q"}),
              ended(0, with_current("0", "2", "1", "3")));
    EXPECT_EQ(report(snapshot_of("[" + with_format("5", "6") + "]"), {"-q"}),
              ended(0, with_current("5", "2", "1", "3")));
    EXPECT_EQ(report(snapshot_of("[" + stream_of("4", R"(, "settings": {"format": 0,
                                                                "subformat": "leanflow"})") +
                                 "]"),
                     {"-q"}),
              ended(0, with_current("4", "2", "1", "3")));
}

TEST(stream_quotas, the_first_stream_replaces_one_that_does_not_answer) {
    for (const char* debug : {"", R"(, "debug": {"$error": "gone"})"}) {
        EXPECT_EQ(report(snapshot_of("[" + with_format("51", "3") +
                                     R"(, {"id": 52, "settings": {"format": 0})" + debug + "}, " +
                                     with_format("53", "0") + "]"),
                         {"-q"}),
                  ended(0, with_current("51", "2", "1", "3")))
            << debug;
    }
}

TEST(stream_quotas, no_quota_or_no_limit_is_fatal) {
    EXPECT_EQ(
        report(R"({"stream": {"quota": {"$error": "no é"}, "limit": {}, "all": []}})", {"-q"}),
        ended(1, "", "oru-serverreport-tool: Failed to get quota: no é\n"));
    EXPECT_EQ(
        report(R"({"stream": {"quota": {}, "limit": {"$error": "no {}"}, "all": []}})", {"-q"}),
        ended(1, "", "oru-serverreport-tool: Failed to get limit: no {}\n"));
    // The quota is queried first.
    EXPECT_EQ(
        report(R"({"stream": {"quota": {"$error": ""}, "limit": {"$error": "no limit"}}})", {"-q"}),
        ended(1, "", "oru-serverreport-tool: Failed to get quota: \n"));
    for (const auto& [snapshot, line] :
         {std::pair<std::string, std::string>{R"({"stream": {"limit": {}}})",
                                              "oru-serverreport-tool: Failed to get quota: "},
          {R"({"stream": {"quota": {}}})", "oru-serverreport-tool: Failed to get limit: "}}) {
        const result got = report(snapshot, {"-q"});
        EXPECT_EQ(got.status, 1);
        EXPECT_EQ(got.out, "");
        EXPECT_TRUE(got.err.starts_with(line)) << got;
        EXPECT_TRUE(got.err.ends_with("\n")) << got;
    }
}

}  // namespace
