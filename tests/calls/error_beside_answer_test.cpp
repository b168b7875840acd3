// A service that breaks its word in another way: a query succeeds, and sets its error as well. Some
// of the sections then take the query for failed, and some use the answer.
#include <string>

#include <gtest/gtest.h>

#include "support/calls.h"

namespace {

const std::string snapshot = R"({
    "system": {"caps": {"output": true}},
    "stream": {"debug": {"global.capacity.peak": 5}, "quota": {}, "limit": {},
               "all": [{"id": 1, "info": {}, "settings": {}, "debug": {"global.capacity": 7}}]},
    "channel": {"all": [{"id": 4, "properties": {"key": "input"}, "info": {},
                         "resolutions": {"available": []}}]},
    "input": {"all": [{"id": 1, "info": {}}]},
    "output": {"all": [{"id": 0, "info": {}, "settings": {}}]}
})";

result report_with_error_of(const std::string& query, const std::string& given) {
    return report_calls(snapshot, {given}, {"ORU_STRICT_ERROR=" + query}).ended;
}

TEST(error_beside_answer, where_the_tool_ends) {
    const std::string start = "oru-serverreport-tool: Failed to get ";
    const std::string end = ": an error beside an answer\n";
    EXPECT_EQ(report_with_error_of("oru_stream_get_all", "-l"),
              ended(1, "", start + "all streams" + end));
    EXPECT_EQ(report_with_error_of("oru_stream_get_quota", "-q"),
              ended(1, "", start + "quota" + end));
    EXPECT_EQ(report_with_error_of("oru_stream_get_limit", "-q"),
              ended(1, "", start + "limit" + end));
    EXPECT_EQ(report_with_error_of("oru_output_new", "-o"), ended(1, "", start + "output" + end));
    EXPECT_EQ(report_with_error_of("oru_output_get_settings", "-o"),
              ended(1, "", start + "output settings" + end));
    EXPECT_EQ(report_with_error_of("oru_output_get_info", "-o"),
              ended(1, "", start + "output info" + end));
}

// Not those of a stream list that came with an error.
TEST(error_beside_answer, where_the_figures_in_use_are_left_out) {
    EXPECT_EQ(report_with_error_of("oru_stream_get_all", "-q"),
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

TEST(error_beside_answer, where_the_answer_is_used) {
    EXPECT_EQ(report_with_error_of("oru_stream_get_debug", "-q"),
              ended(0, R"(----- Stream Quotas and Limits -----

{
    "streammaximumquota" : [
        {"buffering":"0","hard":"0","soft":"0"}
    ],

    "streamcurrentquota" : [
        {"hard":"7","soft":"7"}
    ],

    "streammaximumlimits" : [
        {"encode":"0","other":"0"}
    ],

    "streamcurrentlimits" : [
        {"jpeg":"0","motion encoded":"0","other":"0"}
    ]
}

)"));
    EXPECT_EQ(tlm_calls(snapshot, {"-q"}, {"ORU_STRICT_ERROR=oru_stream_get_debug"}).ended,
              ended(0, "MaxBufferBytes=5\nMaxEncodeStreams=0\nMaxRawStreams=0\nVersion=1\n"));
    const std::string output = "----- HDMI output -----\n\n    {\"enabled\":\"No\"}\n\n";
    for (const char* query : {"oru_system_new", "oru_system_get_caps"}) {
        EXPECT_EQ(report_with_error_of(query, "-o"), ended(0, output)) << query;
    }
    for (const char* query : {"oru_channel_get_all", "oru_channel_get_info"}) {
        EXPECT_EQ(report_with_error_of(query, "-c"),
                  ended(0, R"(----- Snapshot of channel settings -----

{
    "channels" : [
        {"id/4":{"crop":"No"}}
    ]
}
)")) << query;
    }
    for (const char* query : {"oru_channel_get_all", "oru_channel_get_resolutions"}) {
        EXPECT_EQ(report_with_error_of(query, "-a"), ended(0, R"(----- Available resolutions -----

{
    "available_resolutions" : [
        {"channel":"4","resolutions":""}
    ]
}
)")) << query;
    }
    for (const char* query : {"oru_channel_get_filtered", "oru_channel_get_info", "oru_input_new",
                              "oru_input_get_info"}) {
        EXPECT_EQ(report_with_error_of(query, "-i"),
                  ended(0, R"(----- Snapshot of input settings -----

{
    "inputs" : [
        {"id/1":{"crop":"No"}}
    ]
}
)")) << query;
    }
}

}  // namespace
