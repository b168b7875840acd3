// The running streams: the streams that are reported, the document, and the summaries.
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "serverreport/stream_lists.h"
#include "support/tools.h"

namespace {

const std::string no_streams =
    "----- Snapshot of all running streams -----\n"
    "\n"
    "{\n"
    "    \"streams\" : [\n"
    "    ],\n"
    "\n"
    "    \"streaminfo\" : [\n"
    "    ],\n"
    "\n"
    "    \"streamstatistics\" : [\n"
    "    ]\n"
    "}\n"
    "\n";

// Returns the lines of the array "streams".
std::string summaries(const std::string& snapshot) {
    return array_of("streams", snapshot);
}

std::string line_of(const std::string& members) {
    return "        { \"id/0x0001\" : {" + members + "} }\n";
}

TEST(list_streams, no_running_streams) {
    EXPECT_EQ(report(R"({"stream": {"all": []}})", {"--list-streams"}), ended(0, no_streams));
}

TEST(list_streams, a_whole_document) {
    EXPECT_EQ(report(R"({
        "stream": {"all": [
            {"id": 1,
             "info": {"channel": 2, "framerate": 30, "bitrate": 2000000, "peers": 1,
                      "statistics.duration": {"int64": 3661000000}, "statistics.frame_count": 1500,
                      "statistics.failed_frames": 10, "identity[0]": "viewer", "input": 10},
             "settings": {"format": 0, "width": 1920, "height": 1080, "identity": "recorder",
                          "framerate": 30.0, "h264.profile": 2},
             "debug": {}},
            {"id": 6699, "info": {"width": 640, "height": 480},
             "settings": {"format": 3, "width": 1, "height": 2},
             "debug": {"tlm[0].duration": {"int64": 0}}}
        ]}
    })",
                     {"-l"}),
              ended(0, R"(----- Snapshot of all running streams -----

{
    "streams" : [
        { "id/0x0001" : {"bitrate":2000000,"channel":2,"duration":"01:01:01","failcount":10,"format":"h264","framecount":1500,"framerate":30,"identity":"recorder","identity[0]":"viewer","peers":1,"resolution":"1920x1080"} },
        { "id/0x1a2b" : {"bitrate":0,"channel":0,"duration":"00:00:00","failcount":0,"format":"NV12","framecount":0,"framerate":0,"identity":"N/A","peers":0,"resolution":"640x480"} }
    ],

    "streaminfo" : [
        {
            "id/0x0001" : {
                "basic": {"channel":0,"compression":0,"format":"h264","framerate":3e+1,"mirror":0,"monochrome":0,"resolution":"1920x1080","rotation":0,"signed":0,"input":10},
                "h26x": {"bitrate":0,"goplength":0,"profile":"high","rcmode":"cbr","rcprio":"fps"}
            }
        },
        {
            "id/0x1a2b" : {
                "basic": {"channel":0,"format":"NV12","framerate":0,"resolution":"640x480","rotation":0}
            }
        }
    ],

    "streamstatistics" : [
        { "id/0x0001" : {"actual-framerate":0,"bitrate":0,"failcount":1e+1,"framecount":1.5e+3,"reclaimcount":0} },
        { "id/0x1a2b" : {"actual-framerate":0,"bitrate":0,"failcount":0,"framecount":0,"reclaimcount":0,"tlm[0].duration":"00:00:00"} }
    ]
}

)"));
}

TEST(list_streams, streams_that_are_not_worth_reporting) {
    for (const char* element : {
             R"({"id": 0, "info": {}, "settings": {}, "debug": {}})",
             R"({"id": 1, "settings": {}, "debug": {}})",
             R"({"id": 1, "info": {}, "debug": {}})",
             R"({"id": 1, "info": {}, "settings": {}})",
             R"({"id": 1, "info": {"$error": "x"}, "settings": {}, "debug": {}})",
             R"({"id": 1, "info": {}, "settings": {"$error": "x"}, "debug": {}})",
             R"({"id": 1, "info": {}, "settings": {}, "debug": {"$error": "x"}})",
             R"({"id": 1, "info": {}, "settings": {"format": 6}, "debug": {}})",
             R"({"id": 1, "info": {}, "settings": {"subformat": "leanflow"}, "debug": {}})",
             R"({"id": 1, "info": {}, "settings": {"format": 3, "subformat": "leanflow"},
                 "debug": {}})",
         }) {
        EXPECT_EQ(report(std::string(R"({"stream": {"all": [)") + element + "]}}", {"-l"}),
                  ended(0, no_streams))
            << element;
    }
}

