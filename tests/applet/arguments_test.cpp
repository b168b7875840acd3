// Unusual command lines of both tools: their output and their status.
#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/temp_directory.h"
#include "support/tools.h"

namespace {

using arguments = std::vector<std::string>;

struct switch_text {
    char letter;
    std::string name;
    std::string text;
};

// A tool and its documented command line.
struct tool {
    std::string name;
    result (*run)(std::string_view, const arguments&, const run_options&);
    std::string refusal_start;  // before and after GLib's message on an invalid option
    std::string refusal_end;
    std::vector<switch_text> switches;
    std::string summary;
    std::string examples;
    std::string letter;    // of a switch
    bool rejects_values;   // attached to a long switch; GLib ignores them
    std::string answered;  // what that switch prints
};

std::ostream& operator<<(std::ostream& stream, const tool& shown) {
    return stream << shown.name;
}

const std::string snapshot = R"({
    "stream": {"debug": {"global.capacity.peak": 5}},
    "system": {"caps": {"output": true}},
    "output": {"all": [{"id": 0, "settings": {}, "info": {}}]}
})";

const std::vector<tool> tools = {
    {.name = "oru-tlm-tool",
     .run = tlm,
     .refusal_start = "oru-tlm-tool: Option parsing failed: ",
     .refusal_end = "\n",
     .switches = {{'q', "stream-max-stats", "Display quotas and limits for streams"},
                  {'s', "system-info", "Display relevant system info for oru"},
                  {'i', "identity-info",
                   "Display the identity and number of times they started a stream"}},
     .summary = "Tool for populating oru information to tlm\n"
                "Prints everything when no options are provided.\n",
     .examples = "Examples:\n"
                 "  oru-tlm-tool --stream-max-stats\n"
                 "  oru-tlm-tool --identity-info\n"
                 "  oru-tlm-tool --system-info\n",
     .letter = "q",
     .rejects_values = true,
     .answered = "MaxBufferBytes=5\nMaxEncodeStreams=0\nMaxRawStreams=0\nVersion=1\n"},
    {.name = "oru-serverreport-tool",
     .run = report,
     .refusal_start = "oru-serverreport-tool: Failed t parse options: ",
     .refusal_end = ".",
     .switches = {{'l', "list-streams", "List existing streams"},
                  {'q', "stream-quotas", "Display quotas and limits for streams"},
                  {'o', "list-output", "Display information about HDMI"},
                  {'c', "list-channels", "List existing channels"},
                  {'r', "list-resolutions", "List resolutions for encoded formats and YUV"},
                  {'a', "list-available-resolutions", "List available resolutions"},
                  {'i', "list-inputs", "List existing inputs"}},
     .summary = "Tool for populating oru information to the serverreport\n"
                "Prints everything when no options are provided.\n",
     .examples = "Examples:\n"
                 "  oru-serverreport-tool --list-streams\n"
                 "  oru-serverreport-tool --list-channels\n"
                 "  oru-serverreport-tool --list-output\n"
                 "  oru-serverreport-tool --stream-quotas\n"
                 "  oru-serverreport-tool --list-available-resolutions\n"
                 "  oru-serverreport-tool --list-resolutions\n"
                 "  oru-serverreport-tool --list-inputs\n",
     .letter = "o",
     .rejects_values = false,
     .answered = "----- HDMI output -----\n\n    {\"enabled\":\"No\"}\n\n"},
};

class every_tool : public testing::TestWithParam<tool> {
  protected:
    result run(const arguments& line) const { return GetParam().run(snapshot, line, {}); }

    void expect_rejected(const arguments& line, const std::string& reason) const {
        EXPECT_EQ(run(line),
                  ended(1, "", GetParam().refusal_start + reason + GetParam().refusal_end));
    }
    void expect_rejected(const arguments& line) const {
        const result got = run(line);
        EXPECT_EQ(got.status, 1) << got;
        EXPECT_EQ(got.out, "");
        EXPECT_TRUE(got.err.starts_with(GetParam().refusal_start)) << got;
        EXPECT_TRUE(got.err.ends_with(GetParam().refusal_end)) << got;
        EXPECT_GT(got.err.size(), GetParam().refusal_start.size() + GetParam().refusal_end.size());
    }
    // The feeder tool rejects such a value. The server report accepts the switch, as GLib does.
    void expect_value_attached(const std::string& name, const std::string& value) const {
        if (GetParam().rejects_values) {
            expect_rejected({"--" + name + value}, "Option --" + name + " takes no value");
            expect_rejected({chosen, "--" + name + value}, "Option --" + name + " takes no value");
        } else {
            EXPECT_EQ(run({"--" + name + value}), run({"--" + name}));
        }
    }
    void expect_answered(const arguments& line) const {
        EXPECT_EQ(run(line), ended(0, GetParam().answered));
    }

