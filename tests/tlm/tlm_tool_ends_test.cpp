// What the feeder tool gives back on the ways out that end the process: its releases are seen by
// standing in for GLib's, its sections are this test's own.
#include <dlfcn.h>

#include <csignal>
#include <cstdio>

#include <glib.h>
#include <gtest/gtest.h>

#include "tlm/identity_info.h"
#include "tlm/stream_max_stats.h"
#include "tlm/system_info.h"
#include "tlm/tlm_tool.h"

void print_stream_max_stats() {
    throw 42;
}

void print_system_info() {}

void print_identity_info() {}

// These count for GLib's own calls too, which make no options' context and free no such error.
extern "C" void g_option_context_free(GOptionContext* context) {
    std::fputs("context released; ", stderr);
    reinterpret_cast<void (*)(GOptionContext*)>(dlsym(RTLD_NEXT, "g_option_context_free"))(context);
}

extern "C" void g_error_free(GError* error) {
    std::fprintf(stderr, "error released; ");
    reinterpret_cast<void (*)(GError*)>(dlsym(RTLD_NEXT, "g_error_free"))(error);
}

namespace {

// Nobody handles what leaves the tool.
void run(const char* argument) noexcept {
    char name[] = "oru-tlm-tool";
    char* argv[] = {name, const_cast<char*>(argument), nullptr};
    tlm_tool_main(2, argv);
}

TEST(tlm_tool_ends, a_thrown_object_of_another_kind_leaves_nothing_behind) {
    EXPECT_EXIT(run("-q"), testing::KilledBySignal(SIGABRT), "^context released; ");
}

TEST(tlm_tool_ends, a_parse_error_leaves_nothing_behind) {
    EXPECT_EXIT(run("--foo"), testing::ExitedWithCode(1),
                "^context released; error released; "
                "oru-tlm-tool: Option parsing failed: Unknown option --foo\n$");
}

TEST(tlm_tool_ends, a_value_of_a_switch_leaves_nothing_behind) {
    EXPECT_EXIT(run("--system-info=no"), testing::ExitedWithCode(1),
                "^context released; error released; "
                "oru-tlm-tool: Option parsing failed: Option --system-info takes no value\n$");
}

}  // namespace
