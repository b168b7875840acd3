// Command lines of every odd shape, on both tools: what is printed, where, and the status.
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

// A tool, and what its interface says of it.
struct tool {
    std::string name;
    result (*run)(std::string_view, const arguments&, const run_options&);
    std::string refusal_start;  // around GLib's reason for refusing an option
    std::string refusal_end;
    std::vector<switch_text> switches;
    std::string summary;
    std::string examples;
    std::string asked;     // a switch
    bool refuses_values;   // attached to a long switch, where GLib passes over them
    std::string answered;  // what it prints
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
     .asked = "q",
     .refuses_values = true,
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
     .asked = "o",
     .refuses_values = false,
     .answered = "----- HDMI output -----\n\n    {\"enabled\":\"No\"}\n\n"},
};

class every_tool : public testing::TestWithParam<tool> {
  protected:
    result run(const arguments& given) const { return GetParam().run(snapshot, given, {}); }

    void expect_refused(const arguments& given, const std::string& reason) const {
        EXPECT_EQ(run(given),
                  ended(1, "", GetParam().refusal_start + reason + GetParam().refusal_end));
    }
    void expect_refused(const arguments& given) const {
        const result got = run(given);
        EXPECT_EQ(got.status, 1) << got;
        EXPECT_EQ(got.out, "");
        EXPECT_TRUE(got.err.starts_with(GetParam().refusal_start)) << got;
        EXPECT_TRUE(got.err.ends_with(GetParam().refusal_end)) << got;
        EXPECT_GT(got.err.size(), GetParam().refusal_start.size() + GetParam().refusal_end.size());
    }
    // The feeder tool refuses such a value; the server report takes the switch as GLib does.
    void expect_value_attached(const std::string& name, const std::string& value) const {
        if (GetParam().refuses_values) {
            expect_refused({"--" + name + value}, "Option --" + name + " takes no value");
            expect_refused({asked, "--" + name + value}, "Option --" + name + " takes no value");
        } else {
            EXPECT_EQ(run({"--" + name + value}), run({"--" + name}));
        }
    }
    void expect_answered(const arguments& given) const {
        EXPECT_EQ(run(given), ended(0, GetParam().answered));
    }

    const std::string asked = "-" + GetParam().asked;
};

INSTANTIATE_TEST_SUITE_P(arguments, every_tool, testing::ValuesIn(tools),
                         [](const auto& parameter) {
                             std::string name = parameter.param.name;
                             std::ranges::replace(name, '-', '_');
                             return name;
                         });

TEST_P(every_tool, nothing_is_asked_by_what_is_no_option) {
    EXPECT_EQ(run({}), ended(0, ""));
    EXPECT_EQ(run({""}), ended(0, ""));
    EXPECT_EQ(run({"", "", ""}), ended(0, ""));
    EXPECT_EQ(run({"-"}), ended(0, ""));
    EXPECT_EQ(run({"--"}), ended(0, ""));
    EXPECT_EQ(run({"--", "--"}), ended(0, ""));
    EXPECT_EQ(run({GetParam().switches[0].name}), ended(0, ""));
    EXPECT_EQ(run({"\n", " ", " " + asked}), ended(0, ""));
}

TEST_P(every_tool, its_own_name_is_no_option) {
    const std::string name = "--" + GetParam().switches[0].name + "=1/" + GetParam().name;
    EXPECT_EQ(::run({.executable = program("oru-cgi-applet"),
                     .argv = {name},
                     .environment = etc_oru_in("/nowhere")}),
              ended(0, ""));
}

TEST_P(every_tool, options_end_at_two_dashes) {
    EXPECT_EQ(run({"--", asked}), ended(0, ""));
    EXPECT_EQ(run({"--", "--help", "--foo", "-x", "--" + GetParam().switches[0].name + "=1"}),
              ended(0, ""));
    expect_answered({asked, "--", "--foo"});
    expect_answered({"word", asked, "word", "--", "-x"});
}

TEST_P(every_tool, a_switch_counts_once_however_often_and_wherever_it_stands) {
    expect_answered({asked});
    expect_answered({asked, asked});
    expect_answered({asked + GetParam().asked + GetParam().asked});
    expect_answered({"a", "b", asked, "c", asked});
    std::string bundle = "-";
    for (int i = 0; i < 5000; ++i) {
        bundle += GetParam().asked;
    }
    expect_answered({bundle});
}

