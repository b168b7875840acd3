// The calls of the section on quotas and limits.
#include <string>

#include <gtest/gtest.h>

#include "support/calls.h"

namespace {

calls calls_of(const std::string& all) {
    return report_calls(
        R"({"stream": {"quota": {"global.hard.limit": 1}, "limit": {})" + all + "}}",
        {"--stream-quotas"});
}

const std::string asked_first = R"(g_option_context_new
oru_stream_get_quota(&error) -> stream quota
oru_stream_get_limit(&error) -> stream limit
)";
const std::string frame = R"(g_print("----- Stream Quotas and Limits -----\n\n")
g_print("\n")
)";
const std::string released_last = R"(release stream limit
release stream quota
g_option_context_free
)";
const std::string reads_of_both = R"(oru_map_get_uint32(stream quota, "global.hard.limit", 0)
oru_map_get_uint32(stream quota, "global.soft.limit", 0)
oru_map_get_uint32(stream quota, "global.buffering.limit", 0)
oru_map_get_uint32(stream limit, "global.max.streams.limit.encoded", 0)
)";
std::string reads_of_figures(const std::string& debug) {
    std::string reads;
    for (const char* key : {"global.capacity", "global.encoded.peers", "global.encoded.jpeg.peers",
                            "global.raw.peers"}) {
        reads += "oru_map_get_uint32(" + debug + ", \"" + key + "\", 0)\n";
    }
    return reads;
}

TEST(calls_of_stream_quotas, with_an_encoded_stream) {
    const calls made = calls_of(R"(, "all": [
        {"id": 4, "settings": {"format": 3}, "debug": {}}, {"id": 5},
        {"id": 6, "settings": {"format": 11}, "debug": {}},
        {"id": 7, "settings": {"format": 0}, "debug": {}}])");
    EXPECT_EQ(made.queries,
              asked_first +
                  R"(oru_stream_get_all(&error) -> stream 4, stream 5, stream 6, stream 7
oru_stream_get_settings(stream 4, NULL) -> stream 4 settings
release stream 4 settings
oru_stream_get_settings(stream 5, NULL) -> failed
oru_stream_get_settings(stream 6, NULL) -> stream 6 settings
release stream 6 settings
oru_stream_get_debug(stream 6, &error) -> stream 6 debug
g_list_free_full(list of oru_stream_get_all)
release stream 4
release stream 5
release stream 6
release stream 7
)" + frame + "release stream 6 debug\n" +
                  released_last);
    EXPECT_EQ(made.reads, lines_of(reads_of_both + reads_of_figures("stream 6 debug") +
                                   R"(oru_map_get_uint32(stream 4 settings, "format", 4294967295)
oru_map_get_uint32(stream 6 settings, "format", 4294967295)
)"));
    EXPECT_EQ(made.classes, "");
}

TEST(calls_of_stream_quotas, with_an_encoded_stream_that_does_not_answer) {
    const calls made = calls_of(R"(, "all": [{"id": 4, "debug": {}},
                                             {"id": 5, "settings": {"format": 1}}])");
    EXPECT_EQ(made.queries, asked_first + R"(oru_stream_get_all(&error) -> stream 4, stream 5
oru_stream_get_settings(stream 4, NULL) -> failed
oru_stream_get_settings(stream 5, NULL) -> stream 5 settings
release stream 5 settings
oru_stream_get_debug(stream 5, &error) -> failed
g_error_free(error of oru_stream_get_debug)
oru_stream_get_debug(stream 4, &error) -> stream 4 debug
g_list_free_full(list of oru_stream_get_all)
release stream 4
release stream 5
)" + frame + "release stream 4 debug\n" +
                                released_last);
}

TEST(calls_of_stream_quotas, the_first_stream_is_queried_again_if_it_is_the_encoded_one) {
    EXPECT_EQ(calls_of(R"(, "all": [{"id": 4, "settings": {"format": 0}}, {"id": 5}])").queries,
              asked_first + R"(oru_stream_get_all(&error) -> stream 4, stream 5
oru_stream_get_settings(stream 4, NULL) -> stream 4 settings
release stream 4 settings
oru_stream_get_debug(stream 4, &error) -> failed
g_error_free(error of oru_stream_get_debug)
oru_stream_get_debug(stream 4, &error) -> failed
g_error_free(error of oru_stream_get_debug#2)
g_list_free_full(list of oru_stream_get_all)
release stream 4
release stream 5
)" + frame + released_last);
}

TEST(calls_of_stream_quotas, with_other_streams_alone) {
    EXPECT_EQ(calls_of(R"(, "all": [{"id": 4, "settings": {"format": 3}}])").queries,
              asked_first + R"(oru_stream_get_all(&error) -> stream 4
oru_stream_get_settings(stream 4, NULL) -> stream 4 settings
release stream 4 settings
oru_stream_get_debug(stream 4, &error) -> failed
g_error_free(error of oru_stream_get_debug)
g_list_free_full(list of oru_stream_get_all)
release stream 4
)" + frame + released_last);
}

TEST(calls_of_stream_quotas, without_streams) {
    const calls made = calls_of(R"(, "all": [])");
    EXPECT_EQ(made.queries, asked_first + "oru_stream_get_all(&error) -> an empty list\n" + frame +
                                released_last);
    EXPECT_EQ(made.reads, lines_of(reads_of_both));
    EXPECT_EQ(calls_of("").queries, asked_first +
                                        "oru_stream_get_all(&error) -> failed\n"
                                        "g_error_free(error of oru_stream_get_all)\n" +
                                        frame + released_last);
}

TEST(calls_of_stream_quotas, without_a_quota_or_a_limit) {
    calls made = report_calls("{}", {"-q"});
    EXPECT_EQ(made.ended.status, 1);
    EXPECT_EQ(made.queries,
              "g_option_context_new\n"
              "oru_stream_get_quota(&error) -> failed\n"
              "never released: error of oru_stream_get_quota\n");
    made = report_calls(R"({"stream": {"quota": {}}})", {"-q"});
    EXPECT_EQ(made.ended.status, 1);
    EXPECT_EQ(made.queries,
              "g_option_context_new\n"
              "oru_stream_get_quota(&error) -> stream quota\n"
              "oru_stream_get_limit(&error) -> failed\n"
              "never released: stream quota\n"
              "never released: error of oru_stream_get_limit\n");
}

}  // namespace
