#include <gtest/gtest.h>

#include "snapshot_tool/oru_snapshot.h"

namespace {

constexpr auto refusal = "oru-snapshot: the device's own client reads no snapshot files\n";

TEST(no_files, refuses_to_check_any) {
    EXPECT_EQ(oru_snapshot({"check", "/dev/null"}), ended(2, "", refusal));
    EXPECT_EQ(oru_snapshot({"check", "-"}), ended(2, "", refusal));
}

TEST(no_files, refuses_to_tell_of_any) {
    for (const char* command : {"show", "graph", "metrics"}) {
        EXPECT_EQ(oru_snapshot({command, "/dev/null"}), ended(2, "", refusal));
        EXPECT_EQ(oru_snapshot({command, "-"}), ended(2, "", refusal));
    }
}

}  // namespace