    const std::string chosen = "-" + GetParam().letter;
};

INSTANTIATE_TEST_SUITE_P(arguments, every_tool, testing::ValuesIn(tools),
                         [](const auto& parameter) {
                             std::string name = parameter.param.name;
                             std::ranges::replace(name, '-', '_');
                             return name;
                         });

TEST_P(every_tool, words_that_are_not_options_are_ignored) {
    EXPECT_EQ(run({}), ended(0, ""));
    EXPECT_EQ(run({""}), ended(0, ""));
    EXPECT_EQ(run({"", "", ""}), ended(0, ""));
    EXPECT_EQ(run({"-"}), ended(0, ""));
    EXPECT_EQ(run({"--"}), ended(0, ""));
    EXPECT_EQ(run({"--", "--"}), ended(0, ""));
    EXPECT_EQ(run({GetParam().switches[0].name}), ended(0, ""));
    EXPECT_EQ(run({"\n", " ", " " + chosen}), ended(0, ""));
}

TEST_P(every_tool, its_own_name_is_not_an_option) {
    const std::string name = "--" + GetParam().switches[0].name + "=1/" + GetParam().name;
    EXPECT_EQ(::run({.executable = program("oru-cgi-applet"),
                     .argv = {name},
                     .environment = etc_oru_in("/nowhere")}),
              ended(0, ""));
}

TEST_P(every_tool, options_end_at_two_dashes) {
    EXPECT_EQ(run({"--", chosen}), ended(0, ""));
    EXPECT_EQ(run({"--", "--help", "--foo", "-x", "--" + GetParam().switches[0].name + "=1"}),
              ended(0, ""));
    expect_answered({chosen, "--", "--foo"});
    expect_answered({"word", chosen, "word", "--", "-x"});
}

TEST_P(every_tool, a_switch_counts_once_if_repeated_or_among_words) {
    expect_answered({chosen});
    expect_answered({chosen, chosen});
    expect_answered({chosen + GetParam().letter + GetParam().letter});
    expect_answered({"a", "b", chosen, "c", chosen});
    std::string bundle = "-";
    for (int i = 0; i < 5000; ++i) {
        bundle += GetParam().letter;
    }
    expect_answered({bundle});
}

TEST_P(every_tool, every_switch_has_a_long_and_a_short_name) {
    std::string bundle = "-";
    arguments all;
    for (const switch_text& each : GetParam().switches) {
        const result by_letter = run({std::string("-") + each.letter});
        EXPECT_EQ(run({"--" + each.name}), by_letter) << each.name;
        EXPECT_FALSE(by_letter.err.contains("option")) << by_letter;
        bundle += each.letter;
        all.push_back("--" + each.name);
    }
    EXPECT_EQ(run({bundle}), run(all));
    std::ranges::reverse(all);
    EXPECT_EQ(run({bundle}), run(all));
}

TEST_P(every_tool, an_unknown_option_rejects_the_whole_line) {
    const std::string name = GetParam().switches[0].name;
    for (const std::string& unknown :
         {std::string("--foo"), std::string("-x"), std::string("---"), std::string("--=1"),
          std::string("--no-") + name, "--" + name + "s", "--" + name.substr(0, name.size() - 1),
          "---" + name, "--" + name + " ", "--\n" + name}) {
        expect_rejected({chosen, unknown}, "Unknown option " + unknown);
        expect_rejected({unknown, chosen, "--"}, "Unknown option " + unknown);
    }
    expect_rejected({chosen + "x"}, "Unknown option " + chosen + "x");
    expect_rejected({"-x" + GetParam().letter}, "Unknown option -x" + GetParam().letter);
    expect_rejected({"-" + name});
}

