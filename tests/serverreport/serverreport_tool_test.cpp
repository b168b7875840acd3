// The server report's command line, the order of its sections, and how it ends.
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/temp_directory.h"
#include "support/tools.h"

namespace {

// Each section has its minimal text.
const std::string snapshot = R"({
    "stream": {"all": [], "quota": {}, "limit": {}},
    "system": {"caps": {"output": true}},
    "output": {"all": [{"id": 0, "settings": {}, "info": {}}]},
    "channel": {"all": [{"id": 0, "properties": {"key": "input"}, "info": {},
                         "resolutions": {"available": []}}]},
    "input": {"all": [{"id": 1, "info": {}}]}
})";
const std::string record = "{}";
const std::string assertions = "----- Previous DSP assertions -----\n\n{}\n\n";
const std::string streams = R"(----- Snapshot of all running streams -----

{
    "streams" : [
    ],

    "streaminfo" : [
    ],

    "streamstatistics" : [
    ]
}

)";
const std::string quotas = R"(----- Stream Quotas and Limits -----

{
    "streammaximumquota" : [
        {"buffering":"0","hard":"0","soft":"0"}
    ],

    "streammaximumlimits" : [
        {"encode":"0","other":"0"}
    ]
}

)";
const std::string output = "----- HDMI output -----\n\n    {\"enabled\":\"No\"}\n\n";
const std::string channels = R"(----- Snapshot of channel settings -----

{
    "channels" : [
        {"id/0":{"crop":"No"}}
    ]
}
)";
const std::string resolutions = R"(----- Available resolutions -----

{
    "available_resolutions" : [
        {"channel":"0","resolutions":""}
    ]
}
)";
const std::string inputs = R"(----- Snapshot of input settings -----

{
    "inputs" : [
        {"id/1":{"crop":"No"}}
    ]
}
)";
const std::string all = assertions + streams + quotas + output + channels + resolutions + inputs;

using arguments = std::vector<std::string>;

TEST(serverreport_tool, the_chosen_sections_in_their_fixed_order) {
    for (const auto& [switches, expected] : {
             std::pair<arguments, std::string>{{}, assertions},
             {{"-l"}, assertions + streams},
             {{"--list-streams"}, assertions + streams},
             {{"-q"}, assertions + quotas},
             {{"--stream-quotas"}, assertions + quotas},
             {{"-o"}, assertions + output},
             {{"--list-output"}, assertions + output},
             {{"-c"}, assertions + channels},
             {{"--list-channels"}, assertions + channels},
             {{"-r"}, assertions},
             {{"--list-resolutions"}, assertions},
             {{"-a"}, assertions + resolutions},
             {{"--list-available-resolutions"}, assertions + resolutions},
             {{"-i"}, assertions + inputs},
             {{"--list-inputs"}, assertions + inputs},
             {{"--list-inputs", "--list-streams"}, assertions + streams + inputs},
             {{"-l", "-q", "-o", "-c", "-a", "-i"}, all},
             {{"-i", "-a", "-c", "-o", "-q", "-l"}, all},
             {{"-lqocrai"}, all},
             {{"-iarcoql"}, all},
             {{"-r", "-c"}, assertions + channels},
         }) {
        EXPECT_EQ(report(snapshot, switches, {.assertions = record}), ended(0, expected))
            << (switches.empty() ? "no switch" : switches.front());
    }
}

TEST(serverreport_tool, without_a_record_of_assertions) {
    EXPECT_EQ(report(snapshot, {}), ended(0, ""));
    EXPECT_EQ(report(snapshot, {"-r"}), ended(0, ""));
    EXPECT_EQ(report(snapshot, {"-o"}), ended(0, output));
    EXPECT_EQ(report("not json", {"-r"}), ended(0, ""));
}

TEST(serverreport_tool, a_repeated_switch_counts_once) {
    EXPECT_EQ(report(snapshot, {"-c", "-cc", "--list-channels"}), ended(0, channels));
}

TEST(serverreport_tool, words_that_are_not_options_are_ignored) {
    EXPECT_EQ(report(snapshot, {"x", "-o", "y"}), ended(0, output));
    EXPECT_EQ(report(snapshot, {"", "-"}), ended(0, ""));
    EXPECT_EQ(report(snapshot, {"--"}), ended(0, ""));
    EXPECT_EQ(report(snapshot, {"--", "--foo", "-o"}), ended(0, ""));
    EXPECT_EQ(report(snapshot, {"-o", "--", "-c"}), ended(0, output));
    EXPECT_EQ(report(snapshot, {"\xff\xfe", "-o"}), ended(0, output));
}