TEST(list_streams, a_format_that_is_not_worth_reporting_and_widens) {
    EXPECT_EQ(report(snapshot_of({{.settings = R"({"format": {"uint16": 6}})"}}), {"-l"}),
              ended(0, no_streams));
}

TEST(list_streams, streams_that_are_similar_to_those) {
    for (const char* settings : {R"({"subformat": "Leanflow"})", R"({"subformat": "leanflow2"})",
                                 R"({"subformat": ""})", R"({"format": 66})", R"({"format": "6"})",
                                 R"({"format": {"int64": 6}})", R"({"Format": 6})"}) {
        EXPECT_EQ(summaries(snapshot_of({{.settings = settings}})),
                  line_of(R"("bitrate":0,"channel":0,"duration":"00:00:00","failcount":0,)"
                          R"("format":"n/a","framecount":0,"framerate":0,"identity":"N/A",)"
                          R"("peers":0,"resolution":"0x0")"))
            << settings;
    }
}

TEST(list_streams, no_comma_after_the_last_stream_that_is_kept) {
    const stream skipped{.id = "9", .settings = R"({"format": 6})"};
    const std::string defaults =
        R"({"bitrate":0,"channel":0,"duration":"00:00:00","failcount":0,"format":"n/a",)"
        R"("framecount":0,"framerate":0,"identity":"N/A","peers":0,"resolution":"0x0"})";
    const std::string basic =
        R"("basic": {"channel":0,"compression":0,"format":"n/a","framerate":0,"mirror":0,)"
        R"("monochrome":0,"resolution":"0x0","rotation":0,"signed":0})";
    const std::string counters =
        R"({"actual-framerate":0,"bitrate":0,"failcount":0,"framecount":0,"reclaimcount":0})";
    const std::string snapshot =
        snapshot_of({{.id = "0"},
                     {.id = "7"},
                     skipped,
                     {.id = "5"},
                     {.id = "0"},
                     {.id = "3"},
                     {.id = "8", .settings = R"({"subformat": "leanflow"})"}});
    EXPECT_EQ(summaries(snapshot), "        { \"id/0x0007\" : " + defaults + " },\n" +
                                       "        { \"id/0x0005\" : " + defaults + " },\n" +
                                       "        { \"id/0x0003\" : " + defaults + " }\n");
    EXPECT_EQ(array_of("streaminfo", snapshot),
              "        {\n            \"id/0x0007\" : {\n                " + basic +
                  "\n            }\n        },\n" +
                  "        {\n            \"id/0x0005\" : {\n                " + basic +
                  "\n            }\n        },\n" +
                  "        {\n            \"id/0x0003\" : {\n                " + basic +
                  "\n            }\n        }\n");
    EXPECT_EQ(array_of("streamstatistics", snapshot),
              "        { \"id/0x0007\" : " + counters + " },\n" + "        { \"id/0x0005\" : " +
                  counters + " },\n" + "        { \"id/0x0003\" : " + counters + " }\n");
}

TEST(list_streams, a_failing_list_is_fatal) {
    EXPECT_EQ(report(R"({"stream": {"all": {"$error": "service busy"}}})", {"-l"}),
              ended(1, "", "oru-serverreport-tool: Failed to get all streams: service busy\n"));
    // The message is not used as a format, and its length is not limited.
    for (const std::string& message : {std::string("100%s {} %n {:x}"), std::string("é ☃"),
                                       std::string(), std::string(5000, 'm')}) {
        EXPECT_EQ(
            report(R"({"stream": {"all": {"$error": ")" + message + R"("}}})", {"-l"}),
            ended(1, "", "oru-serverreport-tool: Failed to get all streams: " + message + "\n"));
    }
    const result unrecorded = report("{}", {"-l"});
    EXPECT_EQ(unrecorded.status, 1);
    EXPECT_EQ(unrecorded.out, "");
    EXPECT_TRUE(unrecorded.err.starts_with("oru-serverreport-tool: Failed to get all streams: "));
    EXPECT_GT(unrecorded.err.size(), std::string("oru-serverreport-tool: Failed to get all "
                                                 "streams: \n")
                                         .size());
}

