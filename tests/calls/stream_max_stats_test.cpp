// The calls of the stream maximum statistics.
#include <gtest/gtest.h>

#include "support/calls.h"

namespace {

TEST(calls_of_stream_max_stats, with_a_debug_map) {
    const calls made =
        tlm_calls(R"({"stream": {"debug": {"global.capacity.peak": 5}}})", {"--stream-max-stats"});
    EXPECT_EQ(made.queries,
              "g_option_context_new\n"
              "oru_stream_get_debug(NULL, &error) -> stream debug\n"
              "release stream debug\n"
              "g_option_context_free\n");
    EXPECT_EQ(made.reads, lines_of(R"(oru_map_get_uint32(stream debug, "global.capacity.peak", 0)
oru_map_get_uint32(stream debug, "global.encoded.peers.peak", 0)
oru_map_get_uint32(stream debug, "global.raw.peers.peak", 0)
)"));
    EXPECT_EQ(made.classes, "");
}

TEST(calls_of_stream_max_stats, without_one) {
    const calls made =
        tlm_calls(R"({"stream": {"debug": {"$error": "x"}}})", {"--stream-max-stats"});
    EXPECT_EQ(made.queries,
              "g_option_context_new\n"
              "oru_stream_get_debug(NULL, &error) -> failed\n"
              "g_error_free(error of oru_stream_get_debug)\n"
              "g_option_context_free\n");
    EXPECT_EQ(made.reads, lines_of(""));
}

}  // namespace
