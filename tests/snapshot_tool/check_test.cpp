#include <filesystem>

#include <gtest/gtest.h>

#include "snapshot_tool/oru_snapshot.h"
#include "support/temp_directory.h"

namespace {

TEST(check, reads_every_file) {
    const temp_directory scratch;
    const std::string good = scratch.write("good.json", R"({"mode": {}})");
    const std::string bad = scratch.write("bad.json", "{\n \"info\": 1}");
    const std::string ok = good + ": ok\n";
    const std::string wrong = bad + ":2:2: unknown member 'info'\n";
    EXPECT_EQ(oru_snapshot({"check", good}), ended(0, ok));
    EXPECT_EQ(oru_snapshot({"check", bad}), ended(1, "", wrong));
    EXPECT_EQ(oru_snapshot({"check", bad, good, "/nowhere", good}),
              ended(1, ok + ok, wrong + "/nowhere: No such file or directory\n"));
}

// A backslash stays as it is: a text is escaped once.
TEST(check, prints_names_without_what_a_terminal_obeys) {
    const temp_directory scratch;
    const std::string good = scratch.write("a\n\033[2J\u0085\u202e\xff\\.json", R"({"mode": {}})");
    const std::string shown = scratch.path() + R"(/a\n\x1b[2J\u0085\u202e\xff\.json)";
    EXPECT_EQ(oru_snapshot({"check", good}), ended(0, shown + ": ok\n"));
    std::filesystem::remove(good);
    EXPECT_EQ(oru_snapshot({"check", good}), ended(1, "", shown + ": No such file or directory\n"));
    scratch.write("a\n\033[2J\u0085\u202e\xff\\.json", R"({"\u0085\u2028\n\\": 1})");
    EXPECT_EQ(oru_snapshot({"check", good}),
              ended(1, "", shown + R"(:1:2: unknown member '\u0085\u2028\n\')" + "\n"));
}

TEST(check, says_that_a_snapshot_answers_nothing) {
    const temp_directory scratch;
    for (const char* text :
         {"{}", R"({"about": "x", "formats": {"h264": 0}, "input": {"all": []}, "stream": {}})",
          R"({"system": {"$error": "a"}, "stream": {"all": {"$error": "b"}},
              "input": {"all": [{"id": 1, "$error": "c"}]}, "output": {"all": {"$error": "d"}}})"}) {
        const std::string file = scratch.write("file.json", text);
        EXPECT_EQ(oru_snapshot({"check", file}), ended(0, file + ": ok, but it answers no query\n"))
            << text;
    }
    for (const char* text : {R"({"system": {}})", R"({"stream": {"all": []}})",
                             R"({"channel": {"filtered": []}})", R"({"channel": {"info": {}}})",
                             R"({"input": {"all": [{"id": 1, "$error": ""}, {"id": 2}]}})",
                             R"({"output": {"all": [{"id": 5}]}})"}) {
        const std::string file = scratch.write("file.json", text);
        EXPECT_EQ(oru_snapshot({"check", file}), ended(0, file + ": ok\n")) << text;
    }
}

// Runs a script of bash, for which "$0" is oru-snapshot.
auto shell(const std::string& script) {
    return run({.executable = "/bin/bash",
                .argv = {"bash", "-c", script, program("oru-snapshot")},
                .environment = {"PATH=/usr/bin:/bin"}});
}

TEST(check, reads_standard_input) {
    const temp_directory scratch;
    const std::string good = scratch.write("good.json", R"({"mode": {}})");
    const std::string bad = scratch.write("bad.json", "{\n \"info\": 1}");
    EXPECT_EQ(oru_snapshot({"check", "-"}, {.stdin_from = good}), ended(0, "/dev/stdin: ok\n"));
    EXPECT_EQ(oru_snapshot({"check", good, "-"}, {.stdin_from = bad}),
              ended(1, good + ": ok\n", "/dev/stdin:2:2: unknown member 'info'\n"));
}

// Opening it again would begin at the first byte.
TEST(check, reads_standard_input_from_where_it_is) {
    const temp_directory scratch;
    const std::string file = scratch.write("file", "first line\n{\"mode\": {}}");
    EXPECT_EQ(shell("{ read -r line; \"$0\" check -; } <" + file), ended(0, "/dev/stdin: ok\n"));
}

// A shell passes such a path to the end of a pipe.
TEST(check, reads_a_pipe_from_another_program) {
    EXPECT_EQ(shell("echo '{\"mode\": {}}' | \"$0\" check -"), ended(0, "/dev/stdin: ok\n"));
    EXPECT_EQ(shell("(echo '{\"mode\":'; sleep 0.1; echo '{}}') | \"$0\" check -"),
              ended(0, "/dev/stdin: ok\n"));
    EXPECT_EQ(shell("echo '{' | \"$0\" check /dev/stdin"),
              ended(1, "", "/dev/stdin:2:1: expected a member name, found the end of the file\n"));
    EXPECT_EQ(
        shell(
            "\"$0\" check <(echo '{\"mode\": {}}') <(echo '[') 2>&1 | sed 's:/dev/fd/[0-9]*:FD:'"),
        ended(0, "FD:1:1: expected a snapshot (an object), found '['\nFD: ok\n"));
    EXPECT_EQ(shell("true | \"$0\" check -"), ended(1, "", "/dev/stdin: the file is empty\n"));
}

TEST(check, fails_if_its_output_is_lost) {
    const temp_directory scratch;
    const std::string good = scratch.write("good.json", R"({"mode": {}})");
    const std::string bad = scratch.write("bad.json", "");
    EXPECT_EQ(
        oru_snapshot({"check", good}, {.stdout_to = "/dev/full"}),
        ended(1, "", "oru-snapshot: cannot write to standard output: No space left on device\n"));
    EXPECT_EQ(oru_snapshot({"check", good}, {.stdout_to = closed_stream}),
              ended(1, "", "oru-snapshot: cannot write to standard output: Bad file descriptor\n"));
    // Without output nothing can be lost.
    EXPECT_EQ(oru_snapshot({"check", bad}, {.stdout_to = "/dev/full"}),
              ended(1, "", bad + ": the file is empty\n"));
}

TEST(check, accepts_the_examples) {
    std::vector<std::string> arguments{"check"};
    std::string expected;
    for (const auto& file : std::filesystem::directory_iterator(ORU_EXAMPLES_DIR)) {
        if (file.path().extension() == ".json") {
            arguments.push_back(file.path());
            expected += file.path().string() + ": ok\n";
        }
    }
    EXPECT_GE(arguments.size(), 3U);
    EXPECT_EQ(oru_snapshot(arguments), ended(0, expected));
}

}  // namespace