TEST(list_streams, ids_in_hexadecimal_of_four_digits_or_more) {
    for (const auto& [id, label] : {std::pair<std::string, std::string>{"1", "id/0x0001"},
                                    {"255", "id/0x00ff"},
                                    {"6699", "id/0x1a2b"},
                                    {"65535", "id/0xffff"},
                                    {"74565", "id/0x12345"},
                                    {"4294967295", "id/0xffffffff"}}) {
        const std::string snapshot = snapshot_of({{.id = id}});
        EXPECT_TRUE(summaries(snapshot).starts_with("        { \"" + label + "\" : {")) << id;
        EXPECT_TRUE(array_of("streaminfo", snapshot)
                        .starts_with("        {\n            \"" + label + "\" : {\n"))
            << id;
        EXPECT_TRUE(
            array_of("streamstatistics", snapshot).starts_with("        { \"" + label + "\" : {"))
            << id;
    }
}

TEST(list_streams, summary_figures_are_plain_integers) {
    EXPECT_EQ(summaries(snapshot_of({{.info = R"({"channel": 10, "framerate": 100,
        "bitrate": 4294967295, "statistics.frame_count": 1500, "statistics.failed_frames": 20,
        "peers": 1000, "width": 7, "height": 7})",
                                      .settings = R"({"format": 1, "width": 4294967295,
        "height": 100, "channel": 7, "framerate": 7, "bitrate": 7})"}})),
              line_of(R"("bitrate":4294967295,"channel":10,"duration":"00:00:00","failcount":20,)"
                      R"("format":"h265","framecount":1500,"framerate":100,"identity":"N/A",)"
                      R"("peers":1000,"resolution":"4294967295x100")"));
}

TEST(list_streams, summary_figures_up_to_the_largest) {
    EXPECT_EQ(summaries(snapshot_of({{.info = R"({"channel": 4294967295, "framerate": 4294967294,
        "bitrate": 4294967293, "statistics.frame_count": 4294967292,
        "statistics.failed_frames": 4294967291, "peers": 4294967289,
        "width": 4294967288, "height": 4294967287})",
                                      .settings = R"({"format": 3})"}})),
              line_of(R"("bitrate":4294967293,"channel":4294967295,"duration":"00:00:00",)"
                      R"("failcount":4294967291,"format":"NV12","framecount":4294967292,)"
                      R"("framerate":4294967294,"identity":"N/A","peers":4294967289,)"
                      R"("resolution":"4294967288x4294967287")"));
}

TEST(list_streams, a_figure_that_widens) {
    EXPECT_EQ(summaries(snapshot_of({{.info = R"({"peers": {"uint16": 1000}})"}})),
              line_of(R"("bitrate":0,"channel":0,"duration":"00:00:00","failcount":0,)"
                      R"("format":"n/a","framecount":0,"framerate":0,"identity":"N/A",)"
                      R"("peers":1000,"resolution":"0x0")"));
}

TEST(list_streams, figures_of_another_kind_count_as_absent) {
    EXPECT_EQ(summaries(snapshot_of({{.info = R"({"channel": "10", "framerate": 29.97,
        "bitrate": -1, "statistics.frame_count": true, "statistics.duration": "59000000",
        "peers": [1, 2], "identity[0]": 5})",
                                      .settings = R"({"format": true, "width": -1,
        "height": 100.0, "identity": 4, "subformat": 3})"}})),
              line_of(R"("bitrate":0,"channel":0,"duration":"00:00:00","failcount":0,)"
                      R"("format":"n/a","framecount":0,"framerate":0,"identity":"N/A",)"
                      R"("peers":0,"resolution":"0x0")"));
}

// Expects the text `shown` for a stream of this duration.
void expect_duration(const std::string& recorded, const std::string& shown) {
    EXPECT_EQ(summaries(snapshot_of({{.info = R"({"statistics.duration": )" + recorded + "}"}})),
              line_of(R"("bitrate":0,"channel":0,"duration":")" + shown +
                      R"(","failcount":0,"format":"n/a","framecount":0,"framerate":0,)"
                      R"("identity":"N/A","peers":0,"resolution":"0x0")"))
        << recorded;
}