TEST_P(every_tool, a_switch_takes_no_value) {
    for (const switch_text& each : GetParam().switches) {
        for (const char* value : {"=", "=1", "=true", "=no", "==", "=\xff"}) {
            expect_value_attached(each.name, value);
            expect_rejected({std::string("-") + each.letter + value});
        }
        expect_rejected({std::string("-") + each.letter + "1"});
    }
    // A separate word is not a value.
    expect_answered({chosen, "1"});
}

TEST_P(every_tool, texts_that_are_not_utf8) {
    expect_answered({"\xff\xfe", chosen, "\xc3"});
    expect_answered({chosen, "--", "--\xff"});
    expect_rejected({"--\xff"});
    expect_rejected({"-\xff", chosen});
    expect_rejected({"--f\xc3\xa9"}, "Unknown option --f\xc3\xa9");
}

// The system allows 128 KiB in one argument and about 2 MiB in all.
TEST_P(every_tool, a_megabyte_of_arguments) {
    constexpr std::size_t longest = 131071;
    arguments words(8, std::string(longest, 'x'));
    words.push_back(chosen);
    expect_answered(words);

    const std::string option = "--" + std::string(longest - 2, 'y');
    expect_rejected({option}, "Unknown option " + option);
    expect_value_attached(GetParam().switches[0].name, "=" + std::string(100000, '1'));

    expect_answered(arguments(100000, chosen));
    arguments many(100000, "w");
    many.push_back(chosen);
    expect_answered(many);
}

// These parts are ours, in this order. The text around them is GLib's.
TEST_P(every_tool, help_shows_the_summary_and_the_switches) {
    std::vector<std::string> parts = {GetParam().name + " [",
                                      "] \"{ 'key': <type value>, ... >}\"\n",
                                      "\n" + GetParam().summary, "-h, --help"};
    for (const switch_text& each : GetParam().switches) {
        parts.push_back(std::string("\n  -") + each.letter + ", --" + each.name + " ");
        parts.push_back(" " + each.text + "\n");
    }
    parts.push_back("\n" + GetParam().examples);
    for (const arguments& line : {arguments{"--help"},
                                  {"-h"},
                                  {"-?"},
                                  {"--help-all"},
                                  {chosen, "--help"},
                                  {"-" + GetParam().letter + "h"},
                                  {"word", "-h", "--foo"}}) {
        const result got = run(line);
        EXPECT_EQ(got.status, 0) << got;
        EXPECT_EQ(got.err, "");
        EXPECT_FALSE(got.out.contains(GetParam().answered)) << got;
        std::size_t at = 0;
        for (const std::string& part : parts) {
            const std::size_t found = got.out.find(part, at);
            ASSERT_NE(found, std::string::npos) << part << "\nin\n" << got;
            at = found + part.size() - 1;  // a newline may end one part and begin the next
        }
        EXPECT_TRUE(got.out.ends_with(GetParam().examples) ||
                    got.out.ends_with(GetParam().examples + "\n"))
            << got;
    }
    // The first error or request for help decides.
    expect_rejected({"--foo", "--help"}, "Unknown option --foo");
    EXPECT_EQ(run({"--", "--help"}), ended(0, ""));
}

// An empty program name chooses no tool, whatever the arguments are.
TEST(arguments, an_empty_program_name) {
    const std::string refusal =
        "oru-cgi-applet: Invoke 'oru-tlm-tool' or 'oru-serverreport-tool'!\n";
    for (const arguments& argv : {arguments{""}, {"", "--help"}, {"", "oru-tlm-tool", "-q"}}) {
        EXPECT_EQ(run({.executable = program("oru-cgi-applet"), .argv = argv}),
                  ended(1, "", refusal));
    }
}

TEST(arguments, a_long_program_name) {
    const std::string directory = std::string(100000, 'd') + "/";
    const temp_directory etc;
    EXPECT_EQ(run({.executable = program("oru-cgi-applet"),
                   .argv = {directory + "oru-tlm-tool"},
                   .environment = etc_oru_in(etc.path())}),
              ended(0, ""));
    EXPECT_EQ(
        run({.executable = program("oru-cgi-applet"), .argv = {std::string(131071, 'n')}}).status,
        1);
}

}  // namespace
