// How the program ends after a tool has ended. Here main is called applet_main, and this test
// replaces the tools.
#include <csignal>
#include <cstring>
#include <stdexcept>

#include <gtest/gtest.h>

#include "serverreport/serverreport_tool.h"
#include "tlm/tlm_tool.h"

int applet_main(int argc, char** argv);

int tlm_tool_main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "throw") == 0) {
        throw 42;
    }
    return 3;
}

int serverreport_tool_main(int, char**) {
    throw std::logic_error("100 % {}");
}

namespace {

// noexcept, so that an unhandled exception ends the process as it does in main.
int run(const char* tool, const char* argument) noexcept {
    char* argv[] = {const_cast<char*>(tool), const_cast<char*>(argument), nullptr};
    return applet_main(2, argv);
}

TEST(dispatch_ends, the_status_is_what_the_tool_returns) {
    EXPECT_EQ(run("oru-tlm-tool", "-q"), 3);
}

TEST(dispatch_ends, a_standard_exception_is_reported_with_status_0) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(run("oru-serverreport-tool", "-q"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "oru-cgi-applet: 100 % {}\n");
}

TEST(dispatch_ends, an_exception_of_another_type_ends_the_process_abnormally) {
    EXPECT_EXIT(run("oru-tlm-tool", "throw"), testing::KilledBySignal(SIGABRT), "");
}

TEST(dispatch_ends, the_number_of_arguments_is_asserted_first) {
    EXPECT_EXIT(applet_main(0, nullptr), testing::KilledBySignal(SIGABRT),
                "int main\\(int, char\\*\\*\\): Assertion `argc > 0' failed");
}

}  // namespace