TEST(list_streams, durations) {
    for (const auto& [microseconds, text] : {std::pair<std::string, std::string>{"0", "00:00:00"},
                                             {"999999", "00:00:00"},
                                             {"1000000", "00:00:01"},
                                             {"59000000", "00:00:59"},
                                             {"59999999", "00:00:59"},
                                             {"60000000", "00:01:00"},
                                             {"3599000000", "00:59:59"},
                                             {"3600000000", "01:00:00"},
                                             {"86399000000", "23:59:59"},
                                             {"86400000000", "24:00:00"},
                                             {"360000000000", "100:00:00"},
                                             {"-1", "00:00:00"},
                                             {"-999999", "00:00:00"},
                                             {"-1000000", "-00:00:01"},
                                             {"-3661000000", "-01:01:01"},
                                             {"-360000000000", "-100:00:00"},
                                             {"9223372036854775807", "2562047788:00:54"},
                                             {"-9223372036854775808", "-2562047788:00:54"}}) {
        expect_duration(R"({"int64": )" + microseconds + "}", text);
    }
    expect_duration("86400000000", "24:00:00");
    expect_duration("-1000000", "-00:00:01");
    expect_duration("59000000.0", "00:00:00");
}

TEST(list_streams, a_duration_that_widens) {
    expect_duration("59000000", "00:00:59");
    expect_duration(R"({"uint16": 7})", "00:00:00");
    expect_duration(R"({"uint32": 59000000})", "00:00:59");
}

// Returns the summary's format and resolution, with 1x2 in the settings and 3x4 in the info map.
std::string format_and_resolution(const std::string& settings, const std::string& formats = "") {
    const std::string line =
        summaries(snapshot_of({{.info = R"({"width": 3, "height": 4})",
                                .settings = R"({"width": 1, "height": 2)" + settings + "}"}},
                              formats));
    const std::size_t format = line.find("\"format\":");
    const std::size_t framecount = line.find(",\"framecount\"");
    const std::size_t resolution = line.find("\"resolution\":");
    return line.substr(format, framecount - format) + " " +
           line.substr(resolution, line.find('}') - resolution);
}

TEST(list_streams, format_names) {
    const std::string in_settings = R"( "resolution":"1x2")";
    const std::string in_info = R"( "resolution":"3x4")";
    EXPECT_EQ(format_and_resolution(R"(, "format": 0)"), R"("format":"h264")" + in_settings);
    EXPECT_EQ(format_and_resolution(R"(, "format": 1)"), R"("format":"h265")" + in_settings);
    EXPECT_EQ(format_and_resolution(R"(, "format": 2)"), R"("format":"jpeg")" + in_settings);
    EXPECT_EQ(format_and_resolution(R"(, "format": 10)"), R"("format":"av1")" + in_settings);
    for (const char* unknown : {"4", "5", "7", "8", "9", "11", "12", "13", "99", "4294967295",
                                "2147483648", "\"h264\"", R"({"int64": 0})"}) {
        EXPECT_EQ(format_and_resolution(std::string(R"(, "format": )") + unknown),
                  R"("format":"n/a")" + in_settings)
            << unknown;
    }
    EXPECT_EQ(format_and_resolution(""), R"("format":"n/a")" + in_settings);
    EXPECT_EQ(format_and_resolution(R"(, "format": {"uint16": 1})"),
              R"("format":"h265")" + in_settings);
    // Only raw streams are named by their subformat.
    EXPECT_EQ(format_and_resolution(R"(, "format": 0, "subformat": "Y800")"),
              R"("format":"h264")" + in_settings);
    EXPECT_EQ(format_and_resolution(R"(, "format": 3)"), R"("format":"NV12")" + in_info);
    EXPECT_EQ(format_and_resolution(R"(, "format": {"uint16": 3})"),
              R"("format":"NV12")" + in_info);
    EXPECT_EQ(format_and_resolution(R"(, "format": 3, "subformat": "Y800")"),
              R"("format":"Y800")" + in_info);
    EXPECT_EQ(format_and_resolution(R"(, "format": 3, "subformat": "")"),
              R"("format":"")" + in_info);
    EXPECT_EQ(format_and_resolution(R"(, "format": 3, "subformat": 5)"),
              R"("format":"NV12")" + in_info);
}