TEST(serverreport_tool, an_unknown_option_is_rejected) {
    for (const char* option : {"--foo", "-x", "-lx", "--list", "--List-streams", "-L", "-i1",
                               "-l=1", "--stream-max-stats", "-s", "--f\xc3\xa9", "--f\xff"}) {
        EXPECT_EQ(report(snapshot, {"-o", option, "-c"}, {.assertions = record}),
                  ended(1, "",
                        std::string("oru-serverreport-tool: Failed t parse options: Unknown "
                                    "option ") +
                            option + "."));
    }
}

TEST(serverreport_tool, help) {
    for (const char* option : {"--help", "-h", "-?", "--help-all"}) {
        const result got = report(snapshot, {"-o", option}, {.assertions = record});
        EXPECT_EQ(got.status, 0) << got;
        EXPECT_EQ(got.err, "");
        for (const char* text :
             {"Usage:\n  oru-serverreport-tool [", "] \"{ 'key': <type value>, ... >}\"\n\n",
              "\n\nTool for populating oru information to the serverreport\n"
              "Prints everything when no options are provided.\n\n",
              "  -l, --list-streams                   List existing streams\n"
              "  -q, --stream-quotas                  Display quotas and limits for streams\n"
              "  -o, --list-output                    Display information about HDMI\n"
              "  -c, --list-channels                  List existing channels\n"
              "  -r, --list-resolutions               List resolutions for encoded formats and "
              "YUV\n"
              "  -a, --list-available-resolutions     List available resolutions\n"
              "  -i, --list-inputs                    List existing inputs\n",
              "\nExamples:\n"
              "  oru-serverreport-tool --list-streams\n"
              "  oru-serverreport-tool --list-channels\n"
              "  oru-serverreport-tool --list-output\n"
              "  oru-serverreport-tool --stream-quotas\n"
              "  oru-serverreport-tool --list-available-resolutions\n"
              "  oru-serverreport-tool --list-resolutions\n"
              "  oru-serverreport-tool --list-inputs\n"}) {
            EXPECT_NE(got.out.find(text), std::string::npos) << text << "\nin\n" << got;
        }
        EXPECT_EQ(got.out.find("-----"), std::string::npos) << got;
    }
}

TEST(serverreport_tool, a_fatal_error_keeps_what_was_printed_and_ends_the_run) {
    EXPECT_EQ(
        report(R"({
        "stream": {"all": [], "quota": {}, "limit": {"$error": "no limit"}},
        "channel": {"all": []}
    })",
               {"-lqci"}, {.assertions = record}),
        ended(1, assertions + streams, "oru-serverreport-tool: Failed to get limit: no limit\n"));
    EXPECT_EQ(report(R"({
        "stream": {"all": [], "quota": {}, "limit": {}}, "system": {"caps": {"output": true}},
        "output": {"all": [{"id": 0, "$error": "no output"}]}, "channel": {"all": []}
    })",
                     {"-oqci"}),
              ended(1, quotas, "oru-serverreport-tool: Failed to get output: no output\n"));
}

TEST(serverreport_tool, other_errors_end_their_own_section) {
    EXPECT_EQ(report(R"({"channel": {"all": {"$error": "busy"}}})", {"-ocai"}),
              ended(0,
                    "Failed to get all channels: busy\n"
                    "Failed to get all channels: busy\n"
                    "Failed to get inputs: busy\n"));
}

TEST(serverreport_tool, an_unreachable_service) {
    const temp_directory directory;
    const std::string path = directory.path() + "/none";
    for (const auto& [option, status, out, err] :
         {std::tuple<std::string, int, std::string, std::string>{
              "-l", 1, "", "oru-serverreport-tool: Failed to get all streams: " + path + ": "},
          {"-q", 1, "", "oru-serverreport-tool: Failed to get quota: " + path + ": "},
          {"-o", 0, "", ""},
          {"-c", 0, "Failed to get all channels: " + path + ": ", ""},
          {"-r", 0, "", ""},
          {"-a", 0, "Failed to get all channels: " + path + ": ", ""},
          {"-i", 0, "Failed to get inputs: " + path + ": ", ""}}) {
        command what{.executable = program("oru-serverreport-tool"),
                     .argv = {"oru-serverreport-tool", option},
                     .environment = etc_oru_in(directory.path())};
        what.environment.push_back("ORU_SNAPSHOT=" + path);
        const result got = run(what);
        EXPECT_EQ(got.status, status) << option;
        EXPECT_TRUE(got.out.starts_with(out)) << option << got;
        EXPECT_TRUE(got.err.starts_with(err)) << option << got;
        EXPECT_EQ(got.out.empty(), out.empty()) << option << got;
        EXPECT_EQ(got.err.empty(), err.empty()) << option << got;
    }
}

