// The calls of the section on available resolutions.
#include <string>

#include <gtest/gtest.h>

#include "support/calls.h"

namespace {

const std::string header = R"(g_print("----- Available resolutions -----\n\n")
)";

TEST(calls_of_available_resolutions, of_two_channels) {
    const calls made = report_calls(R"({"channel": {"all": [
        {"id": 4, "resolutions": {"available": [[1, 2], [3, 4]]}},
        {"id": 5, "resolutions": {"available": []}}]}})",
                                    {"--list-available-resolutions"});
    EXPECT_EQ(made.queries, R"(g_option_context_new
oru_channel_get_all(&error) -> channel 4, channel 5
)" + header + R"(oru_map_new() -> new map
oru_map_set_string(new map, "select", "available")
oru_channel_get_id(channel 4) -> 4
oru_channel_get_resolutions(channel 4, new map, &error) -> channel 4 resolutions
g_free(channel 4 resolutions)
release new map
oru_map_new() -> new map#2
oru_map_set_string(new map#2, "select", "available")
oru_channel_get_id(channel 5) -> 5
oru_channel_get_resolutions(channel 5, new map#2, &error) -> channel 5 resolutions
g_free(channel 5 resolutions)
release new map#2
g_print("\n")
g_list_free_full(list of oru_channel_get_all)
release channel 4
release channel 5
g_option_context_free
)");
    EXPECT_EQ(made.reads, lines_of(""));
    EXPECT_EQ(made.classes, "");
}

TEST(calls_of_available_resolutions, the_block_is_freed_before_its_text_is_closed) {
    EXPECT_EQ(report_calls(R"({"channel": {"all": [
        {"id": 4, "resolutions": {"available": [[1, 2], [3, 4]]}},
        {"id": 5, "resolutions": {"available": []}}]}})",
                           {"--list-available-resolutions"})
                  .steps,
              R"(g_option_context_new
oru_channel_get_all(&error) -> channel 4, channel 5
print("----- Available resolutions -----\n\n{\n    \"available_resolutions\" : [\n")
oru_map_new() -> new map
oru_map_set_string(new map, "select", "available")
oru_channel_get_id(channel 4) -> 4
print("        {\"channel\":\"4\",")
oru_channel_get_resolutions(channel 4, new map, &error) -> channel 4 resolutions
print("\"resolutions\":\"1x2,3x4")
g_free(channel 4 resolutions)
print("\"},\n")
release new map
oru_map_new() -> new map#2
oru_map_set_string(new map#2, "select", "available")
oru_channel_get_id(channel 5) -> 5
print("        {\"channel\":\"5\",")
oru_channel_get_resolutions(channel 5, new map#2, &error) -> channel 5 resolutions
print("\"resolutions\":\"")
g_free(channel 5 resolutions)
print("\"}\n")
release new map#2
print("    ]\n}\n")
g_list_free_full(list of oru_channel_get_all)
release channel 4
release channel 5
g_option_context_free
)");
}

TEST(calls_of_available_resolutions, of_a_channel_that_does_not_answer) {
    EXPECT_EQ(report_calls(R"({"channel": {"all": [
        {"id": 4, "resolutions": {"available": {"$error": "x"}}},
        {"id": 5, "resolutions": {"available": []}}]}})",
                           {"-a"})
                  .queries,
              R"(g_option_context_new
oru_channel_get_all(&error) -> channel 4, channel 5
)" + header + R"(oru_map_new() -> new map
oru_map_set_string(new map, "select", "available")
oru_channel_get_id(channel 4) -> 4
oru_channel_get_resolutions(channel 4, new map, &error) -> failed
g_print("\nFailed to get resolutions: x\n")
g_error_free(error of oru_channel_get_resolutions)
release new map
g_list_free_full(list of oru_channel_get_all)
release channel 4
release channel 5
g_option_context_free
)");
}

TEST(calls_of_available_resolutions, without_a_filter) {
    const calls made = report_calls(R"({"channel": {"all": [{"id": 4}]}})", {"-a"},
                                    {"ORU_STRICT_NULL=oru_map_new"});
    EXPECT_EQ(made.ended.status, 0);
    EXPECT_EQ(made.queries, R"(g_option_context_new
oru_channel_get_all(&error) -> channel 4
)" + header + R"(oru_map_new() -> NULL
g_print("Failed to create new OruMap.\n")
g_list_free_full(list of oru_channel_get_all)
release channel 4
g_option_context_free
)");
}

TEST(calls_of_available_resolutions, without_channels) {
    EXPECT_EQ(report_calls(R"({"channel": {"all": []}})", {"-a"}).queries, R"(g_option_context_new
oru_channel_get_all(&error) -> an empty list
g_print("No channels.\n")
g_option_context_free
)");
    EXPECT_EQ(report_calls(R"({"channel": {"all": {"$error": "x"}}})", {"-a"}).queries,
              R"(g_option_context_new
oru_channel_get_all(&error) -> failed
g_print("Failed to get all channels: x\n")
g_error_free(error of oru_channel_get_all)
g_option_context_free
)");
}

}  // namespace
