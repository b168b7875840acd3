#include "snapshot_tool/oru_snapshot.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

#include <gtest/gtest.h>

namespace {

constexpr auto usage =
    "Usage: oru-snapshot check FILE...\n"
    "       oru-snapshot record [-o FILE] [--about TEXT] [--redact]\n"
    "       oru-snapshot show [FILE]\n"
    "       oru-snapshot graph [FILE]\n"
    "       oru-snapshot metrics [-o FILE] [FILE]\n"
    "       oru-snapshot --help | --version\n";

TEST(oru_snapshot, prints_its_usage) {
    EXPECT_EQ(oru_snapshot({"--help"}), ended(0, usage));
    EXPECT_EQ(oru_snapshot({"--version"}), ended(0, "oru-snapshot " ORU_VERSION "\n"));
    EXPECT_EQ(oru_snapshot({}), ended(2, "", usage));
    EXPECT_EQ(oru_snapshot({"verify", "x"}), ended(2, "", usage));
    EXPECT_EQ(oru_snapshot({""}), ended(2, "", usage));
    EXPECT_EQ(oru_snapshot({"show", "a", "b"}), ended(2, "", usage));
    EXPECT_EQ(oru_snapshot({"show", "--all"}), ended(2, "", usage));
    EXPECT_EQ(oru_snapshot({"graph", "a", "b"}), ended(2, "", usage));
    EXPECT_EQ(oru_snapshot({"graph", "-x"}), ended(2, "", usage));
    EXPECT_EQ(oru_snapshot({"metrics", "a", "b"}), ended(2, "", usage));
    EXPECT_EQ(oru_snapshot({"metrics", "-x"}), ended(2, "", usage));
    EXPECT_EQ(oru_snapshot({"metrics", "-o"}), ended(2, "", usage));
    EXPECT_EQ(oru_snapshot({"metrics", "-o", "a", "b", "c"}), ended(2, "", usage));
    EXPECT_EQ(oru_snapshot({"probe"}), ended(2, "", usage));
    EXPECT_EQ(oru_snapshot({"--help", "x"}), ended(2, "", usage));
    EXPECT_EQ(oru_snapshot({"--version", "x"}), ended(2, "", usage));
}

TEST(oru_snapshot, fails_if_its_output_is_lost) {
    for (const char* given : {"--help", "--version"}) {
        EXPECT_EQ(oru_snapshot({given}, {.stdout_to = "/dev/full"}),
                  ended(1, "",
                        "oru-snapshot: cannot write to standard output: "
                        "No space left on device\n"));
        EXPECT_EQ(
            oru_snapshot({given}, {.stdout_to = closed_stream}),
            ended(1, "", "oru-snapshot: cannot write to standard output: Bad file descriptor\n"));
    }
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
    const std::string copy = scratch.path() + "/oru-snapshot";
    std::filesystem::copy_file(program("oru-snapshot"), copy);
    ASSERT_EQ(chown(copy.c_str(), 65534, 65534), 0);
    ASSERT_EQ(chmod(copy.c_str(), 04755), 0);
    ASSERT_EQ(chmod(scratch.path().c_str(), 0755), 0);
    const std::string file = scratch.write("file", "{}");
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
}

}  // namespace