// --- Streams that cannot be written ---

class serverreport_tool_writes : public testing::TestWithParam<const char*> {};

TEST_P(serverreport_tool_writes, a_lost_report_is_an_exception) {
    for (const std::string& to : unwritable) {
        const result got = report(snapshot, {GetParam()}, {.assertions = record, .stdout_to = to});
        EXPECT_EQ(got.signal, 0) << to;
        EXPECT_EQ(got.status, 1) << to;
        EXPECT_TRUE(got.err.starts_with("oru-serverreport-tool: Exception ")) << to << got;
        EXPECT_TRUE(got.err.ends_with("\n")) << to << got;
    }
}

TEST_P(serverreport_tool_writes, a_report_is_complete_if_only_standard_error_is_lost) {
    const result plain = report(snapshot, {GetParam()}, {.assertions = record});
    EXPECT_EQ(plain.status, 0) << plain;
    EXPECT_NE(plain.out, "");
    for (const std::string& to : unwritable) {
        EXPECT_EQ(report(snapshot, {GetParam()}, {.assertions = record, .stderr_to = to}), plain)
            << to;
    }
}

TEST_P(serverreport_tool_writes, both_streams_lost) {
    for (const std::string& out : unwritable) {
        for (const std::string& err : unwritable) {
            EXPECT_EQ(report(snapshot, {GetParam()},
                             {.assertions = record, .stdout_to = out, .stderr_to = err}),
                      ended(1, ""))
                << out << " " << err;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(each_switch, serverreport_tool_writes,
                         testing::Values("-l", "-q", "-o", "-c", "-r", "-a", "-i", "-lqocrai",
                                         "--help", "--"));

TEST(serverreport_tool, each_section_alone_can_be_lost) {
    for (const char* option : {"-l", "-q", "-o", "-c", "-a", "-i"}) {
        for (const std::string& to : unwritable) {
            const result got = report(snapshot, {option}, {.stdout_to = to});
            EXPECT_EQ(got.status, 1) << option << " " << to;
            EXPECT_TRUE(got.err.starts_with("oru-serverreport-tool: Exception ")) << got;
        }
    }
}

TEST(serverreport_tool, a_run_that_prints_nothing_loses_nothing) {
    for (const std::string& to : unwritable) {
        EXPECT_EQ(report(snapshot, {}, {.stdout_to = to}), ended(0, "")) << to;
        EXPECT_EQ(report(snapshot, {"-r"}, {.stdout_to = to}), ended(0, "")) << to;
        EXPECT_EQ(report("{}", {"-o"}, {.stdout_to = to}), ended(0, "")) << to;
    }
}

TEST(serverreport_tool, an_error_keeps_its_status_if_its_output_is_lost) {
    for (const std::string& to : unwritable) {
        EXPECT_EQ(report(snapshot, {"--foo"}, {.stderr_to = to}), ended(1, "")) << to;
        EXPECT_EQ(report("{}", {"-l"}, {.assertions = record, .stderr_to = to}),
                  ended(1, assertions))
            << to;
        EXPECT_EQ(report("{}", {"-l"}, {.assertions = record, .stdout_to = to, .stderr_to = to}),
                  ended(1, ""))
            << to;
    }
}

TEST(serverreport_tool, a_fatal_error_is_reported_even_if_the_report_before_it_is_lost) {
    for (const std::string& to : unwritable) {
        const result got = report("{}", {"-l"}, {.assertions = record, .stdout_to = to});
        EXPECT_EQ(got.status, 1) << to;
        EXPECT_EQ(got.signal, 0) << to;
        EXPECT_TRUE(got.err.starts_with("oru-serverreport-tool: ")) << to << got;
    }
}

}  // namespace
