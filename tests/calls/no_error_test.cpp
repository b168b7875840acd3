// A service that violates its interface: an operation returns NULL without an error. The message in
// the report is then empty, and a list counts as empty.
#include <string>

#include <gtest/gtest.h>

#include "support/calls.h"

namespace {

const std::string snapshot = R"({
    "system": {"caps": {"output": true}}, "mode": {"info": {}},
    "stream": {"debug": {}, "quota": {}, "limit": {},
               "all": [{"id": 1, "info": {}, "settings": {}, "debug": {}}]},
    "channel": {"info": {"input.count": 1},
                "all": [{"id": 4, "properties": {"key": "input"}, "info": {"crop.possible": true},
                         "crop": [1, 2, 3, 4], "crop_max": [5, 6],
                         "resolutions": {"available": []}}]},
    "input": {"all": [{"id": 1, "info": {"crop.possible": true}, "crop": [1, 2, 3, 4],
                       "resolution_unrotated": {"capture": [1, 2]}}]},
    "output": {"all": [{"id": 0, "info": {}, "settings": {}}]}
})";

result report_without(const std::string& operation, const std::string& section) {
    return report_calls(snapshot, {section}, {"ORU_STRICT_NULL=" + operation}).ended;
}

result tlm_without(const std::string& operation, const std::string& section) {
    return tlm_calls(snapshot, {section}, {"ORU_STRICT_NULL=" + operation}).ended;
}

TEST(no_error, where_the_tool_ends) {
    EXPECT_EQ(report_without("oru_stream_get_quota", "-q"),
              ended(1, "", "oru-serverreport-tool: Failed to get quota: \n"));
    EXPECT_EQ(report_without("oru_stream_get_limit", "-q"),
              ended(1, "", "oru-serverreport-tool: Failed to get limit: \n"));
    EXPECT_EQ(report_without("oru_output_new", "-o"),
              ended(1, "", "oru-serverreport-tool: Failed to get output: \n"));
    EXPECT_EQ(report_without("oru_output_get_settings", "-o"),
              ended(1, "", "oru-serverreport-tool: Failed to get output settings: \n"));
    EXPECT_EQ(report_without("oru_output_get_info", "-o"),
              ended(1, "", "oru-serverreport-tool: Failed to get output info: \n"));
}

TEST(no_error, where_the_section_ends) {
    const std::string channels =
        "----- Snapshot of channel settings -----\n\n{\n    \"channels\" : [\n";
    const std::string resolutions =
        "----- Available resolutions -----\n\n{\n    \"available_resolutions\" : [\n";
    const std::string inputs = "----- Snapshot of input settings -----\n\n{\n    \"inputs\" : [\n";
    EXPECT_EQ(report_without("oru_channel_get_info", "-c"),
              ended(0, channels + "Failed to get channel info: \n"));
    EXPECT_EQ(report_without("oru_channel_get_resolutions", "-a"),
              ended(0, resolutions + "        {\"channel\":\"4\",\nFailed to get resolutions: \n"));
    EXPECT_EQ(report_without("oru_channel_get_info", "-i"),
              ended(0, inputs + "Failed to get channel info: \n"));
    EXPECT_EQ(report_without("oru_input_new", "-i"),
              ended(0, inputs + "Failed to get input 1: \n"));
    EXPECT_EQ(report_without("oru_input_get_info", "-i"),
              ended(0, inputs + "Failed to get input info: \n"));
    EXPECT_EQ(report_without("oru_map_new", "-a"),
              ended(0, resolutions + "Failed to create new OruMap.\n"));
    EXPECT_EQ(report_without("oru_map_new", "-i"), ended(0, "Failed to create new OruMap.\n"));
}

TEST(no_error, where_the_failure_is_not_reported) {
    EXPECT_EQ(report_without("oru_system_new", "-o"), ended(0, ""));
    EXPECT_EQ(report_without("oru_system_get_caps", "-o"), ended(0, ""));
    EXPECT_EQ(tlm_without("oru_stream_get_debug", "-i"), ended(0, ""));
    EXPECT_EQ(tlm_without("oru_map_filter_prefix", "-i"), ended(0, ""));
    EXPECT_EQ(tlm_without("oru_stream_get_debug", "-q"),
              ended(0, "MaxBufferBytes=-1\nMaxEncodeStreams=-1\nMaxRawStreams=-1\nVersion=1\n"));
    EXPECT_EQ(tlm_without("oru_mode_new", "-s"), tlm_without("oru_mode_get_info", "-s"));
    EXPECT_EQ(report_without("oru_stream_get_all", "-q"),
              report_without("oru_stream_get_debug", "-q"));
}

TEST(no_error, where_a_list_is_empty) {
    EXPECT_EQ(report_without("oru_channel_get_all", "-c"), ended(0, "No channels.\n"));
    EXPECT_EQ(report_without("oru_channel_get_all", "-a"), ended(0, "No channels.\n"));
    EXPECT_EQ(report_without("oru_channel_get_filtered", "-i"), ended(0, "No inputs.\n"));
    EXPECT_EQ(report_without("oru_stream_get_all", "-l"),
              report(R"({"stream": {"all": []}})", {"-l"}));
}

}  // namespace
