// The calls of the section on channels.
#include <string>

#include <gtest/gtest.h>

#include "support/calls.h"

namespace {

calls calls_of(const std::string& all) {
    return report_calls(R"({"channel": {"all": )" + all + "}}", {"--list-channels"});
}

const std::string header = R"(g_print("----- Snapshot of channel settings -----\n\n")
)";

TEST(calls_of_list_channels, of_channels_with_and_without_crop) {
    const calls made = calls_of(R"([
        {"id": 4, "info": {"crop.possible": true}, "crop": [1, 2, 3, 4], "crop_max": [5, 6]},
        {"id": 5, "info": {}},
        {"id": 6, "info": {"crop.possible": true}, "crop": [1, 2, 3, 4]},
        {"id": 7, "info": {"crop.possible": true}, "crop_max": [5, 6]}])");
    EXPECT_EQ(made.queries, R"(g_option_context_new
oru_channel_get_all(&error) -> channel 4, channel 5, channel 6, channel 7
)" + header + R"(oru_channel_get_info(channel 4, &error) -> channel 4 info
oru_channel_get_id(channel 4) -> 4
oru_channel_get_crop(channel 4, &0, &0, &0, &0, NULL) -> TRUE
oru_channel_get_crop_max(channel 4, &0, &0, NULL) -> TRUE
release channel 4 info
oru_channel_get_info(channel 5, &error) -> channel 5 info
oru_channel_get_id(channel 5) -> 5
release channel 5 info
oru_channel_get_info(channel 6, &error) -> channel 6 info
oru_channel_get_id(channel 6) -> 6
oru_channel_get_crop(channel 6, &0, &0, &0, &0, NULL) -> TRUE
oru_channel_get_crop_max(channel 6, &0, &0, NULL) -> failed
release channel 6 info
oru_channel_get_info(channel 7, &error) -> channel 7 info
oru_channel_get_id(channel 7) -> 7
oru_channel_get_crop(channel 7, &0, &0, &0, &0, NULL) -> failed
release channel 7 info
g_print("\n")
g_list_free_full(list of oru_channel_get_all)
release channel 4
release channel 5
release channel 6
release channel 7
g_option_context_free
)");
    EXPECT_EQ(made.reads, lines_of(R"(oru_map_get_boolean(channel 4 info, "crop.possible", FALSE)
oru_map_get_boolean(channel 5 info, "crop.possible", FALSE)
oru_map_get_boolean(channel 6 info, "crop.possible", FALSE)
oru_map_get_boolean(channel 7 info, "crop.possible", FALSE)
)"));
    EXPECT_EQ(made.classes, "");
}

TEST(calls_of_list_channels, of_a_channel_without_info) {
    EXPECT_EQ(calls_of(R"([{"id": 4, "info": {"$error": "x"}}, {"id": 5, "info": {}}])").queries,
              R"(g_option_context_new
oru_channel_get_all(&error) -> channel 4, channel 5
)" + header + R"(oru_channel_get_info(channel 4, &error) -> failed
g_print("Failed to get channel info: x\n")
g_error_free(error of oru_channel_get_info)
g_list_free_full(list of oru_channel_get_all)
release channel 4
release channel 5
g_option_context_free
)");
}

TEST(calls_of_list_channels, without_channels) {
    EXPECT_EQ(calls_of("[]").queries, R"(g_option_context_new
oru_channel_get_all(&error) -> an empty list
g_print("No channels.\n")
g_option_context_free
)");
    EXPECT_EQ(calls_of(R"({"$error": "x"})").queries, R"(g_option_context_new
oru_channel_get_all(&error) -> failed
g_print("Failed to get all channels: x\n")
g_error_free(error of oru_channel_get_all)
g_option_context_free
)");
}

}  // namespace
