// How the feeder tool ends in cases that a run of the program cannot show, and what it releases
// then. This test replaces its sections.
#include <csignal>
#include <new>

#include <gtest/gtest.h>

#include "support/option_context.h"
#include "tlm/sections.h"
#include "tlm/tlm_tool.h"

void print_stream_max_stats() {
    throw 42;
}

void print_system_info() {
    throw std::bad_alloc();
}

void print_identity_info() {}

namespace {

// noexcept, so that an exception that leaves the tool ends the process.
void run(const char* argument) noexcept {
    char name[] = "oru-tlm-tool";
    char* argv[] = {name, const_cast<char*>(argument), nullptr};
    tlm_tool_main(2, argv);
}

TEST(tlm_tool_ends, a_thrown_object_of_another_kind_leaves_nothing_behind) {
    EXPECT_EXIT(run("-q"), testing::KilledBySignal(SIGABRT), "^context released; ");
}

TEST(tlm_tool_ends, a_standard_exception_of_any_type_is_reported) {
    EXPECT_EXIT(run("-s"), testing::ExitedWithCode(1),
                "^context released; oru-tlm-tool: Exception: std::bad_alloc\n$");
}

TEST(tlm_tool_ends, a_parse_error_leaves_nothing_behind) {
    EXPECT_EXIT(run("--foo"), testing::ExitedWithCode(1),
                "^error released; context released; "
                "oru-tlm-tool: Option parsing failed: Unknown option --foo\n$");
}

TEST(tlm_tool_ends, a_value_of_a_switch_leaves_nothing_behind) {
    EXPECT_EXIT(run("--system-info=no"), testing::ExitedWithCode(1),
                "^error released; context released; "
                "oru-tlm-tool: Option parsing failed: Option --system-info takes no value\n$");
}

TEST(tlm_tool_ends, without_an_option_context) {
    option_context_fails = true;
    EXPECT_EXIT(run("-q"), testing::ExitedWithCode(1),
                "^oru-tlm-tool: Failed creating option context\n$");
    option_context_fails = false;
}

}  // namespace
