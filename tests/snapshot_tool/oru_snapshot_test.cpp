#include "snapshot_tool/oru_snapshot.h"

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

}  // namespace
