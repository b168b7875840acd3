// The feeder tool's command line, the order of its sections, and how it ends.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/temp_directory.h"
#include "support/tools.h"

namespace {

const std::string snapshot = R"({
    "stream": {"debug": {"global.capacity.peak": 1, "identity.a": 2}},
    "channel": {"info": {"input.count": 0}},
    "mode": {"info": {}}
})";
const std::string statistics = "MaxBufferBytes=1\nMaxEncodeStreams=0\nMaxRawStreams=0\nVersion=1\n";
const std::string system_info =
    "{\n    \"inputs\": 0,\n    \"capturemodes\": {},\n    \"viewmode\": {}\n}\n";
const std::string identities = "{\n    \"identities\": {\n        \"a\": 2\n    }\n}\n";

using arguments = std::vector<std::string>;

TEST(tlm_tool, the_chosen_sections_in_their_fixed_order) {
    const std::string all = statistics + system_info + identities;
    for (const auto& [switches, expected] : {
             std::pair<arguments, std::string>{{"-q"}, statistics},
             {{"--stream-max-stats"}, statistics},
             {{"-s"}, system_info},
             {{"--system-info"}, system_info},
             {{"-i"}, identities},
             {{"--identity-info"}, identities},
             {{"-q", "-s", "-i"}, all},
             {{"-i", "-s", "-q"}, all},
             {{"-qsi"}, all},
             {{"-isq"}, all},
             {{"--identity-info", "--system-info", "--stream-max-stats"}, all},
             {{"-i", "-q"}, statistics + identities},
             {{"-si"}, system_info + identities},
         }) {
        EXPECT_EQ(tlm(snapshot, switches), ended(0, expected)) << switches.front();
    }
}

TEST(tlm_tool, a_repeated_switch_counts_once) {
    EXPECT_EQ(tlm(snapshot, {"-q", "-q"}), ended(0, statistics));
    EXPECT_EQ(tlm(snapshot, {"-qq", "--stream-max-stats"}), ended(0, statistics));
    EXPECT_EQ(tlm(snapshot, {"-isi", "-s"}), ended(0, system_info + identities));
}

TEST(tlm_tool, no_switch_prints_nothing) {
    EXPECT_EQ(tlm(snapshot, {}), ended(0, ""));
    EXPECT_EQ(tlm("not json", {}), ended(0, ""));
}

TEST(tlm_tool, words_that_are_not_options_are_ignored) {
    EXPECT_EQ(tlm(snapshot, {"x", "-q", "y"}), ended(0, statistics));
    EXPECT_EQ(tlm(snapshot, {"", "-"}), ended(0, ""));
    EXPECT_EQ(tlm(snapshot, {"--"}), ended(0, ""));
    EXPECT_EQ(tlm(snapshot, {"--", "--foo", "-q"}), ended(0, ""));
    EXPECT_EQ(tlm(snapshot, {"-q", "--", "-s"}), ended(0, statistics));
    EXPECT_EQ(tlm(snapshot, {"\xff\xfe", "-q"}), ended(0, statistics));
    EXPECT_EQ(tlm(snapshot, {std::string(100000, 'x'), "-q"}), ended(0, statistics));
}

TEST(tlm_tool, an_unknown_option_is_rejected) {
    for (const char* option : {"--foo", "-x", "-qx", "--stream-max", "--Stream-max-stats", "-Q",
                               "--list-streams", "--f\xc3\xa9", "--f\xff"}) {
        EXPECT_EQ(tlm(snapshot, {"-q", option, "-s"}),
                  ended(1, "",
                        std::string("oru-tlm-tool: Option parsing failed: Unknown option ") +
                            option + "\n"));
    }
}

TEST(tlm_tool, a_value_attached_to_a_switch_is_rejected) {
    for (const char* option : {"-q1", "-q=1", "--system-info=1",
                               "--system-info=", "--stream-max-stats=no", "--identity-info=yes"}) {
        const result got = tlm(snapshot, {option});
        EXPECT_EQ(got.status, 1) << option;
        EXPECT_EQ(got.out, "") << option;
        EXPECT_TRUE(got.err.starts_with("oru-tlm-tool: Option parsing failed: ")) << option << got;
        EXPECT_TRUE(got.err.ends_with("\n")) << option;
    }
}

TEST(tlm_tool, of_an_attached_value_and_another_mistake_the_first_is_reported) {
    const std::string start = "oru-tlm-tool: Option parsing failed: ";
    const std::string value = start + "Option --system-info takes no value\n";
    for (const char* later : {"--foo", "--help", "--help-all", "-h", "-?", "-z", "-sz", "-q=1",
                              "--identity-info=no", "--system-info=yes", "-s", "word", "--"}) {
        EXPECT_EQ(tlm(snapshot, {"-q", "--system-info=no", later}), ended(1, "", value)) << later;
    }
    for (const char* first : {"--foo", "-z", "-sz", "-q=1"}) {
        EXPECT_EQ(tlm(snapshot, {first, "--system-info=no"}),
                  ended(1, "", start + "Unknown option " + first + "\n"));
    }
    EXPECT_EQ(tlm(snapshot, {"--help", "--system-info=no"}), tlm(snapshot, {"--help"}));
    EXPECT_EQ(tlm(snapshot, {"-q", "--", "--system-info=no"}), ended(0, statistics));
}

