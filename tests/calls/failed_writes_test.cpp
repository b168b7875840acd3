// Writes that fail: of a JSON text by the library, and of a report by the system.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "serverreport/stream_lists.h"
#include "support/calls.h"

namespace {

// --- JSON texts: a text whose writing fails is not printed --------------------------------------

result tlm_with_failed(int write, const std::string& given) {
    return tlm_calls(R"({"stream": {"debug": {"identity.a": 1}},
                         "channel": {"info": {"input.count": 0}}, "mode": {"info": {}}})",
                     {given}, {"ORU_STRICT_WRITE=" + std::to_string(write)})
        .ended;
}

result report_with_failed(int write, const std::string& snapshot, const std::string& given) {
    return report_calls(snapshot, {given}, {"ORU_STRICT_WRITE=" + std::to_string(write)}).ended;
}

const std::string identities = "{\n    \"identities\": {\n        \"a\": 1\n    }\n}\n";

TEST(failed_json, of_the_system_information_prints_nothing_of_it) {
    EXPECT_EQ(tlm_with_failed(1, "-s"), ended(0, ""));
    EXPECT_EQ(tlm_with_failed(1, "-si"), ended(0, identities));
}

TEST(failed_json, of_the_identities_prints_nothing) {
    EXPECT_EQ(tlm_with_failed(1, "-i"), ended(0, ""));
}

TEST(failed_json, of_the_output_ends_its_section) {
    EXPECT_EQ(report_with_failed(1,
                                 R"({"system": {"caps": {"output": true}},
                                     "output": {"all": [{"id": 0, "info": {}, "settings": {}}]},
                                     "channel": {"all": []}})",
                                 "-oc"),
              ended(0, "----- HDMI output -----\n\nNo channels.\n"));
}

TEST(failed_json, of_quotas_and_limits_ends_the_section) {
    const std::string snapshot = R"({"stream": {"quota": {}, "limit": {},
        "all": [{"id": 1, "debug": {}}]}, "channel": {"all": []}})";
    std::string printed = R"(----- Stream Quotas and Limits -----

{
    "streammaximumquota" : [
)";
    EXPECT_EQ(report_with_failed(1, snapshot, "-qc"), ended(0, printed + "No channels.\n"));
    printed += R"(        {"buffering":"0","hard":"0","soft":"0"}
    ],

    "streamcurrentquota" : [
)";
    EXPECT_EQ(report_with_failed(2, snapshot, "-qc"), ended(0, printed + "No channels.\n"));
    printed += R"(        {"hard":"0","soft":"0"}
    ],

    "streammaximumlimits" : [
)";
    EXPECT_EQ(report_with_failed(3, snapshot, "-qc"), ended(0, printed + "No channels.\n"));
    printed += R"(        {"encode":"0","other":"0"}
    ],

    "streamcurrentlimits" : [
)";
    EXPECT_EQ(report_with_failed(4, snapshot, "-qc"), ended(0, printed + "No channels.\n"));
}

TEST(failed_json, of_a_channel_leaves_it_out) {
    const std::string snapshot = R"({"channel": {"all": [{"id": 4, "info": {}},
                                                         {"id": 5, "info": {}}]}})";
    EXPECT_EQ(report_with_failed(1, snapshot, "-c"),
              ended(0, R"(----- Snapshot of channel settings -----

{
    "channels" : [
        {"id/5":{"crop":"No"}}
    ]
}
)"));
    // The separator is printed before the next channel, which then prints nothing.
    EXPECT_EQ(report_with_failed(2, snapshot, "-c"),
              ended(0, R"(----- Snapshot of channel settings -----

{
    "channels" : [
        {"id/4":{"crop":"No"}},
    ]
}
)"));
}

TEST(failed_json, of_an_input_leaves_it_out) {
    const std::string snapshot = R"({"channel": {"filtered": [{"id": 4, "info": {}},
                                                              {"id": 5, "info": {"type.id": 2}}]},
                                     "input": {"all": [{"id": 1, "info": {}},
                                                       {"id": 2, "info": {}}]}})";
    EXPECT_EQ(report_with_failed(1, snapshot, "-i"),
              ended(0, R"(----- Snapshot of input settings -----

{
    "inputs" : [
        {"id/2":{"crop":"No"}}
    ]
}
)"));
    EXPECT_EQ(report_with_failed(2, snapshot, "-i"),
              ended(0, R"(----- Snapshot of input settings -----

{
    "inputs" : [
        {"id/1":{"crop":"No"}},
    ]
}
)"));
}

// Two streams, and the texts of their report.
const std::string streams =
    snapshot_of({{.id = "1", .settings = R"({"format": 2})"},
                 {.id = "2", .settings = R"({"format": 0, "sqz.strength": 1})"}});
std::string summary(const std::string& id, const std::string& format) {
    return "        { \"id/0x000" + id +
           R"(" : {"bitrate":0,"channel":0,"duration":"00:00:00","failcount":0,"format":")" +
           format +
           R"(","framecount":0,"framerate":0,"identity":"N/A","peers":0,"resolution":"0x0"} })";
}
const std::string summaries = summary("1", "jpeg") + ",\n" + summary("2", "h264") + "\n";
const std::string first_settings = R"(        {
            "id/0x0001" : {
                "basic": {"channel":0,"compression":0,"format":"jpeg","framerate":0,"mirror":0,"monochrome":0,"resolution":"0x0","rotation":0}
            }
        },
)";
const std::string second_basic = R"(        {
            "id/0x0002" : {
                "basic": {"channel":0,"compression":0,"format":"h264","framerate":0,"mirror":0,"monochrome":0,"resolution":"0x0","rotation":0,"signed":0})";
