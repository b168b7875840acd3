// The calls of runs without a section, and the releases when the command line ends the run.
#include <string>

#include <gtest/gtest.h>

#include "support/calls.h"

namespace {

const std::string snapshot = R"({"stream": {"debug": {}}})";

TEST(calls_of_command_line, without_a_section) {
    for (const calls& made : {tlm_calls(snapshot, {}), report_calls(snapshot, {}),
                              report_calls(snapshot, {"--list-resolutions"})}) {
        EXPECT_EQ(made.queries, "g_option_context_new\ng_option_context_free\n");
        EXPECT_EQ(made.reads, lines_of(""));
    }
}

TEST(calls_of_command_line, the_context_gets_its_texts_in_order_and_no_translation_domain) {
    for (const calls& made : {tlm_calls(snapshot, {}), report_calls(snapshot, {})}) {
        EXPECT_EQ(made.command_line,
                  "g_option_context_set_summary\n"
                  "g_option_context_set_description\n"
                  "g_option_context_add_main_entries(NULL)\n");
    }
}

TEST(calls_of_command_line, with_an_unknown_switch) {
    EXPECT_EQ(tlm_calls(snapshot, {"--foo"}).queries,
              "g_option_context_new\n"
              "g_error_free(another error)\n"
              "g_option_context_free\n");
    EXPECT_EQ(report_calls(snapshot, {"--foo"}).queries, "g_option_context_new\n");
}

// The sections make their calls one after the other.
TEST(calls_of_command_line, of_all_sections_of_the_feeder_tool) {
    EXPECT_EQ(tlm_calls("{}", {"-isq"}).queries, R"(g_option_context_new
oru_stream_get_debug(NULL, &error) -> failed
g_error_free(error of oru_stream_get_debug)
oru_channel_get_info(NULL, NULL) -> failed
oru_mode_new(NULL) -> failed
oru_stream_get_debug(NULL, NULL) -> failed
g_option_context_free
)");
}

}  // namespace
