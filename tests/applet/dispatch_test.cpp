// Which tool runs under which name, and how the program ends if no tool runs.
#include <csignal>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/run.h"
#include "support/temp_directory.h"
#include "support/tools.h"

namespace {

const std::string refusal = "oru-cgi-applet: Invoke 'oru-tlm-tool' or 'oru-serverreport-tool'!\n";

// Without a service, but with a record of earlier assertions, each of the two tools prints
// something different.
result run_as(const std::string& name, const std::vector<std::string>& arguments) {
    const temp_directory etc;
    etc.write("dsp-assertion", "{}");
    command what{.executable = program("oru-cgi-applet"),
                 .argv = {name},
                 .environment = etc_oru_in(etc.path())};
    what.argv.insert(what.argv.end(), arguments.begin(), arguments.end());
    what.environment.push_back("ORU_SNAPSHOT=" + etc.path() + "/none");
    return run(what);
}

TEST(dispatch, the_last_component_of_the_name_chooses_the_feeder_tool) {
    for (const char* name : {"oru-tlm-tool", "/usr/bin/oru-tlm-tool", "./oru-tlm-tool",
                             "/oru-tlm-tool", "a/../oru-tlm-tool", "//x//oru-tlm-tool",
                             "oru-serverreport-tool/oru-tlm-tool", "\xff/oru-tlm-tool"}) {
        EXPECT_EQ(run_as(name, {"--stream-max-stats"}),
                  ended(0, "MaxBufferBytes=-1\nMaxEncodeStreams=-1\nMaxRawStreams=-1\nVersion=1\n"))
            << name;
    }
}

TEST(dispatch, the_last_component_of_the_name_chooses_the_server_report) {
    for (const char* name : {"oru-serverreport-tool", "/usr/bin/oru-serverreport-tool",
                             "./oru-serverreport-tool", "/oru-serverreport-tool",
                             "a/../oru-serverreport-tool", "oru-tlm-tool/oru-serverreport-tool"}) {
        EXPECT_EQ(run_as(name, {"--list-resolutions"}),
                  ended(0, "----- Previous DSP assertions -----\n\n{}\n\n"))
            << name;
    }
}

TEST(dispatch, the_installed_links_run_their_tools) {
    const std::string none = "";
    EXPECT_EQ(tlm(none, {"-q"}).out,
              "MaxBufferBytes=-1\nMaxEncodeStreams=-1\nMaxRawStreams=-1\nVersion=1\n");
    EXPECT_EQ(report(none, {}, {.assertions = "[]"}).out,
              "----- Previous DSP assertions -----\n\n[]\n\n");
}

TEST(dispatch, any_other_name_is_rejected) {
    for (const char* name : {"oru-tlm-tool/",
                             "oru-serverreport-tool/",
                             "ORU-TLM-TOOL",
                             "Oru-serverreport-tool",
                             "oru-tlm-tool.sh",
                             "oru-serverreport-tool.exe",
                             "oru-cgi-applet",
                             "oru-snapshot",
                             "",
                             "/",
                             ".",
                             "..",
                             " oru-tlm-tool",
                             "oru-tlm-tool ",
                             "oru-tlm-too",
                             "xoru-tlm-tool",
                             "oru-tlm-tool\n",
                             "-oru-tlm-tool",
                             "oru-tlm-tool/.",
                             "\\oru-tlm-tool",
                             "\xff",
                             "oru-serverreport-too",
                             "oru-serverreport-tools"}) {
        EXPECT_EQ(run_as(name, {}), ended(1, "", refusal)) << name;
        EXPECT_EQ(run_as(name, {"-q", "--help"}), ended(1, "", refusal)) << name;
    }
}

TEST(dispatch, the_executable_under_its_own_name_is_rejected) {
    EXPECT_EQ(run({.executable = program("oru-cgi-applet"), .argv = {program("oru-cgi-applet")}}),
              ended(1, "", refusal));
}

TEST(dispatch, the_rejection_keeps_its_status_if_its_output_is_lost) {
    for (const std::string& to : unwritable) {
        EXPECT_EQ(run({.executable = program("oru-cgi-applet"), .argv = {"x"}, .stderr_to = to}),
                  ended(1, ""));
        EXPECT_EQ(run({.executable = program("oru-cgi-applet"), .argv = {"x"}, .stdout_to = to}),
                  ended(1, "", refusal));
    }
}

TEST(dispatch, arguments_that_no_shell_passes_fail_an_assertion) {
    const temp_directory etc;
    for (const auto& [missing, expression] :
         {std::pair<std::string, std::string>{"argc", "argc > 0"},
          {"argv", "argv"},
          {"argv[0]", "argv[0]"}}) {
        command what{.executable = program("oru-tlm-tool"),
                     .argv = {"oru-tlm-tool", "-q"},
                     .environment = etc_oru_in(etc.path())};
        what.environment.push_back("ORU_TEST_MAIN=" + missing);
        const result got = run(what);
        EXPECT_EQ(got.signal, SIGABRT) << got;
        EXPECT_EQ(got.out, "");
        // The line number follows.
        EXPECT_TRUE(got.err.starts_with("oru-tlm-tool: oru-cgi-applet.cpp:")) << got;
        EXPECT_NE(got.err.find(": int main(int, char**): Assertion `" + expression + "' failed.\n"),
                  std::string::npos)
            << got;
    }
}

// The preset for sanitizers skips this test, because their allocator cannot be made to fail.
TEST(dispatch, an_exception_before_a_tool_runs_is_reported_with_status_0) {
    const std::string name = std::string(120000, 'x') + "/oru-tlm-tool";
    EXPECT_EQ(
        run({.executable = program("oru-cgi-applet"),
             .argv = {name, "-q"},
             .environment = {"LD_PRELOAD=" ORU_LIMIT_MALLOC, "ORU_TEST_MALLOC_LIMIT=110000"}}),
        ended(0, "", "oru-cgi-applet: std::bad_alloc\n"));
}

}  // namespace