const std::string second_encoder = R"(,
                "h26x": {"bitrate":0,"goplength":0,"profile":"baseline","rcmode":"cbr","rcprio":"fps"})";
const std::string second_leanflow = R"(,
                "leanflow": {"fps":0,"fpsmode":"fixed","goplength":0,"gopmode":"fixed","skipmode":"drop","strength":1e+1})";
const std::string second_end = "\n            }\n        }\n";
const std::string settings =
    first_settings + second_basic + second_encoder + second_leanflow + second_end;
std::string counters(const std::string& id) {
    return "        { \"id/0x000" + id +
           R"(" : {"actual-framerate":0,"bitrate":0,"failcount":0,"framecount":0,"reclaimcount":0} })";
}
const std::string statistics = counters("1") + ",\n" + counters("2") + "\n";

result stream_report(const std::string& first, const std::string& second,
                     const std::string& third) {
    return ended(0, "----- Snapshot of all running streams -----\n\n{\n    \"streams\" : [\n" +
                        first + "    ],\n\n    \"streaminfo\" : [\n" + second +
                        "    ],\n\n    \"streamstatistics\" : [\n" + third + "    ]\n}\n\n");
}

// The separators of the other lines do not change.
TEST(failed_json, of_a_stream_leaves_out_its_part) {
    EXPECT_EQ(report_with_failed(0, streams, "-l"), stream_report(summaries, settings, statistics));
    EXPECT_EQ(report_with_failed(1, streams, "-l"),
              stream_report(summary("2", "h264") + "\n", settings, statistics));
    EXPECT_EQ(report_with_failed(2, streams, "-l"),
              stream_report(summary("1", "jpeg") + ",\n", settings, statistics));
    EXPECT_EQ(report_with_failed(3, streams, "-l"),
              stream_report(summaries, second_basic + second_encoder + second_leanflow + second_end,
                            statistics));
    EXPECT_EQ(report_with_failed(4, streams, "-l"),
              stream_report(summaries, first_settings, statistics));
    EXPECT_EQ(report_with_failed(5, streams, "-l"),
              stream_report(summaries, first_settings + second_basic + second_end, statistics));
    EXPECT_EQ(report_with_failed(6, streams, "-l"),
              stream_report(summaries, first_settings + second_basic + second_encoder + second_end,
                            statistics));
    EXPECT_EQ(report_with_failed(7, streams, "-l"),
              stream_report(summaries, settings, counters("2") + "\n"));
    EXPECT_EQ(report_with_failed(8, streams, "-l"),
              stream_report(summaries, settings, counters("1") + ",\n"));
}

// --- Reports: a write that fails is the last step -----------------------------------------------

// Each report is longer than the buffer of the stream, so that a write fails in the middle of it.
TEST(failed_output, ends_the_queries_of_the_feeder_tool) {
    std::string keys = R"("a": 1)";
    for (int i = 0; i < 500; ++i) {
        keys += ", \"key" + std::to_string(i) + "\": 1";
    }
    const calls made = tlm_calls(R"({"mode": {"info": {)" + keys + "}}}", {"-si"}, {}, "/dev/full");
    EXPECT_EQ(made.ended, ended(1, "",
                                "oru-tlm-tool: Exception: cannot write standard output: "
                                "No space left on device\n"));
    EXPECT_TRUE(made.queries.contains("oru_mode_get_info(mode, NULL) -> mode info\n"));
    EXPECT_FALSE(made.queries.contains("oru_stream_get_debug"));
}

TEST(failed_output, ends_the_queries_of_the_server_report) {
    std::vector<stream> many;
    for (int id = 1; id <= 50; ++id) {
        many.push_back({.id = std::to_string(id)});
    }
    const calls made = report_calls(snapshot_of(many), {"-lq"}, {}, "/dev/full");
    EXPECT_EQ(made.ended, ended(1, "",
                                "oru-serverreport-tool: Exception cannot write standard output: "
                                "No space left on device\n"));
    EXPECT_TRUE(made.queries.contains("oru_stream_get_all(&error) -> stream "));
    EXPECT_FALSE(made.queries.contains("oru_stream_get_quota"));
}

}  // namespace
