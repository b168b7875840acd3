// The calls of the system information.
#include <string>

#include <gtest/gtest.h>

#include "support/calls.h"

namespace {

const std::string inputs = R"("input": {"all": [
    {"id": 1, "resolution_unrotated": {"capture": [1920, 1080]}},
    {"id": 3, "resolution_unrotated": {"capture": {"$error": "x"}}}]})";

calls calls_with(const std::string& members) {
    return tlm_calls("{" + members + "}", {"--system-info"});
}

const std::string mode_fails =
    "oru_mode_new(NULL) -> failed\n"
    "g_option_context_free\n";

TEST(calls_of_system_info, with_everything) {
    const calls made = calls_with(R"("channel": {"info": {"input.count": 1}}, )" + inputs +
                                  R"(, "mode": {"info": {"view": 1, "a.b": 2, "c": 3}})");
    EXPECT_EQ(made.queries, R"(g_option_context_new
oru_channel_get_info(NULL, NULL) -> channel info
oru_input_new(1, NULL) -> input 1
oru_input_get_resolution_unrotated(input 1, "capture", &0, &0, NULL) -> TRUE
release input 1
release channel info
oru_mode_new(NULL) -> mode
oru_mode_get_info(mode, NULL) -> mode info
oru_map_remove(mode info, "view")
oru_map_remove_prefix(mode info, "capture")
oru_map_remove_prefix(mode info, "available")
release mode info
release mode
g_option_context_free
)");
    // The values are copied as native values, without a getter.
    EXPECT_EQ(made.reads, lines_of(R"(oru_map_get_uint32(channel info, "input.count", 1)
oru_map_native_ref(mode info)
find(mode info, "a.b")
find(mode info, "c")
)"));
}

TEST(calls_of_system_info, with_inputs_that_fail) {
    const calls made = calls_with(R"("channel": {"info": {"input.count": 3}}, )" + inputs);
    EXPECT_EQ(made.queries, R"(g_option_context_new
oru_channel_get_info(NULL, NULL) -> channel info
oru_input_new(1, NULL) -> input 1
oru_input_get_resolution_unrotated(input 1, "capture", &0, &0, NULL) -> TRUE
release input 1
oru_input_new(2, NULL) -> failed
oru_input_new(3, NULL) -> input 3
oru_input_get_resolution_unrotated(input 3, "capture", &0, &0, NULL) -> failed
release input 3
release channel info
)" + mode_fails);
    EXPECT_EQ(made.reads, lines_of(R"(oru_map_get_uint32(channel info, "input.count", 1))"));
}

TEST(calls_of_system_info, without_inputs) {
    EXPECT_EQ(calls_with(R"("channel": {"info": {"input.count": 0}})").queries,
              "g_option_context_new\n"
              "oru_channel_get_info(NULL, NULL) -> channel info\n"
              "release channel info\n" +
                  mode_fails);
}

TEST(calls_of_system_info, without_channel_information) {
    EXPECT_EQ(calls_with("").queries,
              "g_option_context_new\n"
              "oru_channel_get_info(NULL, NULL) -> failed\n" +
                  mode_fails);
}

TEST(calls_of_system_info, without_mode_information) {
    EXPECT_EQ(calls_with(R"("mode": {})").queries, R"(g_option_context_new
oru_channel_get_info(NULL, NULL) -> failed
oru_mode_new(NULL) -> mode
oru_mode_get_info(mode, NULL) -> failed
release mode
g_option_context_free
)");
}

// The exception still releases every object.
TEST(calls_of_system_info, with_a_value_that_cannot_be_written) {
    const calls made = calls_with(R"("mode": {"info": {"a": {"double": "nan"}}})");
    EXPECT_EQ(made.ended.status, 1);
    EXPECT_EQ(made.queries, R"(g_option_context_new
oru_channel_get_info(NULL, NULL) -> failed
oru_mode_new(NULL) -> mode
oru_mode_get_info(mode, NULL) -> mode info
oru_map_remove(mode info, "view")
oru_map_remove_prefix(mode info, "capture")
oru_map_remove_prefix(mode info, "available")
release mode info
release mode
g_option_context_free
)");
}

}  // namespace
