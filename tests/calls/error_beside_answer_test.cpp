// A client library that sets the error of a query although the query succeeds. Some sections then
// treat the query as failed, others use the answer.
#include <string>
#include <utility>

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

result report_with_error_of(const std::string& query, const std::string& section) {
    return report_calls(snapshot, {section}, {"ORU_STRICT_ERROR=" + query}).ended;
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

TEST(error_beside_answer, where_a_list_of_streams_counts_as_empty) {
    EXPECT_EQ(report_with_error_of("oru_stream_get_all", "-q"),
              report_calls(snapshot, {"-q"}, {"ORU_STRICT_NULL=oru_stream_get_all"}).ended);
}

TEST(error_beside_answer, where_the_answer_is_used) {
    for (const auto& [query, section] :
         {std::pair<std::string, std::string>{"oru_stream_get_debug", "-q"},
          {"oru_system_new", "-o"},
          {"oru_system_get_caps", "-o"},
          {"oru_channel_get_all", "-c"},
          {"oru_channel_get_info", "-c"},
          {"oru_channel_get_all", "-a"},
          {"oru_channel_get_resolutions", "-a"},
          {"oru_channel_get_filtered", "-i"},
          {"oru_channel_get_info", "-i"},
          {"oru_input_new", "-i"},
          {"oru_input_get_info", "-i"}}) {
        const result plain = report_calls(snapshot, {section}).ended;
        EXPECT_FALSE(plain.out.contains("Failed")) << plain;
        EXPECT_EQ(report_with_error_of(query, section), plain) << query;
    }
    EXPECT_EQ(tlm_calls(snapshot, {"-q"}, {"ORU_STRICT_ERROR=oru_stream_get_debug"}).ended,
              ended(0, "MaxBufferBytes=5\nMaxEncodeStreams=0\nMaxRawStreams=0\nVersion=1\n"));
}

}  // namespace
