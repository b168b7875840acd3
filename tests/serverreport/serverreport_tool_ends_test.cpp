// How the server-report tool ends in cases that a run of the program cannot show.
#include <gtest/gtest.h>

#include "serverreport/serverreport_tool.h"
#include "support/option_context.h"

namespace {

TEST(serverreport_tool_ends, without_arguments) {
    EXPECT_EXIT(serverreport_tool_main(1, nullptr), testing::ExitedWithCode(1), "^$");
}

TEST(serverreport_tool_ends, without_an_option_context) {
    char name[] = "oru-serverreport-tool";
    char* argv[] = {name, nullptr};
    option_context_fails = true;
    EXPECT_EXIT(serverreport_tool_main(1, argv), testing::ExitedWithCode(1),
                "^oru-serverreport-tool: Failed to create option context.$");
    option_context_fails = false;
}

// The exits with status 1 release nothing.
TEST(serverreport_tool_ends, a_parse_error_is_not_released) {
    char name[] = "oru-serverreport-tool";
    char unknown[] = "--foo";
    char* argv[] = {name, unknown, nullptr};
    EXPECT_EXIT(serverreport_tool_main(2, argv), testing::ExitedWithCode(1),
                "^oru-serverreport-tool: Failed t parse options: Unknown option --foo.$");
}

}  // namespace