TEST(tlm_tool, help) {
    for (const char* option : {"--help", "-h", "-?", "--help-all"}) {
        const result got = tlm(snapshot, {"-q", option});
        EXPECT_EQ(got.status, 0) << got;
        EXPECT_EQ(got.err, "");
        for (const char* text :
             {"Usage:\n  oru-tlm-tool [", "] \"{ 'key': <type value>, ... >}\"\n\n",
              "\n\nTool for populating oru information to tlm\n"
              "Prints everything when no options are provided.\n\n",
              "  -q, --stream-max-stats     Display quotas and limits for streams\n"
              "  -s, --system-info          Display relevant system info for oru\n"
              "  -i, --identity-info        Display the identity and number of times they started "
              "a stream\n",
              "\nExamples:\n"
              "  oru-tlm-tool --stream-max-stats\n"
              "  oru-tlm-tool --identity-info\n"
              "  oru-tlm-tool --system-info\n"}) {
            EXPECT_NE(got.out.find(text), std::string::npos) << text << "\nin\n" << got;
        }
        EXPECT_EQ(got.out.find("MaxBufferBytes"), std::string::npos);
    }
}

TEST(tlm_tool, an_unreachable_service) {
    const std::string expected =
        "MaxBufferBytes=-1\n"
        "MaxEncodeStreams=-1\n"
        "MaxRawStreams=-1\n"
        "Version=1\n"
        "{\n"
        "    \"inputs\": 0,\n"
        "    \"capturemodes\": ,\n"
        "    \"viewmode\": \n"
        "}\n";
    // Empty, cut off, binary, and breaking a rule.
    for (const std::string& text : {std::string(), snapshot.substr(0, snapshot.size() / 2),
                                    std::string("\x7f"
                                                "ELF\0\1\2",
                                                7),
                                    std::string(R"({"strem": {}})")}) {
        EXPECT_EQ(tlm(text, {"-qsi"}), ended(0, expected)) << text;
    }
    const temp_directory directory;
    for (const std::string& path : {directory.path() + "/none", directory.path()}) {
        EXPECT_EQ(run({.executable = program("oru-tlm-tool"),
                       .argv = {"oru-tlm-tool", "-qsi"},
                       .environment = {"ORU_SNAPSHOT=" + path}}),
                  ended(0, expected))
            << path;
    }
}

TEST(tlm_tool, an_exception_ends_the_run_and_what_was_printed_stays) {
    const result got = tlm(R"({
        "stream": {"debug": {"global.capacity.peak": 1, "identity.a": 2}},
        "mode": {"info": {"ratio": {"double": "nan"}}}
    })",
                           {"-qsi"});
    EXPECT_EQ(got.status, 1);
    EXPECT_EQ(got.out, statistics);
    EXPECT_TRUE(got.err.starts_with("oru-tlm-tool: Exception: ")) << got;
}

// --- Streams that cannot be written ---

class tlm_tool_writes : public testing::TestWithParam<const char*> {};

TEST_P(tlm_tool_writes, a_lost_report_is_an_exception) {
    for (const std::string& to : unwritable) {
        const result got = tlm(snapshot, {GetParam()}, {.stdout_to = to});
        EXPECT_EQ(got.signal, 0) << to;
        EXPECT_EQ(got.status, 1) << to;
        EXPECT_TRUE(got.err.starts_with("oru-tlm-tool: Exception: ")) << to << got;
        EXPECT_TRUE(got.err.ends_with("\n")) << to << got;
    }
}

TEST_P(tlm_tool_writes, a_report_is_complete_if_only_standard_error_is_lost) {
    const result plain = tlm(snapshot, {GetParam()});
    EXPECT_EQ(plain.status, 0) << plain;
    EXPECT_NE(plain.out, "");
    for (const std::string& to : unwritable) {
        EXPECT_EQ(tlm(snapshot, {GetParam()}, {.stderr_to = to}), plain) << to;
    }
}

TEST_P(tlm_tool_writes, both_streams_lost) {
    for (const std::string& out : unwritable) {
        for (const std::string& err : unwritable) {
            EXPECT_EQ(tlm(snapshot, {GetParam()}, {.stdout_to = out, .stderr_to = err}),
                      ended(1, ""))
                << out << " " << err;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(each_switch, tlm_tool_writes,
                         testing::Values("-q", "-s", "-i", "-qsi", "--help"));

TEST(tlm_tool, a_run_that_prints_nothing_loses_nothing) {
    for (const std::string& to : unwritable) {
        EXPECT_EQ(tlm(snapshot, {}, {.stdout_to = to}), ended(0, "")) << to;
        EXPECT_EQ(tlm("{}", {"-i"}, {.stdout_to = to}), ended(0, "")) << to;
    }
}

TEST(tlm_tool, an_error_keeps_its_status_if_its_output_is_lost) {
    for (const std::string& to : unwritable) {
        EXPECT_EQ(tlm(snapshot, {"--foo"}, {.stderr_to = to}), ended(1, "")) << to;
        EXPECT_EQ(
            tlm(R"({"mode": {"info": {"ratio": {"double": "nan"}}}})", {"-s"}, {.stderr_to = to}),
            ended(1, ""))
            << to;
    }
}

}  // namespace