TEST(list_streams, format_names_come_from_the_service) {
    const std::string formats = R"({"a0": 0, "a1": 1, "a2": 2, "a3": 3, "a4": 4, "a5": 5, "a7": 7,
        "a8": 8, "a9": 9, "a10": 10, "a11": 11, "a12": 12, "a13": 13, "all ones": 4294967295})";
    for (const char* code : {"0", "1", "2", "4", "5", "7", "8", "9", "10", "11", "12", "13"}) {
        EXPECT_EQ(format_and_resolution(std::string(R"(, "format": )") + code, formats),
                  std::string(R"("format":"a)") + code + R"(" "resolution":"1x2")");
    }
    EXPECT_EQ(format_and_resolution(R"(, "format": 3)", formats),
              R"("format":"NV12" "resolution":"3x4")");
    EXPECT_EQ(format_and_resolution(R"(, "format": 4294967295)", formats),
              R"("format":"all ones" "resolution":"1x2")");
    EXPECT_EQ(format_and_resolution(R"(, "format": 0)", "{}"),
              R"("format":"n/a" "resolution":"1x2")");
}

TEST(list_streams, eight_identities_at_most) {
    EXPECT_EQ(
        summaries(snapshot_of({{.info = R"({"identity[0]": "i0", "identity[1]": "i1",
        "identity[2]": "i2", "identity[3]": "i3", "identity[4]": "i4", "identity[5]": "i5",
        "identity[6]": "i6", "identity[7]": "i7", "identity[8]": "i8", "identity[9]": "i9",
        "identity[10]": "i10", "identity[00]": "no", "identity": "no"})",
                                .settings = R"({"identity": "mine", "identity[0]": "no"})"}})),
        line_of(R"("bitrate":0,"channel":0,"duration":"00:00:00","failcount":0,)"
                R"("format":"n/a","framecount":0,"framerate":0,"identity":"mine",)"
                R"("identity[0]":"i0","identity[1]":"i1","identity[2]":"i2",)"
                R"("identity[3]":"i3","identity[4]":"i4","identity[5]":"i5",)"
                R"("identity[6]":"i6","identity[7]":"i7","peers":0,"resolution":"0x0")"));
}

TEST(list_streams, gaps_between_identities_are_skipped) {
    EXPECT_EQ(summaries(snapshot_of({{.info = R"({"identity[0]": "", "identity[2]": "b",
        "identity[7]": "c", "identity[5]": {"uint32": 5}})"}})),
              line_of(R"("bitrate":0,"channel":0,"duration":"00:00:00","failcount":0,)"
                      R"("format":"n/a","framecount":0,"framerate":0,"identity":"N/A",)"
                      R"("identity[0]":"","identity[2]":"b","identity[7]":"c",)"
                      R"("peers":0,"resolution":"0x0")"));
}

TEST(list_streams, texts_in_a_summary) {
    // The seven escaped bytes and others, in short and long texts.
    EXPECT_EQ(summaries(snapshot_of({{.info = R"({"identity[0]": "\u0001\u001f",
        "identity[1]": "a long enough one: \u0001 and \u001f and \u007f and \u000b end",
        "identity[2]": "é ☃ 𝄞", "identity[3]": "/ {} %s"})",
                                      .settings = R"({"format": 3,
        "identity": "\b\t\n\f\r\"\\", "subformat": "tab\tin a rather long subformat\t\"x\""})"}})),
              "        { \"id/0x0001\" : {\"bitrate\":0,\"channel\":0,\"duration\":\"00:00:00\","
              "\"failcount\":0,\"format\":\"tab\\tin a rather long subformat\\t\\\"x\\\"\","
              "\"framecount\":0,\"framerate\":0,\"identity\":\"\\b\\t\\n\\f\\r\\\"\\\\\","
              "\"identity[0]\":\"\x01\x1f\","
              "\"identity[1]\":\"a long enough one: \x01 and \x1f and \x7f and \x0b end\","
              "\"identity[2]\":\"é ☃ 𝄞\",\"identity[3]\":\"/ {} %s\","
              "\"peers\":0,\"resolution\":\"0x0\"} }\n");
}

TEST(list_streams, many_streams) {
    std::vector<stream> streams;
    std::string expected;
    for (unsigned id = 1; id <= 300; ++id) {
        streams.push_back({.id = std::to_string(id)});
        char label[16];
        std::snprintf(label, sizeof label, "id/0x%04x", id);
        expected += std::string("        { \"") + label +
                    R"(" : {"bitrate":0,"channel":0,"duration":"00:00:00","failcount":0,)"
                    R"("format":"n/a","framecount":0,"framerate":0,"identity":"N/A",)"
                    R"("peers":0,"resolution":"0x0"} })" +
                    (id == 300 ? "\n" : ",\n");
    }
    EXPECT_EQ(summaries(snapshot_of(streams)), expected);
}

}  // namespace
