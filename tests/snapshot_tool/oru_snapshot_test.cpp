#include "snapshot_tool/oru_snapshot.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/temp_directory.h"

namespace {

const std::vector<std::string> commands = {"check", "record", "diff", "show", "graph", "metrics"};

constexpr auto list = "check, record, diff, show, graph, metrics";

TEST(oru_snapshot, lists_its_commands) {
    const std::string help = oru_snapshot({"--help"}).out;
    EXPECT_TRUE(help.starts_with("Usage:\n  oru-snapshot [OPTION…] COMMAND\n\n")) << help;
    for (const std::string& name : commands) {
        EXPECT_TRUE(help.contains("\n  " + name)) << name << '\n' << help;
    }
    EXPECT_EQ(oru_snapshot({"-h"}), ended(0, help));
    EXPECT_EQ(oru_snapshot({"--version"}), ended(0, "oru-snapshot " ORU_VERSION "\n"));
}

TEST(oru_snapshot, explains_each_command) {
    EXPECT_EQ(oru_snapshot({"metrics", "-h"}), ended(0, R"(Usage:
  oru-snapshot metrics [OPTION…] [FILE]

Prints figures for Prometheus. Without FILE, queries the video service.

Options:
  -o, --output=OUT     Write into OUT, not to standard output
  -h, --help           Show this help

Example:
  oru-snapshot metrics -o /var/lib/prometheus/node-exporter/oru.prom

Manual: oru-snapshot(1)
)"));
    for (const std::string& name : commands) {
        const result got = oru_snapshot({name, "x", "--help"});
        EXPECT_EQ(got.status, 0) << got;
        EXPECT_TRUE(got.out.starts_with("Usage:\n  oru-snapshot " + name + " ")) << got;
        EXPECT_TRUE(got.out.contains("\nExample:\n  oru-snapshot " + name + " ")) << got;
        EXPECT_TRUE(got.out.contains("\nManual: oru-snapshot(1)\n")) << got;
    }
}

struct mistake {
    std::vector<std::string> arguments;
    std::string answer;
};

TEST(oru_snapshot, says_what_is_wrong_with_a_command_line) {
    for (const auto& [arguments, answer] : std::vector<mistake>{
             {{},
              std::string("oru-snapshot: no command: expected one of ") + list +
                  "\nTry 'oru-snapshot --help'.\n"},
             {{"shwo"}, "oru-snapshot: unknown command 'shwo': did you mean 'show'?\n"},
             {{"metric", "x"}, "oru-snapshot: unknown command 'metric': did you mean 'metrics'?\n"},
             {{"chk"}, "oru-snapshot: unknown command 'chk': did you mean 'check'?\n"},
             {{"help"}, "oru-snapshot: unknown command 'help': did you mean '--help'?\n"},
             {{"verify", "x"},
              std::string("oru-snapshot: unknown command 'verify': expected one of ") + list +
                  "\n"},
             {{""},
              std::string("oru-snapshot: unknown command '': expected one of ") + list + "\n"},
             {{"sho\033w"}, "oru-snapshot: unknown command 'sho\\x1bw': did you mean 'show'?\n"},
             {{"--wide"}, "oru-snapshot: unknown option --wide\nTry 'oru-snapshot --help'.\n"},
             {{"show", "--wdie\xff"},
              "oru-snapshot show: unknown option --wdie\\xff\nTry 'oru-snapshot show --help'.\n"},
             {{"graph", "a", "b"},
              "oru-snapshot graph: unexpected argument 'b'\nTry 'oru-snapshot graph --help'.\n"},
             {{"show", ""},
              "oru-snapshot show: an argument is empty\nTry 'oru-snapshot show --help'.\n"},
             {{"check"},
              "oru-snapshot check: too few arguments: expected FILE...\n"
              "Try 'oru-snapshot check --help'.\n"},
             {{"metrics", "x", "-o"},
              "oru-snapshot metrics: missing argument for -o\n"
              "Try 'oru-snapshot metrics --help'.\n"},
             {{"metrics", "-oout", "x"},
              "oru-snapshot metrics: error parsing option -o: its value must be the next argument\n"
              "Try 'oru-snapshot metrics --help'.\n"},
             {{"record", "--about", "--redact=x", "--redact=no"},
              "oru-snapshot record: option --redact takes no value\n"
              "Try 'oru-snapshot record --help'.\n"},
         }) {
        EXPECT_EQ(oru_snapshot(arguments), ended(2, "", answer));
    }
}

TEST(oru_snapshot, takes_options_before_and_after_a_file_and_files_like_options) {
    const temp_directory scratch;
    const std::string file = scratch.write("-o", "{}");
    const std::string out = scratch.path() + "/figures\xff";
    const result got = oru_snapshot({"metrics", file, "-o", out});
    EXPECT_EQ(oru_snapshot({"metrics", "--output=" + out, file}), got);
    EXPECT_EQ(got, ended(0, "", "oru-snapshot: streams not recorded\n"));
    EXPECT_EQ(oru_snapshot({"check", "--", "-o"}), ended(1, "", "-o: No such file or directory\n"));
}

TEST(oru_snapshot, fails_if_its_output_is_lost) {
    for (const std::vector<std::string>& given :
         std::vector<std::vector<std::string>>{{"--help"}, {"--version"}, {"record", "--help"}}) {
        EXPECT_EQ(oru_snapshot(given, {.stdout_to = "/dev/full"}),
                  ended(1, "",
                        "oru-snapshot: cannot write to standard output: "
                        "No space left on device\n"));
        EXPECT_EQ(
            oru_snapshot(given, {.stdout_to = closed_stream}),
            ended(1, "", "oru-snapshot: cannot write to standard output: Bad file descriptor\n"));
    }
}

// 1 would say that there is a difference.
TEST(diff, has_status_2_if_it_fails) {
    const temp_directory scratch;
    const std::string file = scratch.write("file", "{}");
    EXPECT_EQ(oru_snapshot({"diff", file, "/nowhere"}),
              ended(2, "", "oru-snapshot: /nowhere: No such file or directory\n"));
    EXPECT_EQ(oru_snapshot({"diff", "-", "-"}),
              ended(2, "",
                    "oru-snapshot diff: only one of OLD and NEW can be standard input\n"
                    "Try 'oru-snapshot diff --help'.\n"));
    EXPECT_EQ(
        oru_snapshot({"diff", file, file}, {.stdout_to = "/dev/full"}),
        ended(2, "", "oru-snapshot: cannot write to standard output: No space left on device\n"));
}

TEST(oru_snapshot, keeps_its_status_without_standard_error) {
    for (const std::string& to : unwritable) {
        EXPECT_EQ(oru_snapshot({}, {.stderr_to = to}), ended(2, ""));
    }
}

// It could read and write with rights that its caller lacks.
TEST(oru_snapshot, opens_no_files_as_a_privileged_program) {
    const temp_directory scratch;
    struct statvfs system{};
    ASSERT_EQ(statvfs(scratch.path().c_str(), &system), 0);
    if (geteuid() != 0 || (system.f_flag & ST_NOSUID) != 0) {
        GTEST_SKIP() << "only root can create such a program, and not on every file system";
    }
    if (std::getenv("ORU_TEST_SANITIZED") != nullptr) {
        GTEST_SKIP() << "LeakSanitizer does not work in such a program";
    }
    const std::string copy = scratch.path() + "/oru-snapshot";
    std::filesystem::copy_file(program("oru-snapshot"), copy);
    ASSERT_EQ(chown(copy.c_str(), 65534, 65534), 0);
    ASSERT_EQ(chmod(copy.c_str(), 04755), 0);
    ASSERT_EQ(chmod(scratch.path().c_str(), 0755), 0);
    const std::string file = scratch.write("file", R"({"mode": {}})");
    const auto privileged = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "oru-snapshot");
        return run({.executable = copy, .argv = std::move(arguments), .stdin_from = file});
    };
    const result refused =
        ended(2, "",
              "oru-snapshot: /nowhere/\\n: a program with more rights than its caller opens no "
              "files: use '-'\n");
    const std::string name = "/nowhere/\n";
    EXPECT_EQ(privileged({"check", "-"}), ended(0, "/dev/stdin: ok\n"));
    EXPECT_EQ(privileged({"check", "-", name}), refused);
    EXPECT_EQ(privileged({"show", name}), refused);
    EXPECT_EQ(privileged({"graph", name}), refused);
    EXPECT_EQ(privileged({"metrics", name}), refused);
    EXPECT_EQ(privileged({"metrics", "-o", name}), refused);
    EXPECT_EQ(privileged({"metrics", "-o", "-", "-"}).status, 0);
    EXPECT_EQ(privileged({"record", "-o", name}), refused);
    EXPECT_EQ(privileged({"record", name}), refused);
    EXPECT_EQ(privileged({"record", "--redact-key", name, "-"}), refused);
    EXPECT_EQ(privileged({"diff", "-", name}), refused);
}

}  // namespace
