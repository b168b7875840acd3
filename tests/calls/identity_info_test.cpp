// The calls of the identity report.
#include <string>

#include <gtest/gtest.h>

#include "support/calls.h"

namespace {

calls calls_with(const std::string& debug) {
    return tlm_calls(R"({"stream": {"debug": )" + debug + "}}", {"--identity-info"});
}

TEST(calls_of_identity_info, with_identities) {
    const calls made = calls_with(R"({"identity.b": 1, "identity.a.x": 2, "other": 3})");
    EXPECT_EQ(made.queries,
              "g_option_context_new\n"
              "oru_stream_get_debug(NULL, NULL) -> stream debug\n"
              "oru_map_filter_prefix(stream debug, \"identity.\") -> part of stream debug\n"
              "release part of stream debug\n"
              "release stream debug\n"
              "g_option_context_free\n");
    EXPECT_EQ(made.reads, lines_of(R"(oru_map_empty(part of stream debug)
oru_map_native_ref(part of stream debug)
oru_map_get_uint32(part of stream debug, "identity.a.x", 0)
oru_map_get_uint32(part of stream debug, "identity.b", 0)
)"));
}

TEST(calls_of_identity_info, without_identities) {
    const calls made = calls_with(R"({"identity": 1})");
    EXPECT_EQ(made.queries,
              "g_option_context_new\n"
              "oru_stream_get_debug(NULL, NULL) -> stream debug\n"
              "oru_map_filter_prefix(stream debug, \"identity.\") -> part of stream debug\n"
              "release part of stream debug\n"
              "release stream debug\n"
              "g_option_context_free\n");
    EXPECT_EQ(made.reads, lines_of("oru_map_empty(part of stream debug)\n"));
}

TEST(calls_of_identity_info, without_a_filtered_map) {
    EXPECT_EQ(tlm_calls(R"({"stream": {"debug": {"identity.a": 1}}})", {"-i"},
                        {"ORU_STRICT_NULL=oru_map_filter_prefix"})
                  .queries,
              "g_option_context_new\n"
              "oru_stream_get_debug(NULL, NULL) -> stream debug\n"
              "oru_map_filter_prefix(stream debug, \"identity.\") -> NULL\n"
              "release stream debug\n"
              "g_option_context_free\n");
}

TEST(calls_of_identity_info, without_a_debug_map) {
    const calls made = calls_with(R"({"$error": "x"})");
    EXPECT_EQ(made.queries,
              "g_option_context_new\n"
              "oru_stream_get_debug(NULL, NULL) -> failed\n"
              "g_option_context_free\n");
    EXPECT_EQ(made.reads, lines_of(""));
}

}  // namespace