TEST_P(every_tool, every_switch_is_known_by_both_its_names) {
    std::string bundle = "-";
    arguments all;
    for (const switch_text& given : GetParam().switches) {
        const result by_letter = run({std::string("-") + given.letter});
        EXPECT_EQ(run({"--" + given.name}), by_letter) << given.name;
        EXPECT_FALSE(by_letter.err.contains("option")) << by_letter;
        bundle += given.letter;
        all.push_back("--" + given.name);
    }
    EXPECT_EQ(run({bundle}), run(all));
    std::ranges::reverse(all);
    EXPECT_EQ(run({bundle}), run(all));
}

TEST_P(every_tool, an_unknown_option_refuses_the_whole_line) {
    const std::string name = GetParam().switches[0].name;
    for (const std::string& unknown :
         {std::string("--foo"), std::string("-x"), std::string("---"), std::string("--=1"),
          std::string("--no-") + name, "--" + name + "s", "--" + name.substr(0, name.size() - 1),
          "---" + name, "--" + name + " ", "--\n" + name}) {
        expect_refused({asked, unknown}, "Unknown option " + unknown);
        expect_refused({unknown, asked, "--"}, "Unknown option " + unknown);
    }
    expect_refused({asked + "x"}, "Unknown option " + asked + "x");
    expect_refused({"-x" + GetParam().asked}, "Unknown option -x" + GetParam().asked);
    expect_refused({"-" + name});
}

TEST_P(every_tool, a_switch_takes_no_value) {
    for (const switch_text& given : GetParam().switches) {
        for (const char* value : {"=", "=1", "=true", "=no", "==", "=\xff"}) {
            expect_value_attached(given.name, value);
            expect_refused({std::string("-") + given.letter + value});
        }
        expect_refused({std::string("-") + given.letter + "1"});
    }
    // A word of its own is no value.
    expect_answered({asked, "1"});
}

TEST_P(every_tool, texts_that_are_not_utf8) {
    expect_answered({"\xff\xfe", asked, "\xc3"});
    expect_answered({asked, "--", "--\xff"});
    expect_refused({"--\xff"});
    expect_refused({"-\xff", asked});
    expect_refused({"--f\xc3\xa9"}, "Unknown option --f\xc3\xa9");
}

// The system takes up to 128 KiB in one argument and some 2 MiB in all.
TEST_P(every_tool, a_megabyte_of_arguments) {
    constexpr std::size_t longest = 131071;
    arguments words(8, std::string(longest, 'x'));
    words.push_back(asked);
    expect_answered(words);

    const std::string option = "--" + std::string(longest - 2, 'y');
    expect_refused({option}, "Unknown option " + option);
    expect_value_attached(GetParam().switches[0].name, "=" + std::string(100000, '1'));

    expect_answered(arguments(100000, asked));
    arguments many(100000, "w");
    many.push_back(asked);
    expect_answered(many);
}

// The wording around them is GLib's; these are ours, in this order.
TEST_P(every_tool, help_shows_what_the_tool_is_and_its_switches) {
    std::vector<std::string> parts = {GetParam().name + " [",
                                      "] \"{ 'key': <type value>, ... >}\"\n",
                                      "\n" + GetParam().summary, "-h, --help"};
    for (const switch_text& given : GetParam().switches) {
        parts.push_back(std::string("\n  -") + given.letter + ", --" + given.name + " ");
        parts.push_back(" " + given.text + "\n");
    }
    parts.push_back("\n" + GetParam().examples);
    for (const arguments& given : {arguments{"--help"},
                                   {"-h"},
                                   {"-?"},
                                   {"--help-all"},
                                   {asked, "--help"},
                                   {"-" + GetParam().asked + "h"},
                                   {"word", "-h", "--foo"}}) {
        const result got = run(given);
        EXPECT_EQ(got.status, 0) << got;
        EXPECT_EQ(got.err, "");
        EXPECT_FALSE(got.out.contains(GetParam().answered)) << got;
        std::size_t at = 0;
        for (const std::string& part : parts) {
            const std::size_t found = got.out.find(part, at);
            ASSERT_NE(found, std::string::npos) << part << "\nin\n" << got;
            at = found + part.size() - 1;  // a newline may belong to two
        }
        EXPECT_TRUE(got.out.ends_with(GetParam().examples) ||
                    got.out.ends_with(GetParam().examples + "\n"))
            << got;
    }
    // The first that is wrong or asks for help decides.
    expect_refused({"--foo", "--help"}, "Unknown option --foo");
    EXPECT_EQ(run({"--", "--help"}), ended(0, ""));
}

// A program name that is no name at all chooses no tool, whatever follows.
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
