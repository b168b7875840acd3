// The calls of the section on inputs.
#include <string>

#include <gtest/gtest.h>

#include "support/calls.h"

namespace {

// A run on two channels of inputs and one other channel.
calls calls_of(const std::string& first_info, const std::string& inputs) {
    return report_calls(R"({"channel": {"all": [
        {"id": 4, "properties": {"key": "input"})" +
                            first_info + R"(},
        {"id": 5, "properties": {"key": "input"}, "info": {"type.id": 2}},
        {"id": 6, "properties": {"key": "view"}}]},
        "input": {"all": [)" +
                            inputs + "]}}",
                        {"--list-inputs"});
}

const std::string first_calls = R"(g_option_context_new
oru_map_new() -> new map
oru_map_set_string(new map, "key", "input")
oru_channel_get_filtered(new map, &error) -> channel 4, channel 5
release new map
g_print("----- Snapshot of input settings -----\n\n")
)";
// The releases of a section that ends at its first channel.
const std::string released_early = R"(g_list_free_full(list of oru_channel_get_filtered)
release channel 5
g_option_context_free
)";

TEST(calls_of_list_inputs, of_inputs_with_and_without_crop) {
    const calls made = calls_of(R"(, "info": {})", R"(
            {"id": 1, "info": {"crop.possible": true}, "crop": [1, 2, 3, 4]},
            {"id": 2, "info": {}})");
    EXPECT_EQ(made.queries,
              first_calls + R"(oru_channel_get_info(channel 4, &error) -> channel 4 info
oru_input_new(1, &error) -> input 1
oru_input_get_info(input 1, &error) -> input 1 info
oru_input_get_crop(input 1, &0, &0, &0, &0, NULL) -> TRUE
release input 1 info
release input 1
release channel 4 info
release channel 4
oru_channel_get_info(channel 5, &error) -> channel 5 info
oru_input_new(2, &error) -> input 2
oru_input_get_info(input 2, &error) -> input 2 info
release input 2 info
release input 2
release channel 5 info
release channel 5
g_print("\n")
g_list_free_full(list of oru_channel_get_filtered)
g_option_context_free
)");
    EXPECT_EQ(made.reads, lines_of(R"(oru_map_get_uint32(channel 4 info, "type.id", 1)
oru_map_get_uint32(channel 5 info, "type.id", 1)
oru_map_get_boolean(input 1 info, "crop.possible", FALSE)
oru_map_get_boolean(input 2 info, "crop.possible", FALSE)
oru_map_get_pair32u(input 1 info, "crop.max", 18446744073709551615)
)"));
    EXPECT_EQ(made.classes, "");
}

TEST(calls_of_list_inputs, of_an_input_without_a_crop_rectangle) {
    const calls made = calls_of(R"(, "info": {})", R"({"id": 1, "info": {"crop.possible": true}},
                                                      {"id": 2, "info": {}})");
    EXPECT_EQ(made.queries,
              first_calls + R"(oru_channel_get_info(channel 4, &error) -> channel 4 info
oru_input_new(1, &error) -> input 1
oru_input_get_info(input 1, &error) -> input 1 info
oru_input_get_crop(input 1, &0, &0, &0, &0, NULL) -> failed
release input 1 info
release input 1
release channel 4 info
release channel 4
oru_channel_get_info(channel 5, &error) -> channel 5 info
oru_input_new(2, &error) -> input 2
oru_input_get_info(input 2, &error) -> input 2 info
release input 2 info
release input 2
release channel 5 info
release channel 5
g_print("\n")
g_list_free_full(list of oru_channel_get_filtered)
g_option_context_free
)");
}

TEST(calls_of_list_inputs, of_a_channel_without_info) {
    EXPECT_EQ(calls_of(R"(, "info": {"$error": "x"})", "").queries,
              first_calls + R"(oru_channel_get_info(channel 4, &error) -> failed
g_print("Failed to get channel info: x\n")
g_error_free(error of oru_channel_get_info)
release channel 4
)" + released_early);
}

TEST(calls_of_list_inputs, of_an_input_that_cannot_be_opened) {
    EXPECT_EQ(calls_of(R"(, "info": {"type.id": 9})", R"({"id": 9, "$error": "x"})").queries,
              first_calls + R"(oru_channel_get_info(channel 4, &error) -> channel 4 info
oru_input_new(9, &error) -> failed
g_print("Failed to get input 9: x\n")
release channel 4 info
g_error_free(error of oru_input_new)
release channel 4
)" + released_early);
}

TEST(calls_of_list_inputs, of_an_input_without_info) {
    EXPECT_EQ(calls_of(R"(, "info": {})", R"({"id": 1, "info": {"$error": "x"}})").queries,
              first_calls + R"(oru_channel_get_info(channel 4, &error) -> channel 4 info
oru_input_new(1, &error) -> input 1
oru_input_get_info(input 1, &error) -> failed
g_print("Failed to get input info: x\n")
release input 1
release channel 4 info
g_error_free(error of oru_input_get_info)
release channel 4
)" + released_early);
}

TEST(calls_of_list_inputs, without_a_filter) {
    EXPECT_EQ(report_calls(R"({"channel": {"all": []}})", {"-i"}, {"ORU_STRICT_NULL=oru_map_new"})
                  .queries,
              R"(g_option_context_new
oru_map_new() -> NULL
g_print("Failed to create new OruMap.\n")
g_option_context_free
)");
}

TEST(calls_of_list_inputs, without_inputs) {
    EXPECT_EQ(report_calls(R"({"channel": {"all": []}})", {"-i"}).queries, R"(g_option_context_new
oru_map_new() -> new map
oru_map_set_string(new map, "key", "input")
oru_channel_get_filtered(new map, &error) -> an empty list
g_print("No inputs.\n")
release new map
g_option_context_free
)");
    EXPECT_EQ(report_calls(R"({"channel": {"filtered": {"$error": "x"}}})", {"-i"}).queries,
              R"(g_option_context_new
oru_map_new() -> new map
oru_map_set_string(new map, "key", "input")
oru_channel_get_filtered(new map, &error) -> failed
g_print("Failed to get inputs: x\n")
g_error_free(error of oru_channel_get_filtered)
release new map
g_option_context_free
)");
}

}  // namespace
